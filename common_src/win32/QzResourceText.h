// Text helpers of the string loader that need no Win32: the escapes of the
// string tables and the shape of the online-help address.
#pragma once

#include <initializer_list>
#include <string>

namespace velk {

// A string table keeps each text on one line, writing a line break as the two
// characters backslash-n (and a carriage return as backslash-r). Turns them
// into the real characters; every other backslash stays as it is.
std::wstring ExpandLineEscapes(const std::wstring& text);

// The online-help address: the base address, then each non-empty part, every
// part after a "/" and the address ending in "/". A "/" already ending the
// base is not doubled.
std::wstring JoinHelpAddress(const std::wstring& base, std::initializer_list<std::wstring> parts);

}  // namespace velk
