#include "demo/store_journal.h"

#include <cstdlib>

namespace velk::demo {

namespace {

std::optional<std::uint32_t> Decimal(std::string_view text) {
    if (text.empty() || text.size() > 10)
        return std::nullopt;
    std::uint64_t value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    if (value > 0xFFFFFFFFull)
        return std::nullopt;
    return static_cast<std::uint32_t>(value);
}

std::optional<std::uint32_t> Hex32(std::string_view text) {
    if (text.size() != 10 || text.substr(0, 2) != "0x")
        return std::nullopt;
    std::uint32_t value = 0;
    for (char c : text.substr(2)) {
        int digit = c >= '0' && c <= '9'   ? c - '0'
                    : c >= 'A' && c <= 'F' ? c - 'A' + 10
                    : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                           : -1;
        if (digit < 0)
            return std::nullopt;
        value = value * 16 + static_cast<std::uint32_t>(digit);
    }
    return value;
}

// The target and result are taken from the right: argument values (a subject,
// a header value) may hold " @" or " -> " themselves, the suffixes never do.
JournalEntry ParseLine(std::string_view line) {
    JournalEntry e;
    std::size_t arrow = line.rfind(" -> ");
    if (arrow != std::string_view::npos && line.find(' ', arrow + 4) == std::string_view::npos) {
        e.hr = Hex32(line.substr(arrow + 4));  // "pending" stays absent
        line = line.substr(0, arrow);
    }
    std::size_t at = line.rfind(" @");
    if (at != std::string_view::npos && line.find(' ', at + 2) == std::string_view::npos) {
        std::string_view target = line.substr(at + 2);
        std::size_t slash = target.find('/');
        e.folder = Decimal(target.substr(0, slash));
        if (slash != std::string_view::npos)
            e.msg = Decimal(target.substr(slash + 1));
        line = line.substr(0, at);
    }
    e.call = std::string(line);
    std::size_t open = line.find('(');
    e.method = std::string(line.substr(0, open));
    if (open != std::string_view::npos && line.back() == ')')
        e.args = std::string(line.substr(open + 1, line.size() - open - 2));
    return e;
}

}  // namespace

std::string JournalEntry::FirstArg() const {
    return args.substr(0, args.find(", "));
}

std::optional<std::uint32_t> JournalEntry::NumberArg(std::size_t n) const {
    std::string_view rest = args;
    for (std::size_t i = 0; i < n; ++i) {
        std::size_t comma = rest.find(", ");
        if (comma == std::string_view::npos)
            return std::nullopt;
        rest.remove_prefix(comma + 2);
    }
    return Decimal(rest.substr(0, rest.find(", ")));
}

std::vector<JournalEntry> ParseJournal(std::string_view text) {
    std::vector<JournalEntry> entries;
    while (!text.empty()) {
        std::size_t nl = text.find('\n');
        std::string_view line = text.substr(0, nl);
        text = nl == std::string_view::npos ? std::string_view() : text.substr(nl + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (!line.empty())
            entries.push_back(ParseLine(line));
    }
    return entries;
}

}  // namespace velk::demo
