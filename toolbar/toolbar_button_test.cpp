#include "toolbar/toolbar_button.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

#include "common_src/win32/handles.h"
#include "common_src/win32/window_class.h"

namespace velk::toolbar {
namespace {

constexpr wchar_t kBandClass[] = L"VelkButtonTestBand";
constexpr int kReportSpam = 6011;
constexpr int kMenu = 6007;

// Stands in for the band: records the commands its buttons send.
class FakeBand : public win32::Window {
public:
    struct Command {
        WPARAM wp;
        HWND from;
        bool pressed_while_handled;
    };
    std::vector<Command> commands;
    std::function<void()> on_command;
    CToolBarButton* watched = nullptr;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        if (msg != WM_COMMAND)
            return false;
        commands.push_back({wp, reinterpret_cast<HWND>(lp), watched && watched->pressed()});
        if (on_command)
            on_command();
        return true;
    }
};

// A 16x16 bitmap: transparent magenta with a solid square in the middle.
win32::unique_hbitmap IconBitmap(COLORREF square, int size = 16) {
    win32::window_dc screen(nullptr);
    win32::unique_hbitmap bmp(::CreateCompatibleBitmap(screen.get(), size, size));
    win32::unique_hdc dc(::CreateCompatibleDC(screen.get()));
    win32::select_object sel(dc.get(), bmp.get());
    RECT all{0, 0, size, size};
    win32::unique_hbrush key(::CreateSolidBrush(kTransparentKey));
    ::FillRect(dc.get(), &all, key.get());
    RECT mid{size / 4, size / 4, size - size / 4, size - size / 4};
    win32::unique_hbrush fill(::CreateSolidBrush(square));
    ::FillRect(dc.get(), &mid, fill.get());
    return bmp;
}

// The button as it paints itself, read back pixel by pixel.
struct Snapshot {
    explicit Snapshot(HWND button) {
        RECT rc{};
        ::GetClientRect(button, &rc);
        w = rc.right;
        win32::window_dc screen(nullptr);
        win32::unique_hdc dc(::CreateCompatibleDC(screen.get()));
        win32::unique_hbitmap bmp(::CreateCompatibleBitmap(screen.get(), rc.right, rc.bottom));
        win32::select_object selected(dc.get(), bmp.get());
        ::SendMessageW(button, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc.get()), PRF_CLIENT);
        for (int y = 0; y < rc.bottom; ++y) {
            for (int x = 0; x < rc.right; ++x)
                pixels.push_back(::GetPixel(dc.get(), x, y));
        }
    }
    COLORREF At(int x, int y) const { return pixels[y * w + x]; }
    int Count(COLORREF c, int left = 0) const {
        int n = 0;
        for (std::size_t i = 0; i < pixels.size(); ++i)
            n += static_cast<int>(i % w) >= left && pixels[i] == c ? 1 : 0;
        return n;
    }
    int w = 0;
    std::vector<COLORREF> pixels;
};

class ToolBarButtonTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(CToolBarButton::RegisterButtonClass());
        ASSERT_NE(0, win32::RegisterWindowClass(kBandClass));
    }
    void SetUp() override {
        ASSERT_NE(nullptr, band_.Create(kBandClass, nullptr, WS_POPUP, 0, RECT{0, 0, 600, 40}));
        icon_ = IconBitmap(RGB(0, 160, 0));
        icon_disabled_ = IconBitmap(RGB(0, 0, 160));
        arrow_ = IconBitmap(RGB(255, 255, 0), 8);
    }

    ToolBarButtonRecord Record(std::int32_t variant, int id, const wchar_t* caption,
                               bool with_icon) const {
        return ToolBarButtonRecord{with_icon ? icon_.get() : nullptr,
                                   with_icon ? icon_disabled_.get() : nullptr,
                                   caption, L"", kKindPushButton, variant, 9, id};
    }
    std::unique_ptr<CToolBarButton> Make(const ToolBarButtonRecord& record,
                                         const ToolBarTheme& theme) {
        auto button = std::make_unique<CToolBarButton>(record, theme);
        button->Create(band_.hwnd(), 0, 0);
        return button;
    }
    static void Send(const CToolBarButton& b, UINT msg) {
        ::SendMessageW(b.hwnd(), msg, msg == WM_LBUTTONDOWN ? MK_LBUTTON : 0, MAKELPARAM(3, 3));
    }

    FakeBand band_;
    win32::unique_hbitmap icon_, icon_disabled_, arrow_;
};

TEST_F(ToolBarButtonTest, ClickSendsTheCommandAtOnceAndDisabledOrLeftButtonsStayQuiet) {
    ToolBarTheme theme(false, arrow_.get());
    auto spam = Make(Record(kVariantPlain, kReportSpam, L"Report Spam", true), theme);
    auto menu = Make(Record(kVariantDropDown, kMenu, L"Menu", false), theme);
    band_.watched = spam.get();
    Send(*spam, WM_MOUSEMOVE);
    Send(*spam, WM_LBUTTONDOWN);
    EXPECT_EQ(nullptr, ::GetCapture());
    EXPECT_TRUE(band_.commands.empty()) << "the command comes on release";
    Send(*spam, WM_LBUTTONUP);
    ASSERT_EQ(1u, band_.commands.size());
    EXPECT_EQ(static_cast<WPARAM>(kReportSpam), LOWORD(band_.commands[0].wp));
    EXPECT_EQ(spam->hwnd(), band_.commands[0].from);
    EXPECT_TRUE(band_.commands[0].pressed_while_handled) << "a menu opens on a pressed button";
    // The press happened over another window; only the release arrives here.
    Send(*spam, WM_LBUTTONUP);
    EXPECT_EQ(2u, band_.commands.size());

    // Leaving clears the press, except on the drop-down whose menu is open.
    for (CToolBarButton* b : {spam.get(), menu.get()}) {
        Send(*b, WM_MOUSEMOVE);
        Send(*b, WM_LBUTTONDOWN);
        Send(*b, WM_MOUSELEAVE);
    }
    EXPECT_FALSE(spam->pressed());
    EXPECT_TRUE(menu->pressed());

    spam->Enable(false);
    for (UINT msg : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP})
        Send(*spam, msg);
    EXPECT_FALSE(spam->hot());
    EXPECT_EQ(2u, band_.commands.size());

    // A command that destroys the button (the band torn down) is safe.
    spam->Enable(true);
    HWND hwnd = spam->hwnd();
    band_.on_command = [&] { spam.reset(); };
    Send(*spam, WM_LBUTTONUP);
    EXPECT_FALSE(::IsWindow(hwnd));
}

TEST_F(ToolBarButtonTest, PaintsItsStatesInTheClientsColoursButNeverTheTransparentKey) {
    ToolBarTheme theme(false, arrow_.get());
    const Palette& p = theme.palette();
    auto logo = Make(Record(kVariantPlain, 6008, L"", true), theme);
    Snapshot idle(logo->hwnd());
    EXPECT_EQ(p.face, idle.At(0, 0)) << "the idle frame is invisible";
    EXPECT_EQ(p.face, idle.At(4, 4)) << "magenta pixels of the icon are not drawn";
    EXPECT_EQ(0, idle.Count(kTransparentKey));
    EXPECT_EQ(RGB(0, 160, 0), idle.At(12, 12));
    Send(*logo, WM_MOUSEMOVE);
    Snapshot hot(logo->hwnd());
    EXPECT_EQ(p.highlight, hot.At(0, 0));
    EXPECT_EQ(p.shadow, hot.At(23, 23));
    Send(*logo, WM_LBUTTONDOWN);
    Snapshot pressed(logo->hwnd());
    EXPECT_EQ(p.shadow, pressed.At(0, 0));
    logo->Enable(false);
    Snapshot disabled(logo->hwnd());
    EXPECT_EQ(RGB(0, 0, 160), disabled.At(12, 12)) << "the disabled bitmap";
    EXPECT_EQ(p.face, disabled.At(0, 0)) << "no frame while disabled";
    // Readable on Outlook Express's light face: the system's text colour.
    auto caption = Make(Record(kVariantPlain, kReportSpam, L"Report Spam", false), theme);
    EXPECT_GT(Snapshot(caption->hwnd()).Count(::GetSysColor(COLOR_BTNTEXT)), 0);

    // Windows Mail: white captions on its dark blue, grey when disabled.
    ToolBarTheme wm(true, arrow_.get());
    auto spam = Make(Record(kVariantPlain, kReportSpam, L"Report Spam", true), wm);
    auto menu = Make(Record(kVariantDropDown, kMenu, L"Options", false), wm);
    Snapshot normal(spam->hwnd());
    EXPECT_EQ(RGB(24, 61, 118), normal.At(0, 0));
    EXPECT_GT(normal.Count(RGB(255, 255, 255), kIconCellWidth), 0) << "white caption";
    spam->Enable(false);
    Snapshot grey(spam->hwnd());
    EXPECT_GT(grey.Count(RGB(150, 150, 150), kIconCellWidth), 0);
    EXPECT_EQ(0, grey.Count(RGB(255, 255, 255), kIconCellWidth));
    menu->Enable(false);
    Snapshot drop(menu->hwnd());
    EXPECT_EQ(16, drop.Count(RGB(255, 255, 0))) << "the 4x4 arrow, keyed edges left out";
    EXPECT_GT(drop.Count(RGB(255, 255, 255)), 0) << "the menu button stays readable";
}

}  // namespace
}  // namespace velk::toolbar
