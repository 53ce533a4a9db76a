#include "tools/store_stub/eml_header.h"

#include <vector>

namespace velk::tools::eml {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

char Lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (Lower(a[i]) != Lower(b[i]))
            return false;
    }
    return true;
}

// Blanks before the colon are not part of a field's name ("Name : v").
std::string_view TrimTrailingBlanks(std::string_view name) {
    while (!name.empty() && IsBlank(name.back()))
        name.remove_suffix(1);
    return name;
}

// One physical line: [begin, content_end) is the text, [content_end, end)
// its line end (empty on a last line without one).
struct Line {
    std::size_t begin;
    std::size_t content_end;
    std::size_t end;
};

Line LineAt(std::string_view text, std::size_t pos) {
    std::size_t nl = text.find('\n', pos);
    if (nl == std::string_view::npos)
        return {pos, text.size(), text.size()};
    std::size_t content_end = (nl > pos && text[nl - 1] == '\r') ? nl - 1 : nl;
    return {pos, content_end, nl + 1};
}

// A field: its first line and any continuation lines (starting with a blank).
struct Field {
    std::size_t begin;
    std::size_t end;          // after the last line's line end
    std::string_view name;    // before the first ':' (trailing blanks cut)
    std::size_t value_begin;  // after the ':'
    bool has_colon;
};

std::vector<Field> Fields(std::string_view block) {
    std::vector<Field> fields;
    std::size_t pos = 0;
    while (pos < block.size()) {
        Line first = LineAt(block, pos);
        Field f{first.begin, first.end, {}, first.content_end, false};
        std::string_view text = block.substr(first.begin, first.content_end - first.begin);
        std::size_t colon = text.find(':');
        if (colon != std::string_view::npos) {
            f.name = TrimTrailingBlanks(text.substr(0, colon));
            f.value_begin = first.begin + colon + 1;
            f.has_colon = true;
        }
        pos = first.end;
        while (pos < block.size() && IsBlank(block[pos])) {
            pos = LineAt(block, pos).end;
        }
        f.end = pos;
        fields.push_back(f);
    }
    return fields;
}

bool Matches(const Field& f, std::string_view name) {
    return f.has_colon && !f.name.empty() && !IsBlank(f.name.front()) &&
           EqualsNoCase(f.name, TrimTrailingBlanks(name));
}

}  // namespace

std::string_view HeaderBlock(std::string_view message) {
    std::size_t pos = 0;
    while (pos < message.size()) {
        Line line = LineAt(message, pos);
        if (line.content_end == line.begin && line.end > line.begin) {
            return message.substr(0, pos);  // a blank line ends the block
        }
        pos = line.end;
    }
    return message;
}

std::string_view LineEnding(std::string_view message) {
    std::size_t nl = message.find('\n');
    if (nl != std::string_view::npos && (nl == 0 || message[nl - 1] != '\r'))
        return "\n";
    return "\r\n";
}

std::optional<std::string> FindHeader(std::string_view message, std::string_view name) {
    std::string_view block = HeaderBlock(message);
    for (const Field& f : Fields(block)) {
        if (!Matches(f, name))
            continue;
        std::string value;
        std::size_t pos = f.value_begin;
        while (pos < f.end) {
            Line line = LineAt(block, pos);
            value.append(block.substr(pos, line.content_end - pos));
            pos = line.end;
        }
        std::size_t first = 0;
        while (first < value.size() && IsBlank(value[first]))
            ++first;
        return value.substr(first);
    }
    return std::nullopt;
}

bool IsWritableField(std::string_view name, std::string_view value) {
    if (name.empty() || IsBlank(name.front()))
        return false;
    if (name.find_first_of(":\r\n") != std::string_view::npos)
        return false;
    return value.find_first_of("\r\n") == std::string_view::npos;
}

std::optional<std::string> SetHeader(std::string_view message, std::string_view name,
                                     std::string_view value) {
    if (!IsWritableField(name, value))
        return std::nullopt;
    std::string_view eol = LineEnding(message);
    std::string_view block = HeaderBlock(message);

    std::string line;
    line.reserve(name.size() + value.size() + 4);
    line.append(name).append(": ").append(value).append(eol);

    std::string out;
    out.reserve(message.size() + line.size() + eol.size());
    bool written = false;
    std::size_t copied = 0;
    for (const Field& f : Fields(block)) {
        if (!Matches(f, name))
            continue;
        out.append(message.substr(copied, f.begin - copied));
        if (!written) {
            out.append(line);
            written = true;
        }
        copied = f.end;
    }
    out.append(message.substr(copied, block.size() - copied));
    if (!written) {
        // A block whose last line has no line end (a message of headers
        // only) needs one before the new line; a lone CR there must not
        // become a blank line, which would end the block before the new field.
        if (!block.empty() && block.back() != '\n') {
            std::string_view last = block.substr(block.rfind('\n') + 1);
            out.append(last == "\r" ? std::string_view("\r\n") : eol);
        }
        out.append(line);
    }
    out.append(message.substr(block.size()));
    return out;
}

}  // namespace velk::tools::eml
