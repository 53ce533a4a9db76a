#include "host/com_util_set.h"

#include <gtest/gtest.h>

#include <vector>

#include "host/log_capture_for_test.h"

namespace velk::host {
namespace {

// One scripted system at a time; the queries are plain function pointers.
struct FakeSystem {
    bool accept_extended = true;
    bool accept_basic = true;
    DWORD platform = VER_PLATFORM_WIN32_NT;
    DWORD major = 6;
    DWORD minor = 1;
    BYTE product = VER_NT_WORKSTATION;
    bool has_native_info = true;
    WORD architecture = PROCESSOR_ARCHITECTURE_AMD64;
    int server_r2 = 0;

    std::vector<DWORD> sizes_asked;
    int native_lookups = 0;
    int r2_queries = 0;
};
FakeSystem g_fake;

BOOL WINAPI FakeGetVersion(OSVERSIONINFOW* record) {
    const bool extended = record->dwOSVersionInfoSize == sizeof(OSVERSIONINFOEXW);
    g_fake.sizes_asked.push_back(record->dwOSVersionInfoSize);
    if (extended ? !g_fake.accept_extended : !g_fake.accept_basic)
        return FALSE;
    record->dwPlatformId = g_fake.platform;
    record->dwMajorVersion = g_fake.major;
    record->dwMinorVersion = g_fake.minor;
    if (extended)
        reinterpret_cast<OSVERSIONINFOEXW*>(record)->wProductType = g_fake.product;
    return TRUE;
}
void WINAPI FakeNativeInfo(SYSTEM_INFO* si) {
    si->wProcessorArchitecture = g_fake.architecture;
}
CComUtilSet::NativeSystemInfoFn FakeFindNative() {
    ++g_fake.native_lookups;
    return g_fake.has_native_info ? &FakeNativeInfo : nullptr;
}
int WINAPI FakeMetrics(int index) {
    if (index != SM_SERVERR2)
        return 0;
    ++g_fake.r2_queries;
    return g_fake.server_r2;
}

const CComUtilSet::SystemQueries kFake{&FakeGetVersion, &FakeFindNative, &FakeMetrics};

TEST(ComUtilSet, EveryCodeFromTheSystemsAnswers) {
    constexpr WORD kX86 = PROCESSOR_ARCHITECTURE_INTEL;
    constexpr WORD kX64 = PROCESSOR_ARCHITECTURE_AMD64;
    constexpr BYTE kWs = VER_NT_WORKSTATION;
    constexpr BYTE kSrv = VER_NT_SERVER;
    const struct {
        DWORD platform, major, minor;
        BYTE product;
        WORD arch;
        int r2, code;
    } cases[] = {
        {VER_PLATFORM_WIN32s, 3, 1, 0, 0, 0, 0},
        {VER_PLATFORM_WIN32_WINDOWS, 4, 0, 0, 0, 0, 1},
        {VER_PLATFORM_WIN32_WINDOWS, 4, 10, 0, 0, 0, 2},
        {VER_PLATFORM_WIN32_WINDOWS, 4, 90, 0, 0, 0, 3},
        {VER_PLATFORM_WIN32_NT, 4, 0, kWs, kX86, 0, 4},
        {VER_PLATFORM_WIN32_NT, 5, 0, kWs, kX86, 0, 5},
        {VER_PLATFORM_WIN32_NT, 5, 1, kWs, kX64, 0, 6},
        {VER_PLATFORM_WIN32_NT, 5, 2, kSrv, kX64, 0, 7},
        {VER_PLATFORM_WIN32_NT, 5, 2, kSrv, kX86, 1, 8},
        {VER_PLATFORM_WIN32_NT, 5, 2, kWs, kX64, 0, 9},
        {VER_PLATFORM_WIN32_NT, 5, 2, kWs, kX64, 1, 8},  // R2 before the x64 test
        {VER_PLATFORM_WIN32_NT, 5, 2, kWs, kX86, 0, 7},
        {VER_PLATFORM_WIN32_NT, 5, 3, kWs, kX86, 0, 0},
        {VER_PLATFORM_WIN32_NT, 6, 0, kWs, kX86, 0, 10},
        {VER_PLATFORM_WIN32_NT, 6, 1, kWs, kX64, 0, 11},
        {VER_PLATFORM_WIN32_NT, 6, 0, kSrv, kX86, 0, 12},
        {VER_PLATFORM_WIN32_NT, 6, 1, VER_NT_DOMAIN_CONTROLLER, kX64, 0, 13},
        {VER_PLATFORM_WIN32_NT, 10, 0, kWs, kX64, 0, 0},
        {VER_PLATFORM_WIN32_WINDOWS, 4, 3, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        g_fake = FakeSystem{};
        g_fake.platform = c.platform;
        g_fake.major = c.major;
        g_fake.minor = c.minor;
        g_fake.product = c.product;
        g_fake.architecture = c.arch;
        g_fake.server_r2 = c.r2;
        EXPECT_EQ(c.code, CComUtilSet::GetOSVersion(kFake)) << c.major << "." << c.minor;
        EXPECT_EQ(c.code == 9 || c.code == 11 || c.code == 13, CComUtilSet::IsX64System(kFake));
        // The architecture only matters from 5.2 on, R2 only on 5.2.
        const bool nt52 = c.platform == VER_PLATFORM_WIN32_NT && c.major == 5 && c.minor == 2;
        const bool asks_arch = c.platform == VER_PLATFORM_WIN32_NT && (nt52 || c.major >= 6);
        EXPECT_EQ(asks_arch ? 2 : 0, g_fake.native_lookups) << c.code;
        EXPECT_EQ(nt52 ? 2 : 0, g_fake.r2_queries) << c.code;
    }
}

TEST(ComUtilSet, FallsBackToTheBasicRecordAndWithoutNativeInfoTo32Bit) {
    g_fake = FakeSystem{};
    g_fake.accept_extended = false;
    // The basic record has no product type: a 64-bit 6.1 counts as a server.
    EXPECT_EQ(13, CComUtilSet::GetOSVersion(kFake));
    EXPECT_EQ((std::vector<DWORD>{284, 276}), g_fake.sizes_asked);
    g_fake.accept_basic = false;
    EXPECT_EQ(0, CComUtilSet::GetOSVersion(kFake));

    g_fake = FakeSystem{};
    g_fake.has_native_info = false;
    EXPECT_EQ(10, CComUtilSet::GetOSVersion(kFake));
}

TEST(ComUtilSet, IsWMailOnlyForMajorVersionSixAndLogsItsAnswer) {
    velk::testing::LogCapture log;
    g_fake = FakeSystem{};
    EXPECT_EQ(1, CComUtilSet::IsWMail(kFake));
    EXPECT_EQ((std::vector<DWORD>{276}), g_fake.sizes_asked) << "the basic record only";
    g_fake.major = 5;
    EXPECT_EQ(0, CComUtilSet::IsWMail(kFake));
    g_fake.major = 10;
    EXPECT_EQ(0, CComUtilSet::IsWMail(kFake));
    g_fake.major = 6;
    g_fake.accept_basic = false;
    EXPECT_EQ(0, CComUtilSet::IsWMail(kFake));
    EXPECT_TRUE(log.Contains("@@@ CComUtilSet::IsWMail return[1]"));
    EXPECT_TRUE(log.Contains("@@@ CComUtilSet::IsWMail return[0]"));

    CComUtilSet::GetOSVersion(kFake);
    EXPECT_TRUE(
        log.Contains("@@@ CComUtilSet::GetOSVersion() - osvi.dwPlatformId = 2, "
                     "osvi.dwMajorVersion = 6, osvi.dwMinorVersion = 1"));
    // The test prefix reports 64-bit Windows 7: Windows Mail mode.
    EXPECT_EQ(11, CComUtilSet::GetOSVersion());
    EXPECT_EQ(1, CComUtilSet::IsWMail());
}

}  // namespace
}  // namespace velk::host
