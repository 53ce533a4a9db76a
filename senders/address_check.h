// The check the sender edit dialog makes before it accepts an address for the
// approved or blocked list.
#pragma once

#include <cstddef>
#include <string_view>

namespace velk::senders {

inline constexpr std::size_t kMaxSenderAddressChars = 256;

// True when `address` may be stored as a sender address or pattern:
//  - 1 to 256 characters, only ASCII letters, digits, "@" and "-._~*";
//    anything above 127 fails (128 is no allowed character either);
//  - the first and the last character are a letter, a digit or "*";
//  - "-", ".", "_" and "~" never stand side by side;
//  - at most one "@", and a "." somewhere after it but not directly after.
// Choices of ours within those rules:
//  - an address longer than 256 characters fails; it is not cut to fit;
//  - nothing is trimmed: a blank is no allowed character, so the caller trims
//    first if it wants to;
//  - an address without "@" passes as a domain pattern ("example.com",
//    "*.example.com") but, like the part after an "@", must hold a ".";
//    so "*" alone, which would match every sender, fails;
//  - the characters on both sides of "@" are held to the rule of the ends (a
//    letter, a digit or "*"): "a.@b.com" and "a@-b.com" fail;
//  - runs of "*" pass ("**@x.com"); the dialog collapses them afterwards.
bool IsValidSenderAddress(std::u16string_view address);

}  // namespace velk::senders
