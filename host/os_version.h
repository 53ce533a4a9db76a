// The operating-system code of CComUtilSet::GetOSVersion, from the facts the
// system reports. Platform-free: the classification is tested natively with
// every combination, the gathering of the facts lives in com_util_set.cpp.
#pragma once

namespace velk::host {

// Values as the system reports them (the numbers of <windows.h>).
constexpr unsigned kPlatformWin9x = 1;            // VER_PLATFORM_WIN32_WINDOWS
constexpr unsigned kPlatformNt = 2;               // VER_PLATFORM_WIN32_NT
constexpr unsigned char kProductWorkstation = 1;  // VER_NT_WORKSTATION
constexpr unsigned short kArchitectureAmd64 = 9;  // PROCESSOR_ARCHITECTURE_AMD64

// The codes; other components compare against the numbers, so they are fixed.
enum OsCode : int {
    kOsUnknown = 0,
    kOsWin95 = 1,
    kOsWin98 = 2,
    kOsWinMe = 3,
    kOsNtBefore5 = 4,
    kOsWin2000 = 5,
    kOsWinXp = 6,
    kOsServer2003 = 7,
    kOsServer2003R2 = 8,
    kOsWinXpX64 = 9,
    kOsVistaWorkstation32 = 10,
    kOsVistaWorkstation64 = 11,
    kOsVistaServer32 = 12,
    kOsVistaServer64 = 13,
};

struct OsFacts {
    unsigned platform_id = 0;
    unsigned major = 0;
    unsigned minor = 0;
    // 0 when only the basic version record was available (it has no product
    // type): such a system then counts as a server.
    unsigned char product_type = 0;
    // The native processor architecture; only asked on NT 5.2 and 6.x, and
    // only when the system has GetNativeSystemInfo.
    bool have_architecture = false;
    unsigned short architecture = 0;
    // GetSystemMetrics(SM_SERVERR2); only asked on NT 5.2.
    int server_r2 = 0;
};

int ClassifyOs(const OsFacts& facts) noexcept;

// The 64-bit systems among the codes: 9, 11 and 13.
bool IsX64OsCode(int code) noexcept;

}  // namespace velk::host
