// The language resource module of the add-in ("VELK_OEA.dll.mui": dialogs,
// menus, bitmaps), chosen with the string loader's language fallbacks and
// owned for the life of the add-in.
//
// Start-up asks for the folder first (a missing folder fails the load), then
// loads the module from it and makes it the current resource handle.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"

class ResourceHandle {
public:
    // The file name inside the language folder; the installer ships it so.
    static constexpr const wchar_t* kModuleFileName = L"VELK_OEA.dll.mui";

    ResourceHandle();
    explicit ResourceHandle(QzLanguageEnvironment environment);
    ResourceHandle(const ResourceHandle&) = delete;
    ResourceHandle& operator=(const ResourceHandle&) = delete;
    // Frees the module.
    ~ResourceHandle();

    // The folder of the detected language with a trailing backslash; empty
    // when not even the "en-US" folder exists.
    std::wstring GetResourceFolder();

    // Loads folder + "VELK_OEA.dll.mui" as a resource-only module (no code of
    // it runs). A module loaded before is freed first. False on failure.
    bool Load(const std::wstring& folder);

    // Null until Load succeeded.
    HMODULE Get() const noexcept { return m_hModule.get(); }

private:
    QzResourceStringLoader m_loader;
    velk::win32::unique_hmodule m_hModule;
};
