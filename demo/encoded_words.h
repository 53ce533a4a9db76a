// Header values for display: RFC 2047 encoded words ("=?UTF-8?Q?...?=")
// decoded to UTF-8, so the client stand-in's message list reads like a mail
// client's. No Win32 here.
#pragma once

#include <string>
#include <string_view>

namespace velk::demo {

// Decodes the encoded words of UTF-8, US-ASCII and ISO-8859-1 text in B or
// Q encoding; blanks between two adjacent encoded words go, as RFC 2047
// says. A word that is malformed or of another charset stays as written.
std::string DecodeEncodedWords(std::string_view value);

// The sender as a message list shows it: the display name of a From value
// ("Name" <address> or Name <address>), decoded and unquoted, else the
// address.
std::string SenderDisplayName(std::string_view from);

}  // namespace velk::demo
