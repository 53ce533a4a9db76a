// System detection used across the add-in: the operating-system code, the
// 64-bit test and the choice between the two mail clients.
#pragma once

#include <windows.h>

namespace velk::host {

class CComUtilSet {
public:
    using NativeSystemInfoFn = void(WINAPI*)(SYSTEM_INFO*);

    // The system calls behind the detection, replaceable so that every code
    // can be produced in a test.
    struct SystemQueries {
        // GetVersionExW; the record's dwOSVersionInfoSize says which one.
        BOOL(WINAPI* get_version)(OSVERSIONINFOW* record);
        // GetNativeSystemInfo looked up at run time; null when absent.
        NativeSystemInfoFn (*find_native_system_info)();
        int(WINAPI* get_system_metrics)(int index);
    };
    static const SystemQueries& RealSystem() noexcept;

    // The code of host/os_version.h (0 to 13). Asks with the extended record
    // first and the basic one when that is refused; 0 when both are refused.
    static int GetOSVersion(const SystemQueries& system = RealSystem()) noexcept;

    // True on the 64-bit systems (codes 9, 11, 13).
    static bool IsX64System(const SystemQueries& system = RealSystem()) noexcept;

    // 1 on Windows Mail systems (basic version record, major version 6),
    // else 0. Every choice between the two clients goes through this test,
    // not through the codes above.
    static int IsWMail(const SystemQueries& system = RealSystem()) noexcept;
};

}  // namespace velk::host
