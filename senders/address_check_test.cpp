#include "senders/address_check.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::senders {
namespace {

TEST(SenderAddressCheck, AcceptsAddressesPatternsAndDomainsTheScanningProcessCanMatch) {
    for (std::u16string_view a :
         {u"john.doe@example.com", u"J_D~x-y@Mail.Example.co.uk", u"*@*.example.com",
          u"news*@lists.example.org", u"1@2.3", u"**@b.com", u"example.com", u"*.example.com"})
        EXPECT_TRUE(IsValidSenderAddress(a)) << std::string(a.begin(), a.end());
    const std::u16string domain = u"@example.com";
    const std::u16string longest = std::u16string(256 - domain.size(), u'a') + domain;
    EXPECT_TRUE(IsValidSenderAddress(longest));

    const std::u16string refused[] = {
        u"a" + longest,  // longer addresses are not cut
        // characters outside the allowed set
        u"j\u00F6rg@example.com", u"a+b@example.com", u"a@b.com;c@d.com",
        // ends and the neighbours of "@" must be a letter, a digit or "*"
        u".a@b.com", u"a@b.com.", u"@b.com", u"a.@b.com", u"a@-b.com",
        // separators side by side
        u"a..b@c.com", u"a-.b@c.com",
        // one "@", with a dot after it but not directly after it
        u"a@b@c.com", u"a@bcom", u"a@.b.com", u"a.b@com",
        // no dot at all; blanks are not trimmed
        u"localhost", u" a@b.com", u""};
    for (const std::u16string& a : refused)
        EXPECT_FALSE(IsValidSenderAddress(a)) << std::string(a.begin(), a.end());
}

}  // namespace
}  // namespace velk::senders
