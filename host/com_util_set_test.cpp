#include "host/com_util_set.h"

#include <gtest/gtest.h>

#include "common_src/QzCommon/QzComn_test_util.h"

namespace velk::host {
namespace {

// One scripted system at a time; the queries are plain function pointers.
struct FakeSystem {
    bool accept_extended = true;
    DWORD platform = VER_PLATFORM_WIN32_NT;
    DWORD major = 6, minor = 1;
    BYTE product = VER_NT_WORKSTATION;
    WORD architecture = PROCESSOR_ARCHITECTURE_AMD64;
    int server_r2 = 0;
} g_fake;
BOOL WINAPI FakeGetVersion(OSVERSIONINFOW* record);
void WINAPI FakeNativeInfo(SYSTEM_INFO* si) {
    si->wProcessorArchitecture = g_fake.architecture;
}
int WINAPI FakeMetrics(int index) {
    return index == SM_SERVERR2 ? g_fake.server_r2 : 0;
}
const CComUtilSet::SystemQueries kFake{&FakeGetVersion, [] { return &FakeNativeInfo; },
                                       &FakeMetrics};

BOOL WINAPI FakeGetVersion(OSVERSIONINFOW* record) {
    const bool extended = record->dwOSVersionInfoSize == sizeof(OSVERSIONINFOEXW);
    if (extended && !g_fake.accept_extended)
        return FALSE;
    record->dwPlatformId = g_fake.platform;
    record->dwMajorVersion = g_fake.major;
    record->dwMinorVersion = g_fake.minor;
    if (extended)
        reinterpret_cast<OSVERSIONINFOEXW*>(record)->wProductType = g_fake.product;
    return TRUE;
}

// Bitness picks the shared version file's section; the major version picks
// the client's mode.
TEST(ComUtilSet, SystemCodeBitnessAndClientModeFromTheSystemsAnswers) {
    constexpr BYTE kWs = VER_NT_WORKSTATION, kSrv = VER_NT_SERVER;
    constexpr WORD kX86 = PROCESSOR_ARCHITECTURE_INTEL, kX64 = PROCESSOR_ARCHITECTURE_AMD64;
    const struct {
        DWORD major, minor;
        BYTE product;
        WORD arch;
        int r2, code;
    } cases[] = {
        {5, 1, kWs, kX64, 0, 6},  {5, 2, kSrv, kX64, 0, 7},  {5, 2, kWs, kX64, 0, 9},
        {5, 2, kWs, kX64, 1, 8},  {6, 0, kWs, kX86, 0, 10},  {6, 1, kWs, kX64, 0, 11},
        {6, 0, kSrv, kX86, 0, 12}, {6, 1, kSrv, kX64, 0, 13}, {10, 0, kWs, kX64, 0, 0},
    };
    QzCommon::testing_util::TempFolder folder;
    const std::string log = QzCommon::testing_util::CaptureLog(folder, [&] {
        for (const auto& c : cases) {
            g_fake = FakeSystem{true, VER_PLATFORM_WIN32_NT, c.major, c.minor, c.product, c.arch,
                                c.r2};
            EXPECT_EQ(c.code, CComUtilSet::GetOSVersion(kFake)) << c.major << "." << c.minor;
            EXPECT_EQ(c.code == 9 || c.code == 11 || c.code == 13,
                      CComUtilSet::IsX64System(kFake));
            EXPECT_EQ(c.major == 6, CComUtilSet::IsWMail(kFake) == 1) << c.major;
        }
        // Without the extended record there is no product type: a server.
        g_fake = FakeSystem{false};
        EXPECT_EQ(13, CComUtilSet::GetOSVersion(kFake));
    });
    for (const char* line : {"@@@ CComUtilSet::IsWMail return[1]",
                             "@@@ CComUtilSet::IsWMail return[0]",
                             "@@@ CComUtilSet::GetOSVersion() - osvi.dwPlatformId = 2, "
                             "osvi.dwMajorVersion = 6, osvi.dwMinorVersion = 1"}) {
        EXPECT_NE(std::string::npos, log.find(line)) << line;
    }
    // The test prefix reports 64-bit Windows 7: Windows Mail mode.
    EXPECT_EQ(11, CComUtilSet::GetOSVersion());
    EXPECT_EQ(1, CComUtilSet::IsWMail());
}

}  // namespace
}  // namespace velk::host
