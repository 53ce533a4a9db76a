#include "common_src/win32/QzResourceText.h"

namespace velk {

std::wstring ExpandLineEscapes(const std::wstring& text) {
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'\\' && i + 1 < text.size()) {
            if (text[i + 1] == L'n') {
                out.push_back(L'\n');
                ++i;
                continue;
            }
            if (text[i + 1] == L'r') {
                out.push_back(L'\r');
                ++i;
                continue;
            }
        }
        out.push_back(text[i]);
    }
    return out;
}

std::wstring JoinHelpAddress(const std::wstring& base, std::initializer_list<std::wstring> parts) {
    std::wstring address = base;
    auto endWithSlash = [&address] {
        if (address.empty() || address.back() != L'/')
            address.push_back(L'/');
    };
    for (const std::wstring& part : parts) {
        if (part.empty())
            continue;
        endWithSlash();
        address += part;
    }
    endWithSlash();
    return address;
}

}  // namespace velk
