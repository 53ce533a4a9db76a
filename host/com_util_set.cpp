#include "host/com_util_set.h"

#include "host/os_version.h"
#include "log/diag_log.h"

namespace velk::host {
namespace {

// The two record sizes the system distinguishes the requests by.
static_assert(sizeof(OSVERSIONINFOEXW) == 284, "extended version record");
static_assert(sizeof(OSVERSIONINFOW) == 276, "basic version record");

BOOL WINAPI RealGetVersion(OSVERSIONINFOW* record) {
    return ::GetVersionExW(record);
}

CComUtilSet::NativeSystemInfoFn FindNativeSystemInfo() {
    HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    if (kernel == nullptr)
        return nullptr;
    return reinterpret_cast<CComUtilSet::NativeSystemInfoFn>(
        ::GetProcAddress(kernel, "GetNativeSystemInfo"));
}

int WINAPI RealGetSystemMetrics(int index) {
    return ::GetSystemMetrics(index);
}

}  // namespace

const CComUtilSet::SystemQueries& CComUtilSet::RealSystem() noexcept {
    static const SystemQueries real{&RealGetVersion, &FindNativeSystemInfo, &RealGetSystemMetrics};
    return real;
}

int CComUtilSet::GetOSVersion(const SystemQueries& system) noexcept {
    OSVERSIONINFOEXW osvi{};
    osvi.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXW);
    bool extended = system.get_version(reinterpret_cast<OSVERSIONINFOW*>(&osvi)) != FALSE;
    if (!extended) {
        osvi = OSVERSIONINFOEXW{};
        osvi.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
        if (!system.get_version(reinterpret_cast<OSVERSIONINFOW*>(&osvi)))
            return kOsUnknown;
    }
    VELK_LOG(
        L"@@@ CComUtilSet::GetOSVersion() - osvi.dwPlatformId = %u, osvi.dwMajorVersion = %u, "
        L"osvi.dwMinorVersion = %u",
        static_cast<unsigned>(osvi.dwPlatformId), static_cast<unsigned>(osvi.dwMajorVersion),
        static_cast<unsigned>(osvi.dwMinorVersion));

    OsFacts facts;
    facts.platform_id = osvi.dwPlatformId;
    facts.major = osvi.dwMajorVersion;
    facts.minor = osvi.dwMinorVersion;
    facts.product_type = extended ? osvi.wProductType : 0;
    if (facts.platform_id == kPlatformNt) {
        const bool nt52 = facts.major == 5 && facts.minor == 2;
        if (nt52 || facts.major >= 6) {
            if (NativeSystemInfoFn native = system.find_native_system_info()) {
                SYSTEM_INFO si{};
                native(&si);
                facts.have_architecture = true;
                facts.architecture = si.wProcessorArchitecture;
            }
        }
        if (nt52)
            facts.server_r2 = system.get_system_metrics(SM_SERVERR2);
    }
    return ClassifyOs(facts);
}

bool CComUtilSet::IsX64System(const SystemQueries& system) noexcept {
    return IsX64OsCode(GetOSVersion(system));
}

int CComUtilSet::IsWMail(const SystemQueries& system) noexcept {
    OSVERSIONINFOW osvi{};
    osvi.dwOSVersionInfoSize = sizeof(osvi);
    int wmail = system.get_version(&osvi) && osvi.dwMajorVersion == 6 ? 1 : 0;
    VELK_LOG(L"@@@ CComUtilSet::IsWMail return[%d]", wmail);
    return wmail;
}

}  // namespace velk::host
