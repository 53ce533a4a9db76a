// The three placeholders of the localised texts and the values they stand
// for. Translators keep the tokens exactly as they are; the windows replace
// them through this one function.
//
// Platform-free.
#pragma once

#include <string>

namespace velk::win32 {

constexpr wchar_t kSpamNameToken[] = L"<$SPAM_NAME>";
constexpr wchar_t kCorpNameToken[] = L"<$CORP_NAME>";
constexpr wchar_t kProductNameToken[] = L"<$PRODUCT NAME>";

struct Placeholders {
    std::wstring spam_name;     // <$SPAM_NAME>
    std::wstring corp_name;     // <$CORP_NAME>
    std::wstring product_name;  // <$PRODUCT NAME>
};

// The value an administrator set in the installation file wins; an empty
// one falls back to the localised text.
inline std::wstring Prefer(const std::wstring& installed, const std::wstring& localised) {
    return installed.empty() ? localised : installed;
}

// Every occurrence of each token replaced by its value. A value that itself
// contains a token is not expanded again.
std::wstring ReplacePlaceholders(const std::wstring& text, const Placeholders& values);

}  // namespace velk::win32
