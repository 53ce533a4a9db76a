#include "settings_ui/proxy_dlg.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/log_capture_for_test.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/sheet_test_world.h"

namespace velk::settings_ui {
namespace {

using test::TextOf;

class ProxyDialog : public ::testing::Test {
protected:
    HWND Open() {
        dialog_ = std::make_unique<CProxySettingDlg>(world_.ui());
        HWND window = dialog_->CreateModeless(world_.ui().resources, IDD_PROXY_SETTINGS, nullptr);
        ::ShowWindow(window, SW_SHOWNOACTIVATE);
        return window;
    }
    std::wstring User(const wchar_t* key) { return world_.UserValue(L"RuleFile-Update", key); }

    test::SheetWorld world_;
    std::unique_ptr<CProxySettingDlg> dialog_;
};

TEST_F(ProxyDialog, AnOutOfRangePortIsWrittenBackAtOnceAndOkChecksHostAndPort) {
    world_.SetUser(L"RuleFile-Update", L"HTTPPort", L"65536");
    HWND window = Open();
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(L"80", TextOf(::GetDlgItem(window, IDC_PROXY_PORT)));
    EXPECT_EQ(L"80", User(L"HTTPPort")) << "before any button is pressed";
    // Off, the proxy's fields are greyed; the check box turns them on.
    for (bool on : {false, true}) {
        for (int id : {IDC_PROXY_HOST, IDC_PROXY_PORT, IDC_PROXY_USER, IDC_PROXY_PASSWORD})
            EXPECT_EQ(on, ::IsWindowEnabled(::GetDlgItem(window, id)) != FALSE) << id;
        if (!on)
            ::SendDlgItemMessageW(window, IDC_PROXY_ENABLE, BM_CLICK, 0, 0);
    }
    const wchar_t* host = L"warning|Host name incorrect,pls enter the correct host name";
    const wchar_t* port =
        L"warning|Port format incorrect,pls enter the correct port from 1 to 65535";
    const struct {
        std::wstring host;
        const wchar_t* port;
        const wchar_t* warning;
        int focus;  // where the user is sent to correct it
    } tries[] = {
        {std::wstring(257, L'h'), L"8080", host, IDC_PROXY_HOST},
        {L"proxy\u0081.test", L"8080", host, IDC_PROXY_HOST},
        {L"proxy\u0080.test", L"x8", port, IDC_PROXY_PORT},
        {L"proxy\u0080.test", L"8x", L"", 0},
    };
    for (const auto& t : tries) {
        ::SetDlgItemTextW(window, IDC_PROXY_HOST, t.host.c_str());
        ::SetDlgItemTextW(window, IDC_PROXY_PORT, t.port);
        EXPECT_EQ(t.warning, test::ClickAnswering(window, IDOK)) << t.port;
        if (t.focus != 0) {
            EXPECT_EQ(::GetDlgItem(window, t.focus), ::GetFocus()) << t.port;
        }
    }
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(L"yes", User(L"EnableProxy"));
    // (The settings file is ANSI: the profile API stores what the code page has.)
    EXPECT_EQ(0u, User(L"HTTPProxy").find(L"proxy"));
    EXPECT_EQ(L"8x", User(L"HTTPPort")) << "saved as typed";
}

TEST_F(ProxyDialog, PasswordIsStoredProtectedAndAnUndecodableOneShowsEmpty) {
    velk::testing::LogCapture log;
    world_.SetUser(L"RuleFile-Update", L"EnableProxy", L"YES");
    world_.SetUser(L"RuleFile-Update", L"HTTPProxy", L"proxy.test");
    HWND window = Open();
    EXPECT_TRUE(::IsDlgButtonChecked(window, IDC_PROXY_ENABLE));
    ::SetDlgItemTextW(window, IDC_PROXY_PASSWORD, L"s3cret p\u00e4ss");
    ::SendDlgItemMessageW(window, IDOK, BM_CLICK, 0, 0);
    ASSERT_FALSE(::IsWindow(window));
    EXPECT_EQ(0u, User(L"ProxyPassword").find(L"DP1:")) << User(L"ProxyPassword");
    EXPECT_EQ(std::string::npos, world_.ReadUserIni().find("s3cret"));
    window = Open();
    EXPECT_EQ(L"s3cret p\u00e4ss", TextOf(::GetDlgItem(window, IDC_PROXY_PASSWORD)));

    for (const wchar_t* damaged : {L"s3cret", L"DP1:AAAA", L"DP1:%%%"}) {
        world_.SetUser(L"RuleFile-Update", L"ProxyPassword", damaged);
        window = Open();
        ASSERT_NE(nullptr, window) << damaged;
        EXPECT_EQ(L"", TextOf(::GetDlgItem(window, IDC_PROXY_PASSWORD))) << damaged;
    }
    EXPECT_TRUE(log.Contains("the stored proxy password is not in a known form"));
    EXPECT_TRUE(log.Contains("the stored proxy password can't be unprotected"));
}

}  // namespace
}  // namespace velk::settings_ui
