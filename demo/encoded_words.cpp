#include "demo/encoded_words.h"

#include <optional>

#include "demo/mailbox.h"

namespace velk::demo {

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

int Base64Digit(char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

std::optional<std::string> DecodeQ(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '_') {
            out += ' ';
        } else if (text[i] == '=') {
            if (i + 2 >= text.size())
                return std::nullopt;
            int hi = HexDigit(text[i + 1]), lo = HexDigit(text[i + 2]);
            if (hi < 0 || lo < 0)
                return std::nullopt;
            out += static_cast<char>(hi * 16 + lo);
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::optional<std::string> DecodeB(std::string_view text) {
    std::string out;
    unsigned bits = 0;
    int count = 0;
    for (char c : text) {
        if (c == '=')
            break;
        int d = Base64Digit(c);
        if (d < 0)
            return std::nullopt;
        bits = (bits << 6) | static_cast<unsigned>(d);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    return out;
}

std::string Latin1ToUtf8(std::string_view text) {
    std::string out;
    for (char c : text) {
        unsigned char u = static_cast<unsigned char>(c);
        if (u < 0x80) {
            out += c;
        } else {
            out += static_cast<char>(0xC0 | (u >> 6));
            out += static_cast<char>(0x80 | (u & 0x3F));
        }
    }
    return out;
}

// The encoded word at the start of `text` ("=?cs?E?data?="): its decoded
// UTF-8 text and its length.
std::optional<std::pair<std::string, std::size_t>> EncodedWord(std::string_view text) {
    if (text.substr(0, 2) != "=?")
        return std::nullopt;
    std::size_t q1 = text.find('?', 2);
    if (q1 == std::string_view::npos || q1 + 2 >= text.size() || text[q1 + 2] != '?')
        return std::nullopt;
    std::size_t end = text.find("?=", q1 + 3);
    if (end == std::string_view::npos)
        return std::nullopt;
    std::string_view charset = text.substr(2, q1 - 2);
    charset = charset.substr(0, charset.find('*'));  // RFC 2231 language suffix
    const char encoding = text[q1 + 1];
    std::string_view data = text.substr(q1 + 3, end - q1 - 3);
    std::optional<std::string> bytes;
    if (encoding == 'Q' || encoding == 'q')
        bytes = DecodeQ(data);
    else if (encoding == 'B' || encoding == 'b')
        bytes = DecodeB(data);
    if (!bytes)
        return std::nullopt;
    if (EqualsNoCase(charset, "ISO-8859-1"))
        bytes = Latin1ToUtf8(*bytes);
    else if (!EqualsNoCase(charset, "UTF-8") && !EqualsNoCase(charset, "US-ASCII"))
        return std::nullopt;
    return std::make_pair(*bytes, end + 2);
}

}  // namespace

std::string DecodeEncodedWords(std::string_view value) {
    std::string out;
    std::string pending_blanks;  // dropped when an encoded word follows one
    bool after_word = false;
    std::size_t i = 0;
    while (i < value.size()) {
        if (auto word = EncodedWord(value.substr(i))) {
            if (!after_word)
                out += pending_blanks;
            pending_blanks.clear();
            out += word->first;
            i += word->second;
            after_word = true;
            continue;
        }
        const char c = value[i++];
        if (c == ' ' || c == '\t') {
            pending_blanks += c;
            continue;
        }
        out += pending_blanks;
        pending_blanks.clear();
        out += c;
        after_word = false;
    }
    return out + pending_blanks;
}

std::string SenderDisplayName(std::string_view from) {
    auto trim = [](std::string_view t) {
        while (!t.empty() && (t.front() == ' ' || t.front() == '\t'))
            t.remove_prefix(1);
        while (!t.empty() && (t.back() == ' ' || t.back() == '\t'))
            t.remove_suffix(1);
        return t;
    };
    const std::size_t open = from.rfind('<');
    std::string_view name =
        trim(open == std::string_view::npos ? std::string_view() : from.substr(0, open));
    if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
        name = trim(name.substr(1, name.size() - 2));
    if (!name.empty())
        return DecodeEncodedWords(name);
    std::string_view address = from;
    if (open != std::string_view::npos) {
        address = from.substr(open + 1);
        address = address.substr(0, address.find('>'));
    }
    return std::string(trim(address));
}

}  // namespace velk::demo
