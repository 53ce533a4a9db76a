#include "settings_ui/proxy_dlg.h"

#include <memory>

#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_test_support.h"

namespace velk::settings_ui::testing {
namespace {

class ProxyDialog : public DialogsTest {
protected:
    HWND Open() {
        dialog_ = std::make_unique<CProxySettingDlg>(ui_);
        HWND window = dialog_->CreateModeless(ui_.resources, IDD_PROXY_SETTINGS, nullptr);
        ::ShowWindow(window, SW_SHOWNOACTIVATE);
        return window;
    }
    std::unique_ptr<CProxySettingDlg> dialog_;
};

constexpr wchar_t kHostWarning[] = L"Host name incorrect,pls enter the correct host name";
constexpr wchar_t kPortWarning[] = L"Port format incorrect,pls enter the correct port from 1 to 65535";

TEST_F(ProxyDialog, OkChecksTheHostAndTheFirstCharacterOfThePort) {
    SetUser(L"RuleFile-Update", L"EnableProxy", L"YES");
    HWND window = Open();
    ASSERT_NE(nullptr, window);
    EXPECT_TRUE(::IsDlgButtonChecked(window, IDC_PROXY_ENABLE));
    EXPECT_TRUE(::IsWindowEnabled(::GetDlgItem(window, IDC_PROXY_HOST)));

    MessageBoxAnswerer answerer;
    const struct {
        std::wstring host;
        const wchar_t* port;
        const wchar_t* warning;  // null: accepted
    } tries[] = {
        {std::wstring(257, L'h'), L"8080", kHostWarning},
        {L"proxy\u0081.test", L"8080", kHostWarning},
        {L"proxy\u0080.test", L"x8", kPortWarning},
        {L"proxy\u0080.test", L"8x", nullptr},
    };
    for (const auto& t : tries) {
        ::SetDlgItemTextW(window, IDC_PROXY_HOST, t.host.c_str());
        ::SetDlgItemTextW(window, IDC_PROXY_PORT, t.port);
        const std::size_t before = answerer.boxes.size();
        Click(window, IDOK);
        if (t.warning == nullptr) {
            EXPECT_EQ(before, answerer.boxes.size());
            continue;
        }
        ASSERT_EQ(before + 1, answerer.boxes.size()) << t.port;
        EXPECT_EQ(t.warning, answerer.boxes.back().text);
        EXPECT_EQ(L"warning", answerer.boxes.back().caption);
        ASSERT_TRUE(::IsWindow(window));
        EXPECT_EQ(::GetDlgItem(window, t.warning == kHostWarning ? IDC_PROXY_HOST : IDC_PROXY_PORT),
                  ::GetFocus());
    }
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(L"yes", User(L"RuleFile-Update", L"EnableProxy"));
    // (The settings file is ANSI: the profile API stores what the code page has.)
    EXPECT_EQ(0u, User(L"RuleFile-Update", L"HTTPProxy").find(L"proxy"));
    EXPECT_EQ(L"8x", User(L"RuleFile-Update", L"HTTPPort")) << "saved as typed";
}

TEST_F(ProxyDialog, AnOutOfRangePortIsWrittenBackAtOnceAndAnOffProxyGreysItsFields) {
    SetUser(L"RuleFile-Update", L"HTTPPort", L"65536");
    HWND window = Open();
    ASSERT_NE(nullptr, window);
    EXPECT_EQ(L"80", TextOf(::GetDlgItem(window, IDC_PROXY_PORT)));
    EXPECT_EQ(L"80", User(L"RuleFile-Update", L"HTTPPort")) << "before any button is pressed";
    for (int id : {IDC_PROXY_HOST, IDC_PROXY_PORT, IDC_PROXY_USER, IDC_PROXY_PASSWORD})
        EXPECT_FALSE(::IsWindowEnabled(::GetDlgItem(window, id))) << id;
    Click(window, IDC_PROXY_ENABLE);
    for (int id : {IDC_PROXY_HOST, IDC_PROXY_PORT, IDC_PROXY_USER, IDC_PROXY_PASSWORD})
        EXPECT_TRUE(::IsWindowEnabled(::GetDlgItem(window, id))) << id;
    Click(window, IDCANCEL);
    EXPECT_EQ(L"<none>", User(L"RuleFile-Update", L"EnableProxy")) << "Cancel saves nothing";
}

TEST_F(ProxyDialog, PasswordIsStoredProtectedAndAnUndecodableOneShowsEmpty) {
    SetUser(L"RuleFile-Update", L"EnableProxy", L"yes");
    SetUser(L"RuleFile-Update", L"HTTPProxy", L"proxy.test");
    HWND window = Open();
    ::SetDlgItemTextW(window, IDC_PROXY_PASSWORD, L"s3cret p\u00e4ss");
    Click(window, IDOK);
    ASSERT_FALSE(::IsWindow(window));
    const std::wstring stored = User(L"RuleFile-Update", L"ProxyPassword");
    EXPECT_EQ(0u, stored.find(L"DP1:")) << stored;
    EXPECT_EQ(std::string::npos, UserFile().find("s3cret"));

    window = Open();
    EXPECT_EQ(L"s3cret p\u00e4ss", TextOf(::GetDlgItem(window, IDC_PROXY_PASSWORD)));
    Click(window, IDCANCEL);

    for (const wchar_t* damaged : {L"s3cret", L"DP1:AAAA", L"DP1:%%%"}) {
        SetUser(L"RuleFile-Update", L"ProxyPassword", damaged);
        window = Open();
        ASSERT_NE(nullptr, window) << damaged;
        EXPECT_EQ(L"", TextOf(::GetDlgItem(window, IDC_PROXY_PASSWORD))) << damaged;
        Click(window, IDCANCEL);
    }
    EXPECT_EQ(3u, CountOf(LogText(), "the stored proxy password")) << LogText();
}

}  // namespace
}  // namespace velk::settings_ui::testing
