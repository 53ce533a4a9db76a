// The native adapter against real files: platform-free code logs through it
// in the native tests, so its output must be the same line shape.
#include "log/log_platform_posix.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "common_src/QzCommon/QzComn_test_util.h"
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

// Characters outside Latin-1 become "?", one byte per character, and paths
// reach the file system in UTF-8.
TEST(PosixDiagLog, WritesOneBytePerCharacterToTheDatedFileAtAUtf8Path) {
    QzCommon::testing_util::TempFolder folder;
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"J\x00fcrgen.log");
    log.Write(L"caf\x00e9 %ls %d \x20ac", L"wide", 5);
    log.Write(L"%ls", std::wstring(700, L'q').c_str());
    log.Write(L"next");
    log.Close();

    const std::string prefix = "0012:0034 2009/05/03 10:11:12 ";
    std::ifstream file(folder.File(L"").string() + "J\xc3\xbcrgen.20090503.log", std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
              prefix + "caf\xe9 wide 5 ?\n" + prefix + std::string(465, 'q') + "...n" + prefix +
                  "next\n");
}

}  // namespace
}  // namespace velk::log
