// The statistics dialog from the staged language module, against the
// scanning-process stand-in keeping the counters in the user's settings.
#include "statistics/statistics_dlg.h"

#include <gtest/gtest.h>

#include <memory>

#include "common_src/win32/companion.h"
#include "demo/driver/screen_shot.h"
#include "host/log_capture_for_test.h"
#include "settings_ui/sheet_test_world.h"
#include "statistics/statistics_ids.h"

namespace velk::statistics {
namespace {

using settings_ui::test::ClickAnswering;
using settings_ui::test::SheetWorld;

constexpr COLORREF kNormal = 0xFF9999, kDetected = 0x663399, kReported = 0xCCFFFF, kGrey = 0x7F7F7F;
const std::vector<std::wstring> kZeros{L"0", L"0", L"0", L"0", L"0.000%", L"0.000%"};

void Pump(DWORD ms) {
    const DWORD start = ::GetTickCount();
    do {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
        ::Sleep(5);
    } while (::GetTickCount() - start < ms);
}

class StatisticsDialogTest : public ::testing::Test {
protected:
    HWND Open(SheetWorld& world) {
        dialog_ = std::make_unique<CStatisticsDlg>(world.ui());
        HWND hwnd = dialog_->CreateModeless(world.ui().resources, IDD_STATISTICS, nullptr);
        ::SetWindowPos(hwnd, HWND_TOPMOST, 0, 0, 0, 0,
                       SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW | SWP_NOACTIVATE);
        Pump(300);
        return hwnd;
    }
    std::wstring Label(int id) const {
        return settings_ui::test::TextOf(::GetDlgItem(dialog_->hwnd(), id));
    }
    std::vector<std::wstring> Counts() const {
        return {Label(IDC_STAT_PROCESSED),     Label(IDC_STAT_DETECTED),
                Label(IDC_STAT_REPORTED_SPAM), Label(IDC_STAT_REPORTED_FP),
                Label(IDC_STAT_DETECT_RATE),   Label(IDC_STAT_FP_RATE)};
    }
    // The square around the chart's circle, and from it to the dialog's
    // right edge, in client coordinates.
    RECT Circle(bool to_the_edge = false) const {
        RECT r, client;
        ::GetWindowRect(::GetDlgItem(dialog_->hwnd(), IDC_STAT_CHART), &r);
        ::MapWindowPoints(nullptr, dialog_->hwnd(), reinterpret_cast<POINT*>(&r), 2);
        ::GetClientRect(dialog_->hwnd(), &client);
        const LONG cx = (r.left + r.right) / 2, cy = (r.top + r.bottom) / 2;
        return {cx - kChartRadius, cy - kChartRadius,
                to_the_edge ? client.right : cx + kChartRadius, cy + kChartRadius};
    }
    // Pixels of `color` on the screen (PrintWindow is white under Wine)
    // within `r` of the dialog's client area.
    int Count(COLORREF color, const RECT& r) const {
        demo::Picture shot;
        RECT window{};
        POINT client{0, 0};
        ::GetWindowRect(dialog_->hwnd(), &window);
        ::ClientToScreen(dialog_->hwnd(), &client);
        if (!demo::CaptureWindow(dialog_->hwnd(), shot))
            return -1;
        int n = 0;
        for (LONG y = r.top + client.y - window.top; y < r.bottom + client.y - window.top; ++y)
            for (LONG x = r.left + client.x - window.left; x < r.right + client.x - window.left;
                 ++x)
                n +=
                    x >= 0 && y >= 0 && x < shot.width && y < shot.height && shot.At(x, y) == color;
        return n;
    }

    std::unique_ptr<CStatisticsDlg> dialog_;
};

TEST_F(StatisticsDialogTest, ShowsWhatTheScannerFlushedJustBeforeChartsItAndResetsOnlyOnYes) {
    SheetWorld world(
        "ProcessedMsg=4\r\nDetectedSpam=2\r\nReportedSpam=0\r\nReportedFP=0\r\nRunningSince="
        "1700000000\r\n");
    world.SetInstall(L"General", L"Anti-Spam", L"Spamless");
    // The user reported one message: the scanner knows, the file not yet.
    ::PostMessageW(win32::companion::FindWindow(), WM_USER + 17, 0, 0);
    ASSERT_EQ(1u, world.HeardSinceLastAsk().size());
    ASSERT_EQ(L"0", world.UserValue(L"Statistics", L"ReportedSpam"));

    ASSERT_NE(nullptr, Open(world));
    const std::vector<std::wstring> shown{L"4", L"2", L"1", L"0", L"66.667%", L"0.000%"};
    EXPECT_EQ(shown, Counts());
    EXPECT_EQ(std::vector<std::string>{"sent WM_USER+21 wParam=0x0 lParam=0x0"},
              world.HeardSinceLastAsk());
    EXPECT_EQ(L"Spamless Statistics", Label(IDC_STAT_HEADING));
    const std::wstring since = Label(IDC_STAT_SINCE);
    EXPECT_NE(std::wstring::npos, since.find(L"2023")) << since;

    // 25% normal mail, 50% detected, 25% reported: the circle's pixels in
    // that proportion (the pen's outline takes a little of each).
    const int normal = Count(kNormal, Circle()), detected = Count(kDetected, Circle()),
              reported = Count(kReported, Circle());
    const int all = normal + detected + reported;
    ASSERT_GT(all, 7000) << "a circle of radius 50 is about 7850 pixels";
    EXPECT_NEAR(0.25, normal / double(all), 0.02);
    EXPECT_NEAR(0.50, detected / double(all), 0.02);
    EXPECT_NEAR(0.25, reported / double(all), 0.02);
    EXPECT_GT(Count(kReported, Circle(true)) - reported, 200) << "the legend's box";

    const std::wstring question = ClickAnswering(dialog_->hwnd(), IDC_STAT_RESET, IDNO);
    EXPECT_EQ(0u, question.find(L"Warning|All statistics counters")) << question;
    EXPECT_EQ(shown, Counts());
    EXPECT_TRUE(world.HeardSinceLastAsk().empty());
    EXPECT_FALSE(ClickAnswering(dialog_->hwnd(), IDC_STAT_RESET, IDYES).empty());
    EXPECT_EQ(kZeros, Counts());
    EXPECT_NE(since, Label(IDC_STAT_SINCE)) << "counting starts again now";
    EXPECT_EQ((std::vector<std::string>{"sent WM_USER+26 wParam=0x0 lParam=0x0",
                                        "sent WM_USER+21 wParam=0x0 lParam=0x0"}),
              world.HeardSinceLastAsk());
}

TEST_F(StatisticsDialogTest, InvalidDataShowsTheErrorTextAndBrokenSettingsShowZeros) {
    SheetWorld world;  // the stand-in leaves the settings file to the test
    velk::testing::LogCapture log;
    world.WriteUserIni(
        "[Statistics]\r\nProcessedMsg=10\r\nDetectedSpam=4\r\nReportedSpam=1\r\nReportedFP=-3\r\n");
    ASSERT_NE(nullptr, Open(world));
    EXPECT_EQ(L"-3", Label(IDC_STAT_REPORTED_FP)) << "the raw numbers stay";
    EXPECT_EQ(L"100.000%", Label(IDC_STAT_DETECT_RATE));
    const RECT everywhere{0, 0, 2000, 2000};
    for (COLORREF c : {kNormal, kDetected, kReported, kGrey})
        EXPECT_EQ(0, Count(c, everywhere)) << std::hex << c;
    EXPECT_GT(Count(RGB(0, 0, 0), Circle(true)), 100) << "the error text";
    EXPECT_TRUE(log.Contains("@@CStatisticsDlg::PreDraw@@ lReportedFP        (D) : -3"));
    EXPECT_TRUE(
        log.Contains("@@CStatisticsDlg::PreDraw@@ Disable Pie Chart because of invalid Data"));
    // The rate is logged as computed and shown clamped.
    EXPECT_TRUE(log.Contains("@@CStatisticsDlg::PreDraw@@ fDetectRate=(B-D)/E (G) : 140.000%"));

    const std::wstring& ini = world.ui().where.user_ini;
    // Bytes that are no settings file at all, then a folder in its place:
    // no message (it would stop the test), the dialog stays.
    world.WriteUserIni(std::string("\0\xff\xfe[Stat\x01\r\n=\0\0garbage", 20));
    ASSERT_NE(nullptr, Open(world));
    EXPECT_TRUE(::IsWindowVisible(dialog_->hwnd()));
    EXPECT_EQ(kZeros, Counts());
    EXPECT_FALSE(Label(IDC_STAT_SINCE).empty());
    ::DeleteFileW(ini.c_str());
    ::CreateDirectoryW(ini.c_str(), nullptr);
    ASSERT_NE(nullptr, Open(world));
    EXPECT_TRUE(::IsWindowVisible(dialog_->hwnd()));
    EXPECT_EQ(kZeros, Counts());
    ::RemoveDirectoryW(ini.c_str());

    // A start before 1970 is no date; the counters still show.
    world.WriteUserIni("[Statistics]\r\nProcessedMsg=7\r\nRunningSince=-5\r\n");
    ASSERT_NE(nullptr, Open(world));
    EXPECT_EQ(L"unknown", Label(IDC_STAT_SINCE));
    EXPECT_EQ(L"7", Label(IDC_STAT_PROCESSED));
}

TEST_F(StatisticsDialogTest, ShowStatisticsIsModalOnItsOwnerCentredAndEnterClosesIt) {
    SheetWorld world;
    win32::unique_hwnd owner(::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPED | WS_VISIBLE,
                                               40, 30, 900, 700, nullptr, nullptr, nullptr,
                                               nullptr));
    world.ui().owner = owner.get();
    HWND dialog = nullptr;
    bool still_open = false;
    settings_ui::test::Script script;
    script
        .Then([&] {
            dialog = settings_ui::test::FindDialog(world.ui().Text(L"IDS_DLG_STAT_CAPTION"));
            return dialog != nullptr;
        })
        .Do([&] {
            EXPECT_EQ(owner.get(), ::GetWindow(dialog, GW_OWNER));
            EXPECT_FALSE(::IsWindowEnabled(owner.get()));
            RECT r{};
            ::GetWindowRect(dialog, &r);
            EXPECT_NEAR(40 + 450, (r.left + r.right) / 2, 1);
            EXPECT_NEAR(30 + 350, (r.top + r.bottom) / 2, 1);
            // Enter, as the user presses it.
            HWND focus = ::GetFocus();
            EXPECT_EQ(IDCANCEL, ::GetDlgCtrlID(focus));
            ::PostMessageW(focus, WM_KEYDOWN, VK_RETURN, 0);
            ::PostMessageW(focus, WM_KEYUP, VK_RETURN, 0);
        })
        .Wait(1000)  // from here on only when Enter left the dialog open
        .Do([&] {
            still_open = true;
            if (HWND box = settings_ui::test::FindDialog(world.ui().Text(L"IDS_WARNING_CAPTION")))
                ::PostMessageW(box, WM_COMMAND, IDNO, 0);
            ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        });
    script.Run([&] { ShowStatistics(world.ui()); });
    EXPECT_FALSE(still_open) << "Enter closes the dialog; it does not ask to reset";
}

}  // namespace
}  // namespace velk::statistics
