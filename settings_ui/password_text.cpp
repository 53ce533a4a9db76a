#include "settings_ui/password_text.h"

namespace velk::settings_ui {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int ValueOf(wchar_t c) {
    if (c >= L'A' && c <= L'Z')
        return c - L'A';
    if (c >= L'a' && c <= L'z')
        return c - L'a' + 26;
    if (c >= L'0' && c <= L'9')
        return c - L'0' + 52;
    if (c == L'+')
        return 62;
    if (c == L'/')
        return 63;
    return -1;
}

}  // namespace

std::wstring Base64Encode(const std::vector<unsigned char>& bytes) {
    std::wstring text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const unsigned v = (bytes[i] << 16) | (bytes[i + 1] << 8) | bytes[i + 2];
        text += kAlphabet[(v >> 18) & 63];
        text += kAlphabet[(v >> 12) & 63];
        text += kAlphabet[(v >> 6) & 63];
        text += kAlphabet[v & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        const unsigned v = (bytes[i] << 16) | (rest == 2 ? bytes[i + 1] << 8 : 0);
        text += kAlphabet[(v >> 18) & 63];
        text += kAlphabet[(v >> 12) & 63];
        text += rest == 2 ? static_cast<wchar_t>(kAlphabet[(v >> 6) & 63]) : L'=';
        text += L'=';
    }
    return text;
}

bool Base64Decode(const std::wstring& text, std::vector<unsigned char>& bytes) {
    if (text.size() % 4 != 0)
        return false;
    std::vector<unsigned char> out;
    out.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        int padding = 0;
        if (last && text[i + 3] == L'=')
            padding = text[i + 2] == L'=' ? 2 : 1;
        unsigned v = 0;
        for (int k = 0; k < 4; ++k) {
            const int value = k >= 4 - padding ? 0 : ValueOf(text[i + k]);
            if (value < 0)
                return false;
            v = (v << 6) | static_cast<unsigned>(value);
        }
        out.push_back(static_cast<unsigned char>(v >> 16));
        if (padding < 2)
            out.push_back(static_cast<unsigned char>(v >> 8));
        if (padding < 1)
            out.push_back(static_cast<unsigned char>(v));
        // Spare bits under the padding must be zero, or two texts would
        // stand for the same bytes.
        if ((padding == 1 && (v & 0xFF) != 0) || (padding == 2 && (v & 0xFFFF) != 0))
            return false;
    }
    bytes.swap(out);
    return true;
}

std::wstring FramePasswordBytes(const std::vector<unsigned char>& bytes) {
    return kPasswordSchemePrefix + Base64Encode(bytes);
}

bool UnframePasswordBytes(const std::wstring& text, std::vector<unsigned char>& bytes) {
    const std::wstring prefix = kPasswordSchemePrefix;
    if (text.size() > kMaxStoredPasswordChars || text.compare(0, prefix.size(), prefix) != 0)
        return false;
    return Base64Decode(text.substr(prefix.size()), bytes);
}

}  // namespace velk::settings_ui
