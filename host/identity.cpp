#include "host/identity.h"

#include <vector>

#include "common_src/win32/handles.h"
#include "log/diag_log.h"

namespace velk::host {
namespace {

constexpr wchar_t kIdentitiesKey[] = L"Identities\\";

bool UsableAsFolderName(const std::wstring& id) {
    if (id == L"." || id == L"..")
        return false;
    return id.find_first_of(L"\\/:*?\"<>|") == std::wstring::npos;
}

// The string value `name`; false when it is missing or not a string.
bool ReadString(HKEY key, const wchar_t* name, std::wstring& out) {
    DWORD type = 0;
    DWORD bytes = 0;
    if (::RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) {
        return false;
    }
    if (type != REG_SZ && type != REG_EXPAND_SZ) {
        VELK_LOG(L"!!! Identities value %s has type %lu, not a string; ignored", name, type);
        return false;
    }
    // Room for a terminator the stored data may lack.
    std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 2, L'\0');
    DWORD size = static_cast<DWORD>((buffer.size() - 1) * sizeof(wchar_t));
    if (::RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()),
                           &size) != ERROR_SUCCESS) {
        return false;
    }
    out.assign(buffer.data());
    if (!UsableAsFolderName(out)) {
        VELK_LOG(L"!!! Identities value %s [%s] cannot name a folder; ignored", name, out.c_str());
        out.clear();
        return false;
    }
    return true;
}

}  // namespace

std::wstring LookupIdentityId(HKEY root) {
    win32::unique_hkey key;
    if (::RegOpenKeyExW(root, kIdentitiesKey, 0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        return std::wstring();
    }
    std::wstring id;
    if (ReadString(key.get(), L"Last User ID", id))
        return id;
    if (ReadString(key.get(), L"Default User ID", id))
        return id;
    return std::wstring();
}

}  // namespace velk::host
