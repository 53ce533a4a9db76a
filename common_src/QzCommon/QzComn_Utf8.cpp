// The Windows half of the string helpers: code-page conversion.
#include "common_src/QzCommon/QzComn_String.h"

#include <windows.h>

#include <climits>
#include <vector>

namespace QzCommon {
namespace String {

bool Utf8ToWide(const std::string& text, std::wstring& out, std::uint32_t* errorCode) {
    if (text.size() >= static_cast<std::size_t>(INT_MAX)) {
        if (errorCode)
            *errorCode = ERROR_INVALID_PARAMETER;
        return false;
    }
    // The first call measures, terminator included (the input length is -1).
    const int chars = ::MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    if (chars <= 0) {
        if (errorCode)
            *errorCode = ::GetLastError();
        return false;
    }
    std::vector<wchar_t> buffer(static_cast<std::size_t>(chars));
    if (::MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, buffer.data(), chars) <= 0) {
        if (errorCode)
            *errorCode = ::GetLastError();
        return false;
    }
    out.assign(buffer.data());
    return true;
}

}  // namespace String
}  // namespace QzCommon
