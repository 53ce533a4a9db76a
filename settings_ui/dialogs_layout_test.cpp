// Every window of this folder, with its texts from the string table: no text
// is cut off by its control, and no two controls of a window share a
// mnemonic, so each is reachable with Alt and its letter. Run at 120 DPI too
// (the prefix's LogPixels) before changing a template.
#include <cwctype>
#include <map>
#include <memory>

#include "settings_ui/about_dlg.h"
#include "settings_ui/advanced_page.h"
#include "settings_ui/crx_dlg.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_test_support.h"
#include "settings_ui/proxy_dlg.h"
#include "settings_ui/updates_dlg.h"

namespace velk::settings_ui::testing {
namespace {

std::wstring ClassOf(HWND window) {
    wchar_t cls[64] = L"";
    ::GetClassNameW(window, cls, 64);
    return cls;
}

// What is wrong with the layout of `dialog`'s controls, one line each.
std::vector<std::string> LayoutProblems(HWND dialog) {
    std::vector<std::string> problems;
    std::map<wchar_t, int> mnemonics;
    HDC dc = ::GetDC(dialog);
    for (HWND child = ::GetWindow(dialog, GW_CHILD); child != nullptr; child = ::GetWindow(child, GW_HWNDNEXT)) {
        const std::wstring text = TextOf(child);
        const std::wstring cls = ClassOf(child);
        const LONG_PTR style = ::GetWindowLongPtrW(child, GWL_STYLE);
        const int id = ::GetDlgCtrlID(child);
        if (text.empty() || !::IsWindowVisible(child) || (cls != L"Static" && cls != L"Button"))
            continue;
        const bool prefix = cls != L"Static" || (style & SS_NOPREFIX) == 0;
        const std::size_t amp = text.find(L'&');
        if (prefix && amp != std::wstring::npos && amp + 1 < text.size()) {
            const wchar_t key = static_cast<wchar_t>(std::towlower(text[amp + 1]));
            if (mnemonics.count(key) != 0)
                problems.push_back("controls " + std::to_string(mnemonics[key]) + " and " +
                                   std::to_string(id) + " share a mnemonic");
            mnemonics[key] = id;
        }
        RECT client{};
        ::GetClientRect(child, &client);
        HGDIOBJ old = ::SelectObject(dc, reinterpret_cast<HGDIOBJ>(::SendMessageW(child, WM_GETFONT, 0, 0)));
        TEXTMETRICW tm{};
        ::GetTextMetricsW(dc, &tm);
        // What the control itself takes from its width besides the text.
        const LONG type = static_cast<LONG>(style & BS_TYPEMASK);
        int frame = 0;
        if (cls == L"Button") {
            if (type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_RADIOBUTTON ||
                type == BS_AUTORADIOBUTTON)
                frame = ::GetSystemMetrics(SM_CXMENUCHECK) + 4;
            else if (type == BS_GROUPBOX)
                frame = 2 * tm.tmAveCharWidth;
            else
                frame = 8;
        }
        const bool wraps = cls == L"Static" && client.bottom >= 2 * tm.tmHeight;
        RECT need{0, 0, client.right - frame, 0};
        ::DrawTextW(dc, text.c_str(), -1, &need,
                    DT_CALCRECT | (wraps ? DT_WORDBREAK : DT_SINGLELINE) | (prefix ? 0 : DT_NOPREFIX));
        ::SelectObject(dc, old);
        if (need.right > client.right - frame || (wraps && need.bottom > client.bottom))
            problems.push_back("control " + std::to_string(id) + " cuts its text off (needs " +
                               std::to_string(need.right + frame) + "x" + std::to_string(need.bottom) +
                               ", has " + std::to_string(client.right) + "x" +
                               std::to_string(client.bottom) + ")");
    }
    ::ReleaseDC(dialog, dc);
    return problems;
}

std::vector<std::string> g_page_problems;

void CALLBACK CheckPageLayout(HWND, UINT, UINT_PTR timer, DWORD) {
    ::KillTimer(nullptr, timer);
    HWND sheet = ::FindWindowW(L"#32770", L"Sheet");
    HWND page = reinterpret_cast<HWND>(::SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
    g_page_problems = LayoutProblems(page);
    ::SendMessageW(sheet, PSM_PRESSBUTTON, PSBTN_CANCEL, 0);
}

using Layout = DialogsTest;

TEST_F(Layout, EveryTextFitsAndEveryMnemonicIsUnique) {
    SetUser(L"RuleFile-Update", L"LastUpdateTime", L"1700000000");
    SetUser(L"Antispam", L"PatchVer", L"2024117");
    // Long values, as an installation may brand them.
    SetInstall(L"General", L"AboutProductName", L"Nuvexa Anti-Spam for Windows Mail");
    SetInstall(L"General", L"AboutCompanyName", L"Nuvexa Software Corporation");

    CUpdatesDlg updates(ui_);
    CProxySettingDlg proxy(ui_);
    CCRXDlg feedback(ui_);
    CAboutDlg about(ui_);
    const struct {
        win32::Dialog* dialog;
        int id;
    } windows[] = {{&updates, IDD_UPDATES}, {&proxy, IDD_PROXY_SETTINGS},
                   {&feedback, IDD_CLOUD_FEEDBACK}, {&about, IDD_ABOUT}};
    for (const auto& w : windows) {
        HWND window = w.dialog->CreateModeless(ui_.resources, w.id, nullptr);
        ASSERT_NE(nullptr, window) << w.id;
        ::SendDlgItemMessageW(window, IDC_PROXY_ENABLE, BM_CLICK, 0, 0);  // the proxy's fields on
        ::ShowWindow(window, SW_SHOWNOACTIVATE);
        EXPECT_EQ(std::vector<std::string>(), LayoutProblems(window)) << "template " << w.id;
    }

    win32::PropertySheet sheet;
    CAdvancedPage page(ui_);
    sheet.AddPage(page);
    g_page_problems = {"the page was not checked"};
    ::SetTimer(nullptr, 0, 50, &CheckPageLayout);
    sheet.DoModal(nullptr, L"Sheet", PSH_NOAPPLYNOW);
    EXPECT_EQ(std::vector<std::string>(), g_page_problems) << "advanced page";
}


}  // namespace
}  // namespace velk::settings_ui::testing
