// The text framing of the stored proxy password: a prefix naming the scheme
// and the protected bytes in base64. password_codec.h says what the bytes
// are and is the one description of the whole format.
//
// Platform-free.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velk::settings_ui {

// Scheme 1: the bytes are a per-user data-protection blob.
constexpr wchar_t kPasswordSchemePrefix[] = L"DP1:";

// The stored text must fit the settings readers' 1024-character buffer
// with its terminator.
constexpr std::size_t kMaxStoredPasswordChars = 1023;

// RFC 4648 base64, standard alphabet, "=" padding, no line breaks.
std::wstring Base64Encode(const std::vector<unsigned char>& bytes);
// Only the canonical form: a length that is a multiple of 4, padding at the
// end only, no blanks, and zero bits where the last character has spare
// ones. Anything else is false with `bytes` untouched.
bool Base64Decode(const std::wstring& text, std::vector<unsigned char>& bytes);

// The prefix followed by the bytes in base64.
std::wstring FramePasswordBytes(const std::vector<unsigned char>& bytes);
// The bytes of a framed text; false for another prefix, a malformed body or
// a text longer than kMaxStoredPasswordChars.
bool UnframePasswordBytes(const std::wstring& text, std::vector<unsigned char>& bytes);

}  // namespace velk::settings_ui
