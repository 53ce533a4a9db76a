// A stand-in for the product's helper library "VelkHlp.dll", so the add-in's
// wrapper can be tested against both outcomes of loading it.
//
// Steered and observed through the process environment, which the test and
// this library share:
//   VELKHLP_STUB_INIT     "0": velkHelperInit fails (returns 0); else it succeeds
//   VELKHLP_STUB_INITS    count of velkHelperInit calls (written here)
//   VELKHLP_STUB_EXITS    count of velkHelperExit calls (written here)
//   VELKHLP_STUB_PROTECT  "<protect>|<folder>" of the last velkHelperRTscanFolderProtect
//   VELKHLP_STUB_PROXY    what velkHelperGetProxy hands out (default "proxy.test:8080")
// Built twice: once complete, once without velkHelperGetProxy
// (VELKHLP_STUB_WITHOUT_PROXY), the broken installation.
#include <windows.h>

#include <cwchar>
#include <string>

#include "host/velk_helper_api.h"

namespace {

std::wstring Env(const wchar_t* name) {
    wchar_t buffer[1024];
    DWORD n = ::GetEnvironmentVariableW(name, buffer, 1024);
    return n > 0 && n < 1024 ? std::wstring(buffer, n) : std::wstring();
}

void Count(const wchar_t* name) {
    wchar_t text[16];
    std::swprintf(text, 16, L"%d", _wtoi(Env(name).c_str()) + 1);
    ::SetEnvironmentVariableW(name, text);
}

}  // namespace

extern "C" {

int __cdecl velkHelperInit(void) {
    Count(L"VELKHLP_STUB_INITS");
    return Env(L"VELKHLP_STUB_INIT") == L"0" ? 0 : 1;
}

void __cdecl velkHelperExit(void) {
    Count(L"VELKHLP_STUB_EXITS");
}

int __cdecl velkHelperRTscanFolderProtect(const wchar_t* folder, int protect) {
    std::wstring record = (protect ? L"1|" : L"0|") + std::wstring(folder ? folder : L"");
    ::SetEnvironmentVariableW(L"VELKHLP_STUB_PROTECT", record.c_str());
    return 1;
}

#ifndef VELKHLP_STUB_WITHOUT_PROXY
int __cdecl velkHelperGetProxy(wchar_t* buffer, unsigned chars) {
    std::wstring proxy = Env(L"VELKHLP_STUB_PROXY");
    if (proxy.empty())
        proxy = L"proxy.test:8080";
    if (buffer == nullptr || proxy.size() + 1 > chars)
        return 0;
    std::wmemcpy(buffer, proxy.c_str(), proxy.size() + 1);
    return 1;
}
#endif

}  // extern "C"

// Compile-time check that the exports keep the shapes the add-in calls.
namespace {
[[maybe_unused]] constexpr VelkHelperInitFn kInit = &velkHelperInit;
[[maybe_unused]] constexpr VelkHelperExitFn kExit = &velkHelperExit;
[[maybe_unused]] constexpr VelkHelperRTscanFolderProtectFn kProtect =
    &velkHelperRTscanFolderProtect;
#ifndef VELKHLP_STUB_WITHOUT_PROXY
[[maybe_unused]] constexpr VelkHelperGetProxyFn kProxy = &velkHelperGetProxy;
#endif
}  // namespace
