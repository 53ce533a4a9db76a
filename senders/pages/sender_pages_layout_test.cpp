// The pages and the edit dialog as the user sees them, with their real texts:
// every control inside its window, none over another, every label fitting
// its control, at 96 DPI here and at 120 DPI in a second run of this program.
// With VELK_SCREENSHOT_DIR set, each window is also saved there as a BMP.
#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>
#include <shlwapi.h>

#include <sstream>

#include "demo/driver/screen_shot.h"
#include "senders/pages/approve_sender_page.h"
#include "senders/pages/block_encoding_page.h"
#include "senders/pages/block_sender_page.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/pages/sender_pages_test_util.h"
#include "senders/sender_list_wide.h"
#include "senders/sender_text.h"

namespace velk::senders {
namespace {

using testing::DialogDriver;
using testing::PageWorld;
using testing::ScriptedSheet;

std::wstring Environment(const wchar_t* name) {
    wchar_t value[MAX_PATH] = L"";
    const DWORD n = ::GetEnvironmentVariableW(name, value, MAX_PATH);
    return n > 0 && n < MAX_PATH ? value : L"";
}

std::string Narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

std::wstring ClassOf(HWND window) {
    wchar_t name[64] = L"";
    ::GetClassNameW(window, name, 64);
    return name;
}

// What is wrong with the layout of `window`'s controls, one line each.
std::string LayoutProblems(HWND window) {
    std::ostringstream problems;
    RECT client{};
    ::GetClientRect(window, &client);
    std::vector<std::pair<HWND, RECT>> placed;
    for (HWND child = ::GetWindow(window, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (!::IsWindowVisible(child))
            continue;
        RECT r{};
        ::GetWindowRect(child, &r);
        ::MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&r), 2);
        const int id = ::GetDlgCtrlID(child);
        if (r.left < client.left || r.top < client.top || r.right > client.right ||
            r.bottom > client.bottom)
            problems << "control " << id << " reaches out of its window\n";
        for (const auto& [other, o] : placed) {
            RECT both{};
            if (::IntersectRect(&both, &r, &o))
                problems << "controls " << id << " and " << ::GetDlgCtrlID(other) << " overlap\n";
        }
        placed.push_back({child, r});

        wchar_t text[1024] = L"";
        ::GetWindowTextW(child, text, 1024);
        const std::wstring cls = ClassOf(child);
        if (text[0] == 0 || (cls != L"Button" && cls != L"Static"))
            continue;
        win32::window_dc dc(child);
        win32::select_object font(dc.get(),
                                  reinterpret_cast<HFONT>(::SendMessageW(child, WM_GETFONT, 0, 0)));
        const LONG_PTR style = ::GetWindowLongPtrW(child, GWL_STYLE);
        const int width = r.right - r.left;
        RECT need{0, 0, width, 0};
        if (cls == L"Static") {
            const UINT prefix = (style & SS_NOPREFIX) != 0 ? DT_NOPREFIX : 0;
            ::DrawTextW(dc.get(), text, -1, &need, DT_CALCRECT | DT_WORDBREAK | prefix);
            if (need.bottom > r.bottom - r.top || need.right > width)
                problems << "the text of " << id << " does not fit: " << Narrow(text) << "\n";
            continue;
        }
        ::DrawTextW(dc.get(), text, -1, &need, DT_CALCRECT | DT_SINGLELINE);
        const bool check = (style & BS_TYPEMASK) == BS_AUTOCHECKBOX || (style & BS_TYPEMASK) == BS_CHECKBOX;
        // A push button keeps a margin on each side; a check box has its box.
        const int room = check ? width - ::GetSystemMetrics(SM_CXMENUCHECK) - 4 : width - 8;
        if (need.right > room || need.bottom > r.bottom - r.top)
            problems << "the text of " << id << " does not fit: " << Narrow(text) << "\n";
    }
    return problems.str();
}

void Save(HWND window, const wchar_t* name) {
    const std::wstring dir = Environment(L"VELK_SCREENSHOT_DIR");
    if (dir.empty())
        return;
    testing::PumpFor(300);  // the display catches up with the paint
    demo::Picture picture;
    ASSERT_TRUE(demo::CaptureWindow(window, picture));
    ASSERT_TRUE(demo::SaveBmp(picture, dir + L"\\" + name + L".bmp"));
}

class SenderPagesLayout : public ::testing::Test {
protected:
    void SetUp() override {
        const struct {
            const wchar_t* name;
            const wchar_t* address;
        } approved[] = {{L"Marta Kowalski", L"marta.kowalski@example.org"},
                        {L"", L"*@partner-firm.example"},
                        {L"Jonas Berg", L"jonas@berg.example"},
                        {L"Garden Club Newsletter", L"news@gardenclub.example"},
                        {L"Ines Duarte", L"ines.duarte@example.net"}},
          blocked[] = {{L"Best Deals", L"offers@promo-deals.example"},
                       {L"", L"*@lottery-winner.example"},
                       {L"Pharmacy Online", L"sales@cheap-pills.example"}};
        for (const auto& s : approved)
            AddSender(world_.approved, s.address, s.name);
        for (const auto& s : blocked)
            AddSender(world_.blocked, s.address, s.name);
        SaveSenders(world_.approved, world_.ListPath(SenderListKind::kApproved));
        SaveSenders(world_.blocked, world_.ListPath(SenderListKind::kBlocked));
    }

    PageWorld world_;
    DialogDriver driver_;
};

TEST_F(SenderPagesLayout, EveryWindowFitsItsTextsAtThisResolution) {
    const std::wstring dpi = Environment(L"VELK_EXPECT_DPI");
    if (!dpi.empty()) {
        win32::window_dc screen(nullptr);
        ASSERT_EQ(_wtoi(dpi.c_str()), ::GetDeviceCaps(screen.get(), LOGPIXELSY));
    }
    std::vector<BlockedEncoding> encodings = DefaultBlockedEncodings();
    encodings[5].blocked = encodings[9].blocked = true;
    SaveBlockedEncodings(PlatformFileSystem(),
                         BlockedEncodingsPath(ToU16(world_.ui.where.user_dir)), encodings);

    CApproveSenderPage approve(world_.ui, &world_.approved, &world_.blocked);
    CBlockSenderPage block(world_.ui, &world_.approved, &world_.blocked);
    CBlockEncodingPage languages(world_.ui);
    ScriptedSheet sheet;
    sheet.AddPage(approve);
    sheet.AddPage(block);
    sheet.AddPage(languages);
    std::string problems[4];
    driver_.Then([&](HWND dialog, bool) {
        DialogDriver::Later([&, dialog] {
            problems[3] = LayoutProblems(dialog);
            Save(dialog, L"sender_edit");
            ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        });
        return true;
    });
    sheet.steps = {
        [&](ScriptedSheet& s) {
            ::SetWindowTextW(s.hwnd(), world_.ui.Text(L"IDS_STRING_FILTERING_SHEET").c_str());
            ListView_SetItemState(::GetDlgItem(s.page(0), IDC_SENDER_LIST), 2,
                                  LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
            ::SetFocus(::GetDlgItem(s.page(0), IDC_SENDER_LIST));
            problems[0] = LayoutProblems(s.page(0));
            Save(s.hwnd(), L"approved_senders");
            s.Click(0, IDC_SENDER_EDIT);
        },
        [&](ScriptedSheet& s) {
            s.Show(1);
            problems[1] = LayoutProblems(s.page(1));
            Save(s.hwnd(), L"blocked_senders");
        },
        [&](ScriptedSheet& s) {
            s.Show(2);
            problems[2] = LayoutProblems(s.page(2));
            Save(s.hwnd(), L"blocked_languages");
            s.Press(PSBTN_CANCEL);
        },
    };
    sheet.Run();
    EXPECT_EQ("", problems[0]) << "approved senders";
    EXPECT_EQ("", problems[1]) << "blocked senders";
    EXPECT_EQ("", problems[2]) << "blocked languages";
    EXPECT_EQ("", problems[3]) << "sender edit dialog";
    EXPECT_TRUE(driver_.Done());
}

// The same windows at 120 DPI: this program again, started after the
// resolution was set in the prefix, which is put back whatever happens.
TEST(SenderPagesLayoutAt120Dpi, EveryWindowFitsItsTextsInTheLargerFont) {
    if (!Environment(L"VELK_EXPECT_DPI").empty())
        GTEST_SKIP() << "this is the run at 120 DPI";
    constexpr wchar_t kDesktop[] = L"Control Panel\\Desktop";
    win32::unique_hkey key;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_CURRENT_USER, kDesktop, 0, nullptr, 0,
                                              KEY_ALL_ACCESS, nullptr, key.put(), nullptr));
    DWORD before = 0, size = sizeof(before), type = 0;
    const bool had = ::RegQueryValueExW(key.get(), L"LogPixels", nullptr, &type,
                                        reinterpret_cast<BYTE*>(&before), &size) == ERROR_SUCCESS;
    const DWORD dpi = 120;
    ::RegSetValueExW(key.get(), L"LogPixels", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&dpi),
                     sizeof(dpi));
    const auto restore = [&] {
        if (had)
            ::RegSetValueExW(key.get(), L"LogPixels", 0, REG_DWORD,
                             reinterpret_cast<const BYTE*>(&before), sizeof(before));
        else
            ::RegDeleteValueW(key.get(), L"LogPixels");
    };

    wchar_t self[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring cmd = std::wstring(L"\"") + self +
                       L"\" --gtest_filter=SenderPagesLayout.EveryWindowFitsItsTextsAtThisResolution";
    ::SetEnvironmentVariableW(L"VELK_EXPECT_DPI", L"120");
    const std::wstring shots = Environment(L"VELK_SCREENSHOT_DIR");
    if (!shots.empty())
        ::SetEnvironmentVariableW(L"VELK_SCREENSHOT_DIR", (shots + L"\\120dpi").c_str());
    STARTUPINFOW si{};
    si.cb = sizeof(si);
    PROCESS_INFORMATION pi{};
    const BOOL started =
        ::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi);
    ::SetEnvironmentVariableW(L"VELK_EXPECT_DPI", nullptr);
    if (!shots.empty())
        ::SetEnvironmentVariableW(L"VELK_SCREENSHOT_DIR", shots.c_str());
    DWORD code = 99;
    if (started) {
        ::CloseHandle(pi.hThread);
        if (::WaitForSingleObject(pi.hProcess, 120000) != WAIT_OBJECT_0)
            ::TerminateProcess(pi.hProcess, 99);
        ::GetExitCodeProcess(pi.hProcess, &code);
        ::CloseHandle(pi.hProcess);
    }
    restore();
    ASSERT_TRUE(started);
    EXPECT_EQ(0u, code) << "the layout at 120 DPI has problems (the run's output says which)";
}

}  // namespace
}  // namespace velk::senders
