#include "settings_ui/link_filter_settings.h"

#include <gtest/gtest.h>

#include "settings/settings_access.h"

namespace velk::settings_ui {
namespace {

TEST(LinkFilterSettings, DomainsAreKeptInOneFormAndNonDomainsRefused) {
    const struct {
        const wchar_t* typed;
        const wchar_t* kept;
    } accepted[] = {
        {L"example.com", L"example.com"},
        {L"  Mail.Example.COM. ", L"mail.example.com"},
        {L"*.example.org", L"example.org"},
        {L".example.org", L"example.org"},
        {L"https://www.example.net:8443/login?x=1", L"www.example.net"},
        {L"xn--bcher-kva.example", L"xn--bcher-kva.example"},
        {L"1and1.com", L"1and1.com"},
    };
    for (const auto& c : accepted)
        EXPECT_EQ(std::optional<std::wstring>(c.kept), NormalizeDomain(c.typed)) << c.typed;

    const wchar_t* refused[] = {
        L"",
        L"   ",
        L"localhost",
        L"exa mple.com",
        L"example..com",
        L"-example.com",
        L"example-.com",
        L"192.0.2.7",
        L"http://",
        L"*.",
        L"ex_ample.com",
        L"b\u00fccher.de",
        L"a.bcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefghijklmnop.com"};
    for (const wchar_t* text : refused)
        EXPECT_FALSE(NormalizeDomain(text).has_value()) << text;
    EXPECT_FALSE(NormalizeDomain(std::wstring(250, L'a') + L".com").has_value());
}

TEST(LinkFilterSettings, StoredListDropsRepeatsAndJunkAndMustFitOneValue) {
    EXPECT_EQ((std::vector<std::wstring>{L"example.com", L"example.org"}),
              ParseTrustedDomains(L"example.com; EXAMPLE.com ;;bad domain;example.org,"));
    const std::vector<std::wstring> list = {L"a.example", L"b.example"};
    EXPECT_EQ(list, ParseTrustedDomains(JoinTrustedDomains(list)));
    EXPECT_TRUE(ParseTrustedDomains(L"").empty());

    std::vector<std::wstring> many;
    while (TrustedDomainsFit(many))
        many.push_back(L"domain" + std::to_wstring(many.size()) + L".example");
    EXPECT_LT(1000u, JoinTrustedDomains(many).size());
    many.pop_back();
    EXPECT_LT(JoinTrustedDomains(many).size(), settings::kValueBufferChars);
}

}  // namespace
}  // namespace velk::settings_ui
