#include "actions/header_lines.h"

namespace velk::actions {
namespace {

bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

}  // namespace

std::vector<HeaderLine> CutHeaderLines(std::string_view text) {
    std::vector<HeaderLine> lines;
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = pos;
        while (end < text.size() && !IsLineEnd(text[end]))
            ++end;
        const std::string_view line = text.substr(pos, end - pos);
        pos = end;
        if (pos < text.size())
            ++pos;
        if (pos < text.size() && IsLineEnd(text[pos]))
            ++pos;

        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos)
            continue;  // also drops empty lines
        std::string_view value = line.substr(colon + 1);
        const std::size_t first = value.find_first_not_of(' ');
        value = first == std::string_view::npos ? std::string_view() : value.substr(first);
        lines.push_back(HeaderLine{std::string(line.substr(0, colon)), std::string(value)});
    }
    return lines;
}

bool IsQuarantinedHeaderBlock(std::string_view upper_case_headers) {
    // The first test alone says "one of ours"; only the quarantine stamp makes
    // a message purgeable. Both are kept so the purge reads like the rule the
    // scanning process was written against.
    const bool ours = upper_case_headers.find("X-QZ-AS-") != std::string_view::npos ||
                      upper_case_headers.find("X-NUVEXA-") != std::string_view::npos;
    return ours && upper_case_headers.find("X-NUVEXA-ANTISPAMADDIN-QUARANTINETIME") !=
                       std::string_view::npos;
}

}  // namespace velk::actions
