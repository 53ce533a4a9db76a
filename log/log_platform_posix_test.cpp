// The native adapter against real files: platform-free code logs through it
// in the native tests, so its output must be the same line shape.
#include "log/log_platform_posix.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>

#include "log/diag_log.h"
#include "log/log_core.h"

namespace velk::log {
namespace {

class PinnedClockPlatform : public PosixLogPlatform {
public:
    bool LocalNow(LocalTime& out) noexcept override {
        out = LocalTime{2009, 5, 3, 10, 11, 12};
        return true;
    }
    std::uint32_t CurrentThreadId() noexcept override { return 0x00120034; }
};

class TempFolder {
public:
    TempFolder() {
        char pattern[] = "/tmp/velk_log_test_XXXXXX";
        path_ = mkdtemp(pattern);
        path_ += '/';
    }
    ~TempFolder() { std::system(("rm -rf '" + path_ + "'").c_str()); }
    std::wstring wide() const { return std::wstring(path_.begin(), path_.end()); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return "<missing>";
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

TEST(PosixDiagLog, WritesOneBytePerCharacterToTheDatedFile) {
    TempFolder folder;
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.wide() + L"VELKAgent.log");
    log.Write(L"caf\x00e9 %ls %d \x20ac", L"wide", 5);
    log.Write(L"%ls", std::wstring(700, L'q').c_str());
    log.Write(L"next");
    log.Close();

    const std::string prefix = "0012:0034 2009/05/03 10:11:12 ";
    EXPECT_EQ(ReadBytes(folder.path() + "VELKAgent.20090503.log"),
              prefix + "caf\xe9 wide 5 ?\n" + prefix + std::string(465, 'q') + "...n" + prefix +
                  "next\n");
}

TEST(PosixDiagLog, PathsReachTheFileSystemInUtf8) {
    EXPECT_EQ(ToUtf8(L"a\x00e9\x20ac"), "a\xc3\xa9\xe2\x82\xac");
    TempFolder folder;
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.wide() + L"J\x00fcrgen.log");
    log.Write(L"x");
    log.Close();
    EXPECT_EQ(ReadBytes(folder.path() + "J\xc3\xbcrgen.20090503.log"),
              "0012:0034 2009/05/03 10:11:12 x\n");
}

TEST(PosixDiagLog, ProcessLogDoesNotEvaluateArgumentsWhileClosed) {
    int evaluated = 0;
    ASSERT_FALSE(IsOpen());
    VELK_LOG(L"closed %d", ++evaluated);
    EXPECT_EQ(evaluated, 0);

    TempFolder folder;
    Open(folder.wide() + L"VELKAgent.log");
    VELK_LOG(L"open %d", ++evaluated);
    const std::wstring path = CurrentPath();
    Close();
    VELK_LOG(L"closed again %d", ++evaluated);
    EXPECT_EQ(evaluated, 1);
    std::string text = ReadBytes(std::string(path.begin(), path.end()));
    ASSERT_EQ(text.size(), 30u + 7u);
    EXPECT_EQ(text.substr(30), "open 1\n");
}

}  // namespace
}  // namespace velk::log
