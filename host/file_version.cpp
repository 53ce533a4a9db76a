#include "host/file_version.h"

#include <windows.h>

#include <cwchar>
#include <vector>

namespace velk::host {
namespace {

std::wstring QueryString(const std::vector<BYTE>& block, WORD language, WORD codepage) {
    wchar_t query[64];
    std::swprintf(query, 64, L"\\StringFileInfo\\%04x%04x\\FileVersion", language, codepage);
    wchar_t* value = nullptr;
    UINT chars = 0;
    if (!::VerQueryValueW(block.data(), query, reinterpret_cast<void**>(&value), &chars) ||
        value == nullptr || chars == 0) {
        return std::wstring();
    }
    // `chars` counts the terminator when there is one; never read past it.
    std::wstring text(value, chars);
    text.resize(std::wcslen(text.c_str()));
    return text;
}

}  // namespace

std::wstring ReadFileVersionText(const std::wstring& path) {
    DWORD ignored = 0;
    DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &ignored);
    if (size == 0)
        return std::wstring();
    std::vector<BYTE> block(size);
    if (!::GetFileVersionInfoW(path.c_str(), 0, size, block.data()))
        return std::wstring();

    struct Translation {
        WORD language;
        WORD codepage;
    };
    Translation* list = nullptr;
    UINT bytes = 0;
    if (::VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation",
                         reinterpret_cast<void**>(&list), &bytes) &&
        list != nullptr && bytes >= sizeof(Translation)) {
        std::wstring text = QueryString(block, list[0].language, list[0].codepage);
        if (!text.empty())
            return text;
    }
    std::wstring text = QueryString(block, 0x0409, 1200);
    if (text.empty())
        text = QueryString(block, 0x0409, 1252);
    return text;
}

}  // namespace velk::host
