#include "settings/setting_keys.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace velk::settings {
namespace {

std::wstring Describe(const SettingKey& k) {
    static const wchar_t* const kTypes[] = {L"text", L"decimal", L"flag", L"integer", L"yesno"};
    return std::wstring(k.file == SettingsFile::Install ? L"install" : L"user") + L" [" +
           k.section + L"] " + k.name + L" " + kTypes[static_cast<int>(k.type)] + L" \"" +
           k.default_value + L"\"";
}

// The installer, the scanning process and existing user files depend on
// every one of these names, sections and defaults.
TEST(SettingKeys, EveryKeyKeepsItsFileSectionNameTypeAndDefault) {
    const std::vector<std::wstring> expected = {
        L"user [General] PurgeDays decimal \"20\"",
        L"user [General] DeleteDeleted flag \"0\"",
        L"user [General] AutoMoved flag \"0\"",
        L"user [General] NotifyIcon flag \"0\"",
        L"user [General] AutoApprove flag \"1\"",
        L"user [General] ProtectLevel decimal \"2\"",
        L"user [General] GlobalLevel decimal \"1\"",
        L"user [General] EnableInTheCloud flag \"1\"",
        L"user [General] SexualLevel integer \"2\"",
        L"user [General] CommercialLevel integer \"2\"",
        L"user [General] FinancialLevel integer \"2\"",
        L"user [General] HealthLevel integer \"2\"",
        L"user [General] RacialLevel integer \"2\"",
        L"user [General] SpiritualLevel integer \"2\"",
        L"user [General] OtherLevel integer \"2\"",
        L"user [General] ShowReportButton flag \"1\"",
        L"user [General] VELKLogoTooltip text \"\"",
        L"user [General] VELKMenuBarName text \"\"",
        L"user [General] VELKStartTimes integer \"0\"",
        L"user [General] HiddenFunc integer \"0\"",
        L"user [General] AgentLog text \"VELKAgent.log\"",
        L"install [General] CorpName text \"\"",
        L"install [General] Anti-Spam text \"\"",
        L"install [General] ASGroupTitle text \"\"",
        L"install [General] AboutTitle text \"\"",
        L"install [General] AboutBannerPath text \"\"",
        L"install [General] AboutProductName text \"\"",
        L"install [General] AboutCompanyName text \"\"",
        L"install [General] ApproveSenderTitle text \"\"",
        L"install [General] ApproveSenderNote text \"\"",
        L"install [General] ApproveMailList text \"\"",
        L"install [General] BlockSenderTitle text \"\"",
        L"install [General] BlockSenderNote text \"\"",
        L"install [General] SliderBitmap text \"\"",
        L"install [General] WebSiteForLogo text \"\"",
        L"install [General] ShowCRXButton integer \"1\"",
        L"install [General] CRXLink text \"\"",
        L"install [General] Debug flag \"0\"",
        L"install [General] ShowReportButton flag \"1\"",
        L"install [General] VELKLogoTooltip text \"\"",
        L"install [General] VELKMenuBarName text \"\"",
        L"install [General] VELKLogo text \"\"",
        L"install [General] VELKReportSpamIcon text \"\"",
        L"install [General] VELKReportSpamIcon_disable text \"\"",
        L"install [General] VELKReportFpIcon text \"\"",
        L"install [General] VELKReportFpIcon_disable text \"\"",
        L"user [Antispam] EnableTBar flag \"1\"",
        L"user [Antispam] EngineVer text \"0.0.0\"",
        L"user [Antispam] PatchVer text \"00000000\"",
        L"user [Antispam] VELKOEVer text \"0.00.0.0000\"",
        L"user [Statistics] RunningSince integer \"0\"",
        L"user [Statistics] ProcessedMsg integer \"0\"",
        L"user [Statistics] DetectedSpam integer \"0\"",
        L"user [Statistics] ReportedSpam integer \"0\"",
        L"user [Statistics] ReportedFP integer \"0\"",
        L"user [Statistics] EnableCRX integer \"1\"",
        L"user [Statistics] CRXWebServer text \"http://crx.nuvexa.com/crx/feedback\"",
        L"user [RuleFile-Update] EnableProxy yesno \"no\"",
        L"user [RuleFile-Update] HTTPProxy text \"\"",
        L"user [RuleFile-Update] HTTPPort integer \"80\"",
        L"user [RuleFile-Update] ProxyUserName text \"\"",
        L"user [RuleFile-Update] ProxyPassword text \"\"",
        L"user [RuleFile-Update] AUServer text \"\"",
        L"user [RuleFile-Update] EnableSchedule integer \"1\"",
        L"user [RuleFile-Update] Interval integer \"180\"",
        L"user [RuleFile-Update] UpdateUI integer \"0\"",
        L"user [RuleFile-Update] LastUpdateTime integer \"0\"",
        L"user [RuleFile-Update] UpToDate integer \"0\"",
        L"user [ReportSpam] Address text \"\"",
        L"user [ReportFP] Address text \"\"",
        L"user [ReportPhish] Address text \"\"",
        L"user [Qzufe] EnableQzufe integer \"0\"",
        L"user [Qzufe] SecurityLevel decimal \"2\"",
        L"user [LinkFilter] EnableLinkFilter flag \"1\"",
        L"user [LinkFilter] WarnMismatchedLinks flag \"1\"",
        L"user [LinkFilter] FlagNumericLinks flag \"1\"",
        L"user [LinkFilter] TrustedDomains text \"\"",
    };
    ASSERT_EQ(expected.size(), kKeyCount);
    for (std::size_t i = 0; i < kKeyCount; ++i) {
        EXPECT_EQ(Describe(AllSettingKeys()[i]), expected[i]);
        EXPECT_EQ(&Setting(static_cast<Key>(i)), &AllSettingKeys()[i]);
    }
}

TEST(SettingKeys, NoKeyIsListedTwiceForTheSameFile) {
    std::set<std::tuple<int, std::wstring, std::wstring>> seen;
    for (std::size_t i = 0; i < kKeyCount; ++i) {
        const SettingKey& k = AllSettingKeys()[i];
        EXPECT_TRUE(seen.emplace(static_cast<int>(k.file), k.section, k.name).second)
            << Describe(k);
    }
}

// The table above fixes the texts; DefaultInt must give the same numbers.
TEST(SettingKeys, NumericDefaultsAreNumbers) {
    for (std::size_t i = 0; i < kKeyCount; ++i) {
        const SettingKey& k = AllSettingKeys()[i];
        if (k.type != ValueType::Integer && k.type != ValueType::Decimal)
            continue;
        EXPECT_EQ(std::to_wstring(DefaultInt(k.key)), k.default_value) << Describe(k);
    }
}

}  // namespace
}  // namespace velk::settings
