// The digits-only edit and the extended static inside a real dialog, driven
// through the messages the system and the user send them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/dialog_template_test_util.h"
#include "controls/digit_edit.h"
#include "controls/ext_static.h"

namespace velk::controls {
namespace {

using win32::testing::DialogTemplate;

// A modeless dialog around the given controls; counts the OK commands.
class HostDialog : public win32::Dialog {
public:
    explicit HostDialog(const DialogTemplate& t) { CreateModelessIndirect(t.get(), nullptr); }
    HWND Item(int id) const { return ::GetDlgItem(hwnd(), id); }
    int ok_commands = 0;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        if (msg == WM_COMMAND && LOWORD(wp) == IDOK) {
            ++ok_commands;
            return true;
        }
        result = TRUE;
        return msg == WM_INITDIALOG;
    }
};

std::wstring TextOf(HWND hwnd) {
    wchar_t buffer[256] = L"";
    ::GetWindowTextW(hwnd, buffer, 256);
    return buffer;
}

bool PutOnClipboard(HWND owner, const std::wstring& text) {
    if (!::OpenClipboard(owner))
        return false;
    ::EmptyClipboard();
    HGLOBAL data = ::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    std::memcpy(::GlobalLock(data), text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    ::GlobalUnlock(data);
    const bool put = ::SetClipboardData(CF_UNICODETEXT, data) != nullptr;
    ::CloseClipboard();
    return put;
}

TEST(DigitEdit, RefusesTypedAndPastedNonDigits) {
    HostDialog dialog(DialogTemplate(WS_POPUP, 200, 80)
                          .Control(L"EDIT", 1, WS_BORDER | ES_AUTOHSCROLL, 10, 10, 100, 14));
    HWND edit = dialog.Item(1);
    DigitEdit digits;
    ASSERT_TRUE(digits.Attach(edit));

    for (wchar_t c : std::wstring(L"1a2 -3"))
        ::SendMessageW(edit, WM_CHAR, c, 0);
    EXPECT_EQ(L"123", TextOf(edit));
    ::SendMessageW(edit, WM_CHAR, VK_BACK, 0);  // editing keys still work
    EXPECT_EQ(L"12", TextOf(edit));

    ::SendMessageW(edit, EM_SETSEL, 2, 2);
    ASSERT_TRUE(PutOnClipboard(edit, L"4x5"));
    ::SendMessageW(edit, WM_PASTE, 0, 0);
    EXPECT_EQ(L"12", TextOf(edit)) << "a paste holding a letter changes nothing";
    ASSERT_TRUE(PutOnClipboard(edit, L" 345\r\n"));
    ::SendMessageW(edit, WM_PASTE, 0, 0);
    EXPECT_EQ(L"12345", TextOf(edit)) << "blanks around a copied number are dropped";

    // Another program inserting text directly meets the same rule.
    ::SendMessageW(edit, EM_SETSEL, 0, -1);
    ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"7e3"));
    EXPECT_EQ(L"12345", TextOf(edit));
    ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(L"9"));
    EXPECT_EQ(L"9", TextOf(edit));
    // The owner may still show what it read, as it read it.
    ::SetWindowTextW(edit, L"30d");
    EXPECT_EQ(L"30d", TextOf(edit));
}

LOGFONTW FontOf(HWND control) {
    LOGFONTW lf{};
    ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(control, WM_GETFONT, 0, 0)), sizeof(lf), &lf);
    return lf;
}

// A link, a plain, a transparent red and a framed static in one dialog.
TEST(ExtStatic, LinksOpenByMouseAndKeyboardAndStaticsAnswerTheirPaintingThroughTheParent) {
    HostDialog dialog(DialogTemplate(WS_POPUP, 200, 80)
                          .Control(L"BUTTON", IDOK, WS_TABSTOP | BS_DEFPUSHBUTTON, 10, 10, 50, 14)
                          .Control(L"STATIC", 2, 0, 10, 30, 150, 10)
                          .Control(L"STATIC", 3, 0, 10, 45, 100, 10)
                          .Control(L"STATIC", 4, 0, 10, 55, 100, 10)
                          .Control(L"STATIC", 5, 0, 10, 65, 100, 10));
    HWND button = dialog.Item(IDOK), label = dialog.Item(2);
    ::SetWindowTextW(label, L"https://example.test/a?b=1&c=2");
    ExtStatic link, untouched, transparent, coloured;
    ASSERT_TRUE(link.Attach(label) && untouched.Attach(dialog.Item(3)) &&
                transparent.Attach(dialog.Item(4)) && coloured.Attach(dialog.Item(5)));
    std::vector<std::wstring> opened;
    link.SetLink(std::wstring(), [&](HWND, const std::wstring& target) {
        opened.push_back(target);
        return true;
    });
    transparent.SetTransparent();
    transparent.SetTextColor(RGB(200, 0, 0));
    coloured.SetBackground(RGB(1, 2, 3));
    coloured.SetFont(L"Tahoma", 14, FW_BOLD);

    HDC dc = ::GetDC(dialog.hwnd());
    auto ask = [&](HWND control) {
        ::SetBkMode(dc, OPAQUE);
        return reinterpret_cast<HGDIOBJ>(::SendMessageW(dialog.hwnd(), WM_CTLCOLORSTATIC,
                                                        reinterpret_cast<WPARAM>(dc),
                                                        reinterpret_cast<LPARAM>(control)));
    };
    // Readable: the link colour stands out from the background it is drawn on.
    ask(label);
    auto luminance = [](COLORREF c) {
        return (299 * GetRValue(c) + 587 * GetGValue(c) + 114 * GetBValue(c)) / 1000;
    };
    EXPECT_GE(std::abs(luminance(::GetTextColor(dc)) - luminance(::GetBkColor(dc))), 80);
    ask(dialog.Item(3));
    EXPECT_NE(RGB(200, 0, 0), ::GetTextColor(dc));
    EXPECT_EQ(::GetStockObject(NULL_BRUSH), ask(dialog.Item(4)));
    EXPECT_EQ(TRANSPARENT, ::GetBkMode(dc));
    EXPECT_EQ(RGB(200, 0, 0), ::GetTextColor(dc));
    LOGBRUSH lb{};
    ::GetObjectW(ask(dialog.Item(5)), sizeof(lb), &lb);
    EXPECT_EQ(RGB(1, 2, 3), lb.lbColor);
    EXPECT_EQ(RGB(1, 2, 3), ::GetBkColor(dc));
    ::ReleaseDC(dialog.hwnd(), dc);
    EXPECT_STREQ(L"Tahoma", FontOf(dialog.Item(5)).lfFaceName);
    EXPECT_EQ(FW_BOLD, FontOf(dialog.Item(5)).lfWeight);

    EXPECT_EQ(L"https://example.test/a?b=1&c=2", TextOf(label));
    EXPECT_TRUE(FontOf(label).lfUnderline);
    ::SendMessageW(label, WM_SETCURSOR, reinterpret_cast<WPARAM>(label),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    EXPECT_EQ(::LoadCursorW(nullptr, IDC_HAND), ::GetCursor());
    ::SendMessageW(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendMessageW(label, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    ::SendMessageW(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    ::SendMessageW(label, WM_LBUTTONUP, 0, MAKELPARAM(500, 3));  // released outside
    EXPECT_EQ(std::vector<std::wstring>{L"https://example.test/a?b=1&c=2"}, opened);

    // Tab reaches it; Enter opens it instead of pressing the default button.
    ::SetFocus(button);
    ::SendMessageW(dialog.hwnd(), WM_NEXTDLGCTL, 0, FALSE);
    ASSERT_EQ(label, ::GetFocus());
    MSG enter{label, WM_KEYDOWN, VK_RETURN, 0, 0, {}};
    EXPECT_TRUE(::IsDialogMessageW(dialog.hwnd(), &enter));
    EXPECT_EQ(0, dialog.ok_commands);
    MSG space{label, WM_KEYDOWN, VK_SPACE, 0, 0, {}};
    ::IsDialogMessageW(dialog.hwnd(), &space);
    EXPECT_EQ(3u, opened.size());
}

}  // namespace
}  // namespace velk::controls
