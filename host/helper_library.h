// The wrapper of the product's helper library "VelkHlp.dll" (optional at run
// time: without it only the features that ask for it are off).
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/handles.h"
#include "host/velk_helper_api.h"

namespace velk::host {

// The library's file name, looked up in the add-in's module folder.
constexpr wchar_t kHelperLibraryName[] = L"VelkHlp.dll";

class CVelkHlpWrapper {
public:
    // Loads `path` (module folder + kHelperLibraryName) with `load_flags`,
    // resolves the four entries by name and initialises the library. Any
    // missing entry or a failed init logs "Failed to init HVNWpr" and leaves
    // the wrapper empty, the library freed.
    explicit CVelkHlpWrapper(const std::wstring& path,
                             DWORD load_flags = LOAD_WITH_ALTERED_SEARCH_PATH);
    // Ends the library's session (velkHelperExit) and frees it.
    ~CVelkHlpWrapper();

    CVelkHlpWrapper(const CVelkHlpWrapper&) = delete;
    CVelkHlpWrapper& operator=(const CVelkHlpWrapper&) = delete;

    bool IsReady() const noexcept { return static_cast<bool>(module_); }

    // The entries; each returns 0 when the wrapper is not ready.
    int RTscanFolderProtect(const wchar_t* folder, bool protect) const;
    int GetProxy(wchar_t* buffer, unsigned chars) const;

private:
    win32::unique_hmodule module_;
    VelkHelperInitFn init_ = nullptr;
    VelkHelperExitFn exit_ = nullptr;
    VelkHelperRTscanFolderProtectFn protect_ = nullptr;
    VelkHelperGetProxyFn get_proxy_ = nullptr;
};

}  // namespace velk::host
