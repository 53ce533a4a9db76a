#include "senders/address_check.h"

namespace velk::senders {

namespace {

bool IsAsciiAlnum(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9');
}

bool IsSeparator(char16_t c) {
    return c == u'-' || c == u'.' || c == u'_' || c == u'~';
}

// What may stand at either end of the address and on either side of "@".
bool IsBoundary(char16_t c) {
    return IsAsciiAlnum(c) || c == u'*';
}

}  // namespace

bool IsValidSenderAddress(std::u16string_view address) {
    if (address.empty() || address.size() > kMaxSenderAddressChars)
        return false;

    std::size_t at = std::u16string_view::npos;
    for (std::size_t i = 0; i < address.size(); ++i) {
        const char16_t c = address[i];
        if (c == u'@') {
            if (at != std::u16string_view::npos)
                return false;
            at = i;
        } else if (IsSeparator(c)) {
            if (i > 0 && IsSeparator(address[i - 1]))
                return false;
        } else if (!IsBoundary(c)) {
            return false;
        }
    }
    if (!IsBoundary(address.front()) || !IsBoundary(address.back()))
        return false;

    if (at == std::u16string_view::npos)
        return address.find(u'.') != std::u16string_view::npos;
    // The ends are boundaries, so "@" has a character on each side.
    if (!IsBoundary(address[at - 1]) || !IsBoundary(address[at + 1]))
        return false;
    return address.find(u'.', at + 1) != std::u16string_view::npos;
}

}  // namespace velk::senders
