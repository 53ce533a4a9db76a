#include "tools/mail_client_stub/client_options.h"

#include <gtest/gtest.h>

namespace velk::tools {
namespace {

bool Parse(std::vector<std::wstring> args, ClientOptions& out, std::wstring* error = nullptr) {
    std::wstring e;
    const bool ok = ParseClientOptions(args, out, e);
    if (error != nullptr)
        *error = e;
    return ok;
}

TEST(ClientOptions, EveryOptionLandsInItsFieldAndStepsAccumulate) {
    ClientOptions o;
    ASSERT_TRUE(Parse({}, o));
    EXPECT_EQ(ClientMode::kAuto, o.mode);
    EXPECT_TRUE(o.write_identity && o.free_at_exit);
    EXPECT_EQ(kDefaultIdentity, o.identity);

    ASSERT_TRUE(Parse({L"--addin", L"Z:\\a\\VELK_OEA.dll", L"--addin", L"Z:\\b\\VELK_OEA.dll",
                       L"--mode", L"wmail", L"--identity", L"{ID}", L"--late", L"1500", L"--events",
                       L"ev.txt", L"--exit-after", L"9000", L"--no-free", L"--run",
                       L"set-browser,rebuild", L"--run", L"wait=20,destroy,unload,close"},
                      o));
    EXPECT_EQ(2u, o.addins.size());
    EXPECT_EQ(L"Z:\\b\\VELK_OEA.dll", o.addins[1]);
    EXPECT_EQ(ClientMode::kWindowsMail, o.mode);
    EXPECT_EQ(L"{ID}", o.identity);
    EXPECT_EQ(1500u, o.late_ms);
    EXPECT_EQ(L"ev.txt", o.events_path);
    EXPECT_EQ(9000u, o.exit_after_ms);
    EXPECT_FALSE(o.free_at_exit);
    const StepKind kinds[] = {StepKind::kSetBrowser, StepKind::kRebuild, StepKind::kWait,
                              StepKind::kDestroy,    StepKind::kUnload,  StepKind::kClose};
    ASSERT_EQ(6u, o.steps.size());
    for (size_t i = 0; i < 6; ++i)
        EXPECT_EQ(kinds[i], o.steps[i].kind) << i;
    EXPECT_EQ(20u, o.steps[2].ms);
}

TEST(ClientOptions, BadCommandLinesAndStepsAreRefusedWithAReason) {
    ClientOptions o;
    o.late_ms = 77;
    std::wstring error;
    EXPECT_FALSE(Parse({L"--late"}, o, &error));
    EXPECT_EQ(L"missing value for --late", error);
    EXPECT_FALSE(Parse({L"--frobnicate", L"1"}, o, &error));
    EXPECT_EQ(L"unknown option --frobnicate", error);
    EXPECT_FALSE(Parse({L"--run", L"rebuild,explode"}, o, &error));
    EXPECT_EQ(L"bad step \"explode\"", error);
    for (const wchar_t* steps : {L"rebuild,,close", L"", L"wait=", L"wait=1x", L"close,"}) {
        EXPECT_FALSE(Parse({L"--run", steps}, o)) << steps;
    }
    EXPECT_FALSE(Parse({L"--mode", L"sideways"}, o));
    EXPECT_FALSE(Parse({L"--late", L"-5"}, o));
    EXPECT_FALSE(Parse({L"--late", L"9999999999"}, o)) << "no silent overflow";
    EXPECT_FALSE(Parse({L"stray"}, o));
    EXPECT_FALSE(Parse({L"--addin", L""}, o));
    EXPECT_EQ(77u, o.late_ms) << "a refused command line leaves the options alone";
}

}  // namespace
}  // namespace velk::tools
