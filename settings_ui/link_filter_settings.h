// What the link filter page keeps in section [LinkFilter] of the user
// settings file (keys in settings/setting_keys.h), and the rules for the
// trusted domains the user types. The scanning process reads the section
// after message 1037.
//
//   EnableLinkFilter     "1"/"0"  check the links of incoming messages
//   WarnMismatchedLinks  "1"/"0"  flag a link whose text shows another address
//   FlagNumericLinks     "1"/"0"  flag links to numeric host addresses
//   TrustedDomains       text     "example.com;mail.example.org": links to these
//                                 domains and their subdomains are never flagged
//
// Platform-free.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/settings_access.h"

namespace velk::settings_ui {

struct LinkFilterValues {
    bool enabled = true;
    bool warn_mismatched = true;
    bool flag_numeric = true;
    std::vector<std::wstring> trusted;  // normalised, no duplicates, in the user's order

    bool operator==(const LinkFilterValues& other) const;
};

// A domain as the user may type it ("Example.COM", "*.example.com",
// "http://www.example.com/path", " example.com. ") in the form it is kept
// in: lower case, no scheme, path, port, wildcard or final dot. Empty when it
// is no domain name: no dot, a label empty or over 63 characters, a
// character other than a-z, 0-9 and "-", a label starting or ending with
// "-", all over 253 characters, or a numeric address.
std::optional<std::wstring> NormalizeDomain(std::wstring_view text);

// The stored list: ";"-separated (blanks and "," tolerated); entries that
// are no domain and repeats are dropped.
std::vector<std::wstring> ParseTrustedDomains(std::wstring_view text);
std::wstring JoinTrustedDomains(const std::vector<std::wstring>& domains);

// Whether the list still fits the one value the settings file can give
// back (settings::kValueBufferChars): a longer one would be cut on reading.
bool TrustedDomainsFit(const std::vector<std::wstring>& domains);

LinkFilterValues LoadLinkFilter(settings::Profile& profile);
// The four keys in the order above; false when a write failed (logged).
bool SaveLinkFilter(settings::Profile& profile, const LinkFilterValues& values);

}  // namespace velk::settings_ui
