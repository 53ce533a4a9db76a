#include "senders/sender_text.h"

#include <cstdint>

namespace velk::senders {

namespace {

bool IsHighSurrogate(std::uint32_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool IsLowSurrogate(std::uint32_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

}  // namespace

void AppendUtf8AsUtf16(std::string_view utf8, std::u16string& out) {
    // A UTF-16 text never has more code units than its UTF-8 form has bytes, so
    // one resize up front lets the loop write through a pointer.
    const std::size_t start = out.size();
    out.resize(start + utf8.size());
    char16_t* dst = &out[0] + start;
    const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
    const auto* const end = p + utf8.size();

    while (p < end) {
        const unsigned lead = *p;
        if (lead < 0x80) {
            *dst++ = static_cast<char16_t>(lead);
            ++p;
            continue;
        }
        int trail;
        std::uint32_t cp;
        // The first trail byte has a narrower range for some leads: that is
        // what rules out overlong forms, surrogates and values above U+10FFFF.
        unsigned lo = 0x80, hi = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            trail = 1;
            cp = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            trail = 2;
            cp = lead & 0x0F;
            if (lead == 0xE0)
                lo = 0xA0;
            if (lead == 0xED)
                hi = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            trail = 3;
            cp = lead & 0x07;
            if (lead == 0xF0)
                lo = 0x90;
            if (lead == 0xF4)
                hi = 0x8F;
        } else {
            *dst++ = kReplacementChar;
            ++p;
            continue;
        }
        ++p;
        bool complete = true;
        for (int i = 0; i < trail; ++i) {
            if (p == end || *p < lo || *p > hi) {
                complete = false;
                break;
            }
            cp = (cp << 6) | (*p & 0x3Fu);
            ++p;
            lo = 0x80;
            hi = 0xBF;
        }
        if (!complete) {
            // The byte that broke the sequence is read again as a new lead.
            *dst++ = kReplacementChar;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            *dst++ = static_cast<char16_t>(0xD800 + (cp >> 10));
            *dst++ = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            *dst++ = static_cast<char16_t>(cp);
        }
    }
    out.resize(static_cast<std::size_t>(dst - out.data()));
}

void AppendUtf16AsUtf8(std::u16string_view utf16, std::string& out) {
    const std::size_t n = utf16.size();
    out.reserve(out.size() + n);
    for (std::size_t i = 0; i < n; ++i) {
        std::uint32_t c = utf16[i];
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
            continue;
        }
        if (IsHighSurrogate(c) && i + 1 < n && IsLowSurrogate(utf16[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (utf16[i + 1] - 0xDC00u);
            ++i;
        } else if (IsHighSurrogate(c) || IsLowSurrogate(c)) {
            c = kReplacementChar;
        }
        if (c < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        } else if (c < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        }
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

std::u16string Utf8ToUtf16(std::string_view utf8) {
    std::u16string out;
    AppendUtf8AsUtf16(utf8, out);
    return out;
}

std::string Utf16ToUtf8(std::u16string_view utf16) {
    std::string out;
    AppendUtf16AsUtf8(utf16, out);
    return out;
}

std::u16string FoldKey(std::u16string_view address) {
    std::u16string key(address);
    for (char16_t& c : key)
        c = FoldKeyChar(c);
    return key;
}

void CollapseAsteriskRuns(std::u16string& text) {
    // Most addresses hold no run at all: leave them untouched.
    const std::size_t run = text.find(u"**");
    if (run == std::u16string::npos)
        return;
    std::size_t w = run + 1;
    for (std::size_t r = run + 2; r < text.size(); ++r) {
        if (text[r] == u'*' && w > 0 && text[w - 1] == u'*')
            continue;
        text[w++] = text[r];
    }
    text.resize(w);
}

std::u16string ToU16(std::wstring_view text) {
    std::u16string out;
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
        out.assign(text.begin(), text.end());
    } else {
        out.reserve(text.size());
        for (wchar_t wc : text) {
            auto c = static_cast<std::uint32_t>(wc);
            if (c > 0x10FFFF) {
                out.push_back(kReplacementChar);
            } else if (c >= 0x10000) {
                c -= 0x10000;
                out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
                out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
            } else {
                out.push_back(static_cast<char16_t>(c));
            }
        }
    }
    return out;
}

std::wstring ToWide(std::u16string_view text) {
    std::wstring out;
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
        out.assign(text.begin(), text.end());
    } else {
        out.reserve(text.size());
        for (std::size_t i = 0; i < text.size(); ++i) {
            std::uint32_t c = text[i];
            if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
                c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00u);
                ++i;
            }
            // A lone surrogate is kept as its own value: lossless both ways.
            out.push_back(static_cast<wchar_t>(c));
        }
    }
    return out;
}

}  // namespace velk::senders
