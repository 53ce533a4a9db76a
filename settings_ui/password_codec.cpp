#include "settings_ui/password_codec.h"

#include <windows.h>
#include <wincrypt.h>

#include <vector>

#include "common_src/win32/handles.h"
#include "log/diag_log.h"
#include "settings_ui/password_text.h"

namespace velk::settings_ui {
namespace {

DATA_BLOB BlobOf(const void* data, std::size_t bytes) {
    DATA_BLOB blob{};
    blob.cbData = static_cast<DWORD>(bytes);
    blob.pbData = static_cast<BYTE*>(const_cast<void*>(data));
    return blob;
}

}  // namespace

bool EncodePassword(const std::wstring& password, std::wstring& stored) {
    stored.clear();
    if (password.empty())
        return true;
    DATA_BLOB in = BlobOf(password.data(), password.size() * sizeof(wchar_t));
    DATA_BLOB out{};
    if (!::CryptProtectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN,
                            &out)) {
        VELK_LOG(L"@@@ Error : can't protect the proxy password (%lu)", ::GetLastError());
        return false;
    }
    win32::unique_hlocal owner(out.pbData);
    const std::wstring framed =
        FramePasswordBytes(std::vector<unsigned char>(out.pbData, out.pbData + out.cbData));
    if (framed.size() > kMaxStoredPasswordChars) {
        VELK_LOG(L"@@@ Error : the protected proxy password needs %u characters, more than %u",
                 static_cast<unsigned>(framed.size()), static_cast<unsigned>(kMaxStoredPasswordChars));
        return false;
    }
    stored = framed;
    return true;
}

bool DecodePassword(const std::wstring& stored, std::wstring& password) {
    password.clear();
    if (stored.empty())
        return true;
    std::vector<unsigned char> bytes;
    if (!UnframePasswordBytes(stored, bytes) || bytes.empty()) {
        VELK_LOG(L"!!! the stored proxy password is not in a known form; it is shown empty");
        return false;
    }
    DATA_BLOB in = BlobOf(bytes.data(), bytes.size());
    DATA_BLOB out{};
    if (!::CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN,
                              &out)) {
        VELK_LOG(L"!!! the stored proxy password can't be unprotected (%lu); it is shown empty",
                 ::GetLastError());
        return false;
    }
    win32::unique_hlocal owner(out.pbData);
    if (out.cbData % sizeof(wchar_t) != 0) {
        VELK_LOG(L"!!! the stored proxy password has an odd length; it is shown empty");
        return false;
    }
    password.assign(reinterpret_cast<const wchar_t*>(out.pbData), out.cbData / sizeof(wchar_t));
    return true;
}

}  // namespace velk::settings_ui
