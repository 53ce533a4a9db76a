// Text helpers of the sender lists: the UTF-8 <-> UTF-16 conversions of the
// list files, the key folding and the field clean-ups.
//
// Platform-free: text is held as UTF-16 (char16_t) so that the same code gives
// the same bytes on Windows (16-bit wchar_t) and natively (32-bit wchar_t).
#pragma once

#include <string>
#include <string_view>

namespace velk::senders {

inline constexpr char16_t kReplacementChar = 0xFFFD;

// Appends `utf8` decoded to UTF-16. Bytes that are not well-formed UTF-8
// (stray continuation bytes, overlong forms, encoded surrogates, values above
// U+10FFFF, a sequence cut short) each become one U+FFFD per maximal ill-formed
// subpart, the W3C/Unicode recommended practice, so a damaged byte never
// swallows the tag text that follows it.
void AppendUtf8AsUtf16(std::string_view utf8, std::u16string& out);

// Appends `utf16` encoded as UTF-8. A lone surrogate has no UTF-8 form and is
// written as U+FFFD (EF BF BD).
void AppendUtf16AsUtf8(std::u16string_view utf16, std::string& out);

std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);

inline char16_t FoldKeyChar(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

// The list key: only A-Z are folded. Other scripts keep their case, as the
// scanning process folds keys the same way.
std::u16string FoldKey(std::u16string_view address);

// Every run of "*" becomes one "*".
void CollapseAsteriskRuns(std::u16string& text);

// Windows callers hold text as wchar_t. On Windows that is UTF-16 already; where
// wchar_t is 32 bits (the native test build) the text goes through UTF-32.
std::u16string ToU16(std::wstring_view text);
std::wstring ToWide(std::u16string_view text);

}  // namespace velk::senders
