// The native adapter against a real file: platform-free code logs through it
// in the native tests, one byte per character as the Windows log writes.
#include "log/log_platform_posix.h"

#include <gtest/gtest.h>

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
};

// Latin-1 passes, anything wider becomes "?"; the path reaches the file
// system in UTF-8.
TEST(PosixDiagLog, WritesOneBytePerCharacterToTheDatedFileAtAUtf8Path) {
    QzCommon::testing_util::TempFolder folder;
    PinnedClockPlatform platform;
    DiagLog log(platform);
    log.Open(folder.path() + L"J\x00fcrgen.log");
    log.Write(L"caf\x00e9 %ls \x20ac", L"wide");
    log.Close();
    const std::string text = folder.ReadFile(L"J\x00fcrgen.20090503.log");
    EXPECT_EQ(text.substr(text.find(' ')), " 2009/05/03 10:11:12 caf\xe9 wide ?\n");
}

}  // namespace
}  // namespace velk::log
