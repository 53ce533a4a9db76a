// The header text of a clone or move request, cut into the header lines the
// store gets, and the test that picks a quarantined message out of its
// header block. Both work on ANSI bytes, after the caller's code-page
// conversion.
//
// Platform-free: tested natively and fuzzed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velk::actions {

struct HeaderLine {
    std::string name;
    std::string value;
    bool operator==(const HeaderLine& o) const { return name == o.name && value == o.value; }
};

// A line ends at the first CR or LF; one more CR or LF right after it belongs
// to the same line end (CR LF, LF CR, CR CR and LF LF each end one line), so
// an empty line between two line ends is lost. Lines that are empty or have
// no ':' are skipped. The name is everything before the first ':', as is;
// the value is the rest with its leading blanks (' ' only) removed.
std::vector<HeaderLine> CutHeaderLines(std::string_view text);

// The scanning process asks for a new subject with this pseudo-header; the
// name is matched exactly, case included.
constexpr std::string_view kTaggedSubjectHeader = "X-QZ-AS-Tagged-Subject";

// True for the upper-cased header block of a message the add-in quarantined:
// it carries one of our header prefixes and the quarantine-time header.
bool IsQuarantinedHeaderBlock(std::string_view upper_case_headers);

}  // namespace velk::actions
