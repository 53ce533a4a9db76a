// The header block of an RFC 5322 message, edited in place on its bytes.
//
// The store stand-in rewrites header blocks the way a mail store does, and
// tests compare the files byte for byte, so an edit touches only the field
// it concerns: every other byte, the body and the block's own line ending
// (CRLF or LF) stay as they were. Text is UTF-8 (ASCII in practice).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velk::tools::eml {

// The header block: from the start up to and including the line end of the
// last header line; the blank line that ends it is not part of it. A message
// without a blank line is all header; one that starts with a blank line has
// an empty block.
std::string_view HeaderBlock(std::string_view message);

// The line ending the message uses: that of its first line, CRLF when it
// has none.
std::string_view LineEnding(std::string_view message);

// The value of the first field named `name` (ASCII case-insensitive):
// continuation lines unfolded (their line ends removed), blanks after the
// colon removed. nullopt when there is no such field.
std::optional<std::string> FindHeader(std::string_view message, std::string_view name);

// True when `name: value` can be written as one header line without
// changing the structure of the block.
bool IsWritableField(std::string_view name, std::string_view value);

// Replaces the first field named `name` by the line "name: value" and drops
// later fields of that name; adds the line at the end of the block when
// there is none. nullopt (message unchanged) when !IsWritableField.
std::optional<std::string> SetHeader(std::string_view message, std::string_view name,
                                     std::string_view value);

}  // namespace velk::tools::eml
