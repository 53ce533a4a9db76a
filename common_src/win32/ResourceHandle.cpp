#include "common_src/win32/ResourceHandle.h"

#include <utility>

#include "common_src/QzCommon/QzComn_String.h"

ResourceHandle::ResourceHandle() = default;

ResourceHandle::ResourceHandle(QzLanguageEnvironment environment)
    : m_loader(std::move(environment)) {}

ResourceHandle::~ResourceHandle() = default;

std::wstring ResourceHandle::GetResourceFolder() {
    return m_loader.GetResFolderByAutoDetectLanguage();
}

bool ResourceHandle::Load(const std::wstring& folder) {
    m_hModule.reset();
    if (folder.empty())
        return false;
    std::wstring path = folder;
    QzCommon::String::AddTrailingBackslash(path);
    path += kModuleFileName;
    // As a data file: dialogs, menus, bitmaps and strings load from it, and
    // a damaged or foreign file cannot run code inside the mail client.
    m_hModule.reset(::LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    return static_cast<bool>(m_hModule);
}
