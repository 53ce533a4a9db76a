#include "common_src/win32/placeholders.h"

#include <cwchar>

namespace velk::win32 {

std::wstring ReplacePlaceholders(const std::wstring& text, const Placeholders& values) {
    struct Token {
        const wchar_t* token;
        const std::wstring* value;
    };
    const Token tokens[] = {{kSpamNameToken, &values.spam_name},
                            {kCorpNameToken, &values.corp_name},
                            {kProductNameToken, &values.product_name}};
    std::wstring out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        bool replaced = false;
        if (text[i] == L'<') {
            for (const Token& t : tokens) {
                const std::size_t n = std::wcslen(t.token);
                if (text.compare(i, n, t.token) == 0) {
                    out += *t.value;
                    i += n;
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced)
            out += text[i++];
    }
    return out;
}

}  // namespace velk::win32
