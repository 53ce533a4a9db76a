#include "senders/address_check.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::senders {
namespace {

void ExpectAll(bool expected, std::initializer_list<std::u16string_view> addresses) {
    int index = 0;
    for (std::u16string_view a : addresses) {
        EXPECT_EQ(IsValidSenderAddress(a), expected) << "address #" << index++ << " of the list";
    }
}

TEST(SenderAddressCheck, AcceptsOrdinaryAddressesAndPatterns) {
    ExpectAll(true, {u"john.doe@example.com", u"J_D~x-y@Mail.Example.co.uk", u"*@example.com",
                     u"*@*.example.com", u"news*@lists.example.org", u"a@b.c", u"1@2.3", u"*@*.*"});
}

TEST(SenderAddressCheck, RefusesCharactersOutsideTheAllowedSet) {
    ExpectAll(false, {u"j\u00F6rg@example.com", u"a@\u5C71.com", u"a@b.com\U0001F600",
                      u"a\u0080@b.com", u"a+b@example.com", u"a b@example.com",
                      u"\"a\"@example.com", u"a@b.com;c@d.com", u"a@[1.2.3.4]"});
}

TEST(SenderAddressCheck, TheEndsMustBeALetterADigitOrAnAsterisk) {
    ExpectAll(false,
              {u".a@b.com", u"a@b.com.", u"-a@b.com", u"a@b.com_", u"~a@b.com", u"@b.com", u"a@"});
    ExpectAll(true, {u"*a@b.com", u"a@b.*", u"9@b.com"});
}

TEST(SenderAddressCheck, SeparatorsNeverStandSideBySide) {
    ExpectAll(false, {u"a..b@c.com", u"a-.b@c.com", u"a@c._com", u"a~~b@c.com", u"a@b.-c.com"});
    // An asterisk between two separators keeps them apart.
    ExpectAll(true, {u"a.*-b@c.com", u"a-b.c_d~e@f.com"});
}

TEST(SenderAddressCheck, AtMostOneAtWithADotAfterItButNotDirectlyAfter) {
    ExpectAll(false, {u"a@b@c.com", u"a@bcom", u"a@.b.com", u"a.b@com"});
    ExpectAll(true, {u"a@b.com", u"a.b@c.d"});
}

// Choices of ours, one check each.
TEST(SenderAddressCheck, AnAddressWithoutAtPassesAsADomainPatternWithADot) {
    ExpectAll(true, {u"example.com", u"*.example.com", u"mail.*"});
    ExpectAll(false, {u"localhost", u"*", u"john"});
}

TEST(SenderAddressCheck, BothNeighboursOfTheAtFollowTheRuleOfTheEnds) {
    ExpectAll(false, {u"a.@b.com", u"a-@b.com", u"a@-b.com", u"a@~b.com", u"a_@b.com"});
    ExpectAll(true, {u"*@*.com", u"a*@*b.com"});
}

TEST(SenderAddressCheck, UpTo256CharactersPassAndLongerAddressesAreNotCut) {
    const std::u16string domain = u"@example.com";
    const std::u16string fits = std::u16string(256 - domain.size(), u'a') + domain;
    EXPECT_TRUE(IsValidSenderAddress(fits));
    EXPECT_FALSE(IsValidSenderAddress(u"a" + fits));
    EXPECT_FALSE(IsValidSenderAddress(u""));
}

TEST(SenderAddressCheck, BlanksAreNotTrimmedAndRunsOfAsterisksPass) {
    ExpectAll(false, {u" a@b.com", u"a@b.com ", u"\ta@b.com", u"a@b.com\r\n"});
    ExpectAll(true, {u"**@b.com", u"a@**.com", u"***.com"});
}

}  // namespace
}  // namespace velk::senders
