#include "senders/address_check.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::senders {
namespace {

TEST(SenderAddressCheck, AcceptsOrdinaryAddressesPatternsAndDomains) {
    for (std::u16string_view a :
         {u"john.doe@example.com", u"J_D~x-y@Mail.Example.co.uk", u"*@*.example.com",
          u"news*@lists.example.org", u"1@2.3", u"a.*-b@c.com", u"**@b.com", u"a*@*b.com",
          // Without "@": a domain pattern with a dot.
          u"example.com", u"*.example.com", u"mail.*"})
        EXPECT_TRUE(IsValidSenderAddress(a)) << std::string(a.begin(), a.end());
}

TEST(SenderAddressCheck, RefusesWhatTheScanningProcessCannotMatch) {
    const char16_t* const refused[] = {
        // characters outside the allowed set
        u"j\u00F6rg@example.com", u"a@b.com\U0001F600", u"a+b@example.com", u"a b@example.com",
        u"a@b.com;c@d.com", u"a@[1.2.3.4]",
        // ends and the neighbours of "@" must be a letter, a digit or "*"
        u".a@b.com", u"a@b.com.", u"~a@b.com", u"@b.com", u"a@", u"a.@b.com", u"a@-b.com",
        // separators side by side
        u"a..b@c.com", u"a-.b@c.com", u"a@b.-c.com",
        // one "@", with a dot after it but not directly after it
        u"a@b@c.com", u"a@bcom", u"a@.b.com", u"a.b@com",
        // no dot at all; blanks are not trimmed
        u"localhost", u"*", u" a@b.com", u"a@b.com\r\n", u""};
    for (const char16_t* a : refused) {
        const std::u16string text(a);
        EXPECT_FALSE(IsValidSenderAddress(text)) << std::string(text.begin(), text.end());
    }
}

TEST(SenderAddressCheck, UpTo256CharactersPassAndLongerAddressesAreNotCut) {
    const std::u16string domain = u"@example.com";
    const std::u16string fits = std::u16string(256 - domain.size(), u'a') + domain;
    EXPECT_TRUE(IsValidSenderAddress(fits));
    EXPECT_FALSE(IsValidSenderAddress(u"a" + fits));
}

}  // namespace
}  // namespace velk::senders
