// The statistics dialog from the staged language module and string table,
// driven with SendMessage, against the scanning-process stand-in keeping
// the counters in a settings file of the test's own.
#include "statistics/statistics_dlg.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common_src/win32/QzResourceStringLoader.h"
#include "demo/driver/child_process.h"
#include "demo/driver/remote_window.h"
#include "demo/driver/screen_shot.h"
#include "log/diag_log.h"
#include "statistics/statistics_ids.h"

namespace velk::statistics {
namespace {

using win32::unique_hmodule;

const std::wstring kDist = VELK_TEST_DIST;
constexpr wchar_t kScannerTitle[] = L"{5B0E7C21-93D4-4A6F-8B12-C4E97A1D2F58}";

void Pump(DWORD ms) {
    const DWORD start = ::GetTickCount();
    do {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
        ::Sleep(5);
    } while (::GetTickCount() - start < ms);
}

std::string ReadAll(const std::wstring& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteAll(const std::wstring& path, const std::string& text) {
    std::ofstream(std::filesystem::path(path), std::ios::binary | std::ios::trunc) << text;
}

// The scanning-process stand-in listening under its real title, counters
// in `settings`, every message it gets in its log.
class Scanner {
public:
    Scanner(const std::wstring& settings, const std::wstring& log) {
        DWORD error = 0;
        if (process_.Start(demo::QuoteArgument(VELK_SCANNER_STUB_EXE) + L" listen --settings " +
                               demo::QuoteArgument(settings) + L" --log " +
                               demo::QuoteArgument(log),
                           error)) {
            window_ =
                demo::WaitForWindow([] { return ::FindWindowW(nullptr, kScannerTitle); }, 20000);
        }
    }
    ~Scanner() {
        DWORD code = 0;
        if (window_ && ::PostMessageW(window_, WM_CLOSE, 0, 0))
            process_.Wait(10000, code);
    }
    HWND window() const { return window_; }

private:
    demo::ChildProcess process_;
    HWND window_ = nullptr;
};

// The dialog's client area as it is on the screen (PrintWindow is white
// under Wine).
struct Pixels {
    demo::Picture shot;
    POINT client{0, 0};  // the client area's corner in the picture
    int width() const { return shot.width - client.x; }
    int height() const { return shot.height - client.y; }
    int Count(COLORREF color, const RECT& r) const {
        int n = 0;
        for (LONG y = std::max(0L, r.top); y < std::min<LONG>(height(), r.bottom); ++y)
            for (LONG x = std::max(0L, r.left); x < std::min<LONG>(width(), r.right); ++x)
                n += shot.At(client.x + x, client.y + y) == color;
        return n;
    }
};

Pixels Capture(HWND hwnd) {
    Pixels p;
    RECT window;
    ::GetWindowRect(hwnd, &window);
    ::ClientToScreen(hwnd, &p.client);
    p.client.x -= window.left;
    p.client.y -= window.top;
    demo::CaptureWindow(hwnd, p.shot);
    return p;
}

constexpr COLORREF kNormal = 0xFF9999, kDetected = 0x663399, kReported = 0xCCFFFF, kGrey = 0x7F7F7F;

class StatisticsDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        static int counter = 0;
        dir_ = std::wstring(temp) + L"velk_statistics_" + std::to_wstring(::GetCurrentProcessId()) +
               L"_" + std::to_wstring(++counter) + L"\\";
        ::CreateDirectoryW(dir_.c_str(), nullptr);
        ui_.where.install_ini = dir_ + L"install.ini";
        ui_.where.user_dir = dir_;
        ui_.where.user_ini = dir_ + L"VELK_OE.ini";
        QzLanguageEnvironment env;
        env.resourceRoot = kDist + L"\\Resource\\";
        strings_ = std::make_unique<QzResourceStringLoader>(env);
        ASSERT_TRUE(strings_->Initialize(L"VELK_OE_AGENT"));
        ui_.strings = strings_.get();
        module_.reset(::LoadLibraryExW((kDist + L"\\Resource\\en-US\\VELK_OEA.dll.mui").c_str(),
                                       nullptr, LOAD_LIBRARY_AS_DATAFILE));
        ASSERT_TRUE(module_);
        ui_.resources = module_.get();
    }
    void TearDown() override {
        dialog_.reset();
        log::Close();
        std::error_code ignored;
        std::filesystem::remove_all(std::filesystem::path(dir_), ignored);
    }

    void Counters(const std::string& statistics) {
        WriteAll(ui_.where.user_ini, "[Statistics]\r\n" + statistics);
    }

    HWND Open() {
        dialog_ = std::make_unique<CStatisticsDlg>(ui_);
        HWND hwnd = dialog_->CreateModeless(ui_.resources, IDD_STATISTICS, nullptr);
        if (hwnd) {
            ::SetWindowPos(hwnd, HWND_TOPMOST, 0, 0, 0, 0,
                           SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW | SWP_NOACTIVATE);
            ::UpdateWindow(hwnd);
            Pump(300);
        }
        return hwnd;
    }

    std::wstring Label(int id) const {
        wchar_t text[256] = {};
        ::GetDlgItemTextW(dialog_->hwnd(), id, text, 256);
        return text;
    }
    std::vector<std::wstring> Counts() const {
        return {Label(IDC_STAT_PROCESSED),     Label(IDC_STAT_DETECTED),
                Label(IDC_STAT_REPORTED_SPAM), Label(IDC_STAT_REPORTED_FP),
                Label(IDC_STAT_DETECT_RATE),   Label(IDC_STAT_FP_RATE)};
    }
    // The square around the chart's circle, in client coordinates.
    RECT Circle() const {
        RECT r;
        ::GetWindowRect(::GetDlgItem(dialog_->hwnd(), IDC_STAT_CHART), &r);
        ::MapWindowPoints(nullptr, dialog_->hwnd(), reinterpret_cast<POINT*>(&r), 2);
        const LONG cx = (r.left + r.right) / 2, cy = (r.top + r.bottom) / 2;
        return {cx - kChartRadius, cy - kChartRadius, cx + kChartRadius, cy + kChartRadius};
    }
    // Clicks Reset and answers the question with `answer`; returns the text
    // the question showed.
    std::wstring Reset(int answer) {
        answer_ = answer;
        question_.clear();
        current_ = this;
        const UINT_PTR timer = ::SetTimer(nullptr, 0, 50, &AnswerQuestion);
        ::SendMessageW(dialog_->hwnd(), WM_COMMAND, MAKEWPARAM(IDC_STAT_RESET, BN_CLICKED), 0);
        ::KillTimer(nullptr, timer);
        Pump(200);
        return question_;
    }
    static void CALLBACK AnswerQuestion(HWND, UINT, UINT_PTR, DWORD) {
        HWND box = nullptr;
        ::EnumThreadWindows(
            ::GetCurrentThreadId(),
            [](HWND w, LPARAM found) {
                if (::IsWindowVisible(w) && w != current_->dialog_->hwnd()) {
                    *reinterpret_cast<HWND*>(found) = w;
                    return FALSE;
                }
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&box));
        if (!box)
            return;
        wchar_t caption[64] = {}, text[512] = {};
        ::GetWindowTextW(box, caption, 64);
        ::GetDlgItemTextW(box, 0xFFFF, text, 512);  // the message box's static text
        current_->question_ = std::wstring(caption) + L"|" + text;
        ::SendMessageW(box, WM_COMMAND, current_->answer_, 0);
    }

    std::wstring dir_;
    win32::UiContext ui_;
    std::unique_ptr<QzResourceStringLoader> strings_;
    unique_hmodule module_;
    std::unique_ptr<CStatisticsDlg> dialog_;
    int answer_ = IDNO;
    std::wstring question_;
    static StatisticsDialogTest* current_;
};
StatisticsDialogTest* StatisticsDialogTest::current_ = nullptr;

TEST_F(StatisticsDialogTest, ShowsWhatTheScannerFlushedJustBeforeReadingAndChartsIt) {
    WriteAll(ui_.where.install_ini, "[General]\r\nAnti-Spam=Spamless\r\n");
    Counters(
        "ProcessedMsg=4\r\nDetectedSpam=2\r\nReportedSpam=0\r\nReportedFP=0\r\n"
        "RunningSince=1700000000\r\n");
    const std::wstring log = dir_ + L"scanner.txt";
    Scanner scanner(ui_.where.user_ini, log);
    ASSERT_NE(nullptr, scanner.window());
    // The user reported one message: the scanner knows, the file not yet.
    ::PostMessageW(scanner.window(), WM_USER + 17, 0, 0);
    for (int i = 0; i < 200 && ReadAll(log).find("WM_USER+17") == std::string::npos; ++i)
        ::Sleep(10);
    ASSERT_EQ(
        0u, ::GetPrivateProfileIntW(L"Statistics", L"ReportedSpam", 9, ui_.where.user_ini.c_str()));

    HWND hwnd = Open();
    ASSERT_NE(nullptr, hwnd);
    EXPECT_EQ((std::vector<std::wstring>{L"4", L"2", L"1", L"0", L"66.667%", L"0.000%"}), Counts());
    EXPECT_EQ(L"Spamless Statistics", Label(IDC_STAT_HEADING));
    EXPECT_NE(std::wstring::npos, Label(IDC_STAT_SINCE).find(L"2023")) << Label(IDC_STAT_SINCE);
    EXPECT_NE(std::string::npos, ReadAll(log).find("posted WM_USER+17 wParam=0x0 lParam=0x0\r\n"
                                                   "sent WM_USER+21 wParam=0x0 lParam=0x0\r\n"));

    // 25% normal mail, 50% detected, 25% reported: the circle's pixels in
    // that proportion (the pen's outline takes a little of each).
    const Pixels shot = Capture(hwnd);
    const RECT circle = Circle();
    const int normal = shot.Count(kNormal, circle), detected = shot.Count(kDetected, circle),
              reported = shot.Count(kReported, circle);
    const int all = normal + detected + reported;
    ASSERT_GT(all, 7000) << "a circle of radius 50 is about 7850 pixels";
    EXPECT_NEAR(0.25, normal / double(all), 0.02);
    EXPECT_NEAR(0.50, detected / double(all), 0.02);
    EXPECT_NEAR(0.25, reported / double(all), 0.02);
    // The legend's boxes right of the circle.
    const RECT legend{circle.right, circle.top, shot.width(), circle.bottom};
    EXPECT_GT(shot.Count(kReported, legend), 200);
}

TEST_F(StatisticsDialogTest, ResetAsksFirstAndOnlyYesResetsTheCountersAndRereadsThem) {
    Counters(
        "ProcessedMsg=10\r\nDetectedSpam=4\r\nReportedSpam=1\r\nReportedFP=1\r\n"
        "RunningSince=1600000000\r\n");
    const std::wstring log = dir_ + L"scanner.txt";
    Scanner scanner(ui_.where.user_ini, log);
    ASSERT_NE(nullptr, scanner.window());
    ASSERT_NE(nullptr, Open());
    const std::vector<std::wstring> before{L"10", L"4", L"1", L"1", L"60.000%", L"25.000%"};
    EXPECT_EQ(before, Counts());
    const std::wstring since = Label(IDC_STAT_SINCE);

    const std::wstring question = Reset(IDNO);
    EXPECT_EQ(0u, question.find(L"Warning|All statistics counters")) << question;
    EXPECT_EQ(before, Counts());
    EXPECT_EQ(std::string::npos, ReadAll(log).find("WM_USER+26"));

    EXPECT_FALSE(Reset(IDYES).empty());
    EXPECT_EQ((std::vector<std::wstring>{L"0", L"0", L"0", L"0", L"0.000%", L"0.000%"}), Counts());
    EXPECT_NE(since, Label(IDC_STAT_SINCE)) << "counting starts again now";
    const std::string messages = ReadAll(log);
    EXPECT_NE(std::string::npos, messages.find("sent WM_USER+26 wParam=0x0 lParam=0x0\r\n"
                                               "sent WM_USER+21 wParam=0x0 lParam=0x0\r\n"))
        << messages;
    EXPECT_TRUE(dialog_->chart_valid());
}

TEST_F(StatisticsDialogTest, InvalidDataShowsTheErrorTextInsteadOfTheChart) {
    log::Open(dir_ + L"agent.log");
    Counters("ProcessedMsg=10\r\nDetectedSpam=4\r\nReportedSpam=1\r\nReportedFP=-3\r\n");
    HWND hwnd = Open();
    ASSERT_NE(nullptr, hwnd);
    EXPECT_EQ(L"-3", Label(IDC_STAT_REPORTED_FP)) << "the raw numbers stay";
    EXPECT_FALSE(dialog_->chart_valid());

    const Pixels shot = Capture(hwnd);
    const RECT all{0, 0, shot.width(), shot.height()};
    for (COLORREF c : {kNormal, kDetected, kReported, kGrey})
        EXPECT_EQ(0, shot.Count(c, all)) << std::hex << c;
    const RECT circle = Circle();
    const RECT text_band{circle.left, circle.top, shot.width(), circle.bottom};
    EXPECT_GT(shot.Count(RGB(0, 0, 0), text_band), 100) << "the error text";

    log::Close();
    const std::wstring name = log::CurrentPath();
    const std::string text = ReadAll(name);
    EXPECT_NE(std::string::npos,
              text.find("@@CStatisticsDlg::PreDraw@@ lReportedFP        (D) : -3"));
    EXPECT_NE(std::string::npos,
              text.find("@@CStatisticsDlg::PreDraw@@ Disable Pie Chart because of invalid Data"));
    // The rate is logged as computed and shown clamped.
    EXPECT_NE(std::string::npos,
              text.find("@@CStatisticsDlg::PreDraw@@ fDetectRate=(B-D)/E (G) : 140.000%"));
    EXPECT_EQ(L"100.000%", Label(IDC_STAT_DETECT_RATE));
}

TEST_F(StatisticsDialogTest, BrokenSettingsOrNoScannerNeitherShowAnErrorNorCloseTheDialog) {
    const auto only_the_dialog = [&] {
        int visible = 0;
        ::EnumThreadWindows(
            ::GetCurrentThreadId(),
            [](HWND w, LPARAM n) {
                *reinterpret_cast<int*>(n) += ::IsWindowVisible(w) ? 1 : 0;
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&visible));
        return visible == 1 && ::IsWindow(dialog_->hwnd());
    };
    const std::vector<std::wstring> zeros{L"0", L"0", L"0", L"0", L"0.000%", L"0.000%"};

    // Bytes that are no INI file at all.
    WriteAll(ui_.where.user_ini, std::string("\0\xff\xfe[Stat\x01\r\n=\0\0garbage", 20));
    ASSERT_NE(nullptr, Open());
    EXPECT_TRUE(only_the_dialog());
    EXPECT_EQ(zeros, Counts());
    EXPECT_FALSE(Label(IDC_STAT_SINCE).empty());

    // The settings file is a folder.
    ::DeleteFileW(ui_.where.user_ini.c_str());
    ::CreateDirectoryW(ui_.where.user_ini.c_str(), nullptr);
    ASSERT_NE(nullptr, Open());
    EXPECT_TRUE(only_the_dialog());
    EXPECT_EQ(zeros, Counts());
    ::RemoveDirectoryW(ui_.where.user_ini.c_str());

    // A start before 1970 is no date; the counters still show.
    Counters("ProcessedMsg=7\r\nRunningSince=-5\r\n");
    ASSERT_NE(nullptr, Open());
    EXPECT_TRUE(only_the_dialog());
    EXPECT_EQ(L"unknown", Label(IDC_STAT_SINCE));
    EXPECT_EQ(L"7", Label(IDC_STAT_PROCESSED));
}

TEST_F(StatisticsDialogTest, ShowStatisticsIsModalOnItsOwnerAndCentredOnIt) {
    Counters("ProcessedMsg=1\r\n");
    win32::unique_hwnd owner(::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPED | WS_VISIBLE,
                                               40, 30, 900, 700, nullptr, nullptr, nullptr,
                                               nullptr));
    ASSERT_TRUE(owner);
    ui_.owner = owner.get();
    static struct {
        HWND owner;
        HWND dialog = nullptr;
        HWND dialog_owner = nullptr;
        bool owner_enabled = true;
        RECT rect{};
        int focus = 0;
        int ticks = 0;
        bool enter_closed = true;
    } seen;
    seen = {};
    seen.owner = owner.get();
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 100, [](HWND, UINT, UINT_PTR, DWORD) {
        if (seen.dialog) {
            // Still open a second after Enter: close it so the test ends.
            if (++seen.ticks > 10 && ::IsWindow(seen.dialog)) {
                seen.enter_closed = false;
                ::PostMessageW(seen.dialog, WM_COMMAND, IDCANCEL, 0);
            }
            return;
        }
        HWND dialog = ::FindWindowW(L"#32770", L"Statistics");
        if (!dialog)
            return;
        seen.dialog = dialog;
        seen.dialog_owner = ::GetWindow(dialog, GW_OWNER);
        seen.owner_enabled = ::IsWindowEnabled(seen.owner) != FALSE;
        ::GetWindowRect(dialog, &seen.rect);
        seen.focus = ::GetDlgCtrlID(::GetFocus());
        // Enter, as the user would press it.
        ::PostMessageW(::GetFocus(), WM_KEYDOWN, VK_RETURN, 0);
        ::PostMessageW(::GetFocus(), WM_KEYUP, VK_RETURN, 0);
    });
    ShowStatistics(ui_);
    ::KillTimer(nullptr, timer);
    ASSERT_NE(nullptr, seen.dialog);
    EXPECT_EQ(owner.get(), seen.dialog_owner);
    EXPECT_FALSE(seen.owner_enabled);
    EXPECT_EQ(IDCANCEL, seen.focus);
    EXPECT_TRUE(seen.enter_closed) << "Enter closes the dialog; it does not ask to reset";
    EXPECT_NEAR(40 + 450, (seen.rect.left + seen.rect.right) / 2, 1);
    EXPECT_NEAR(30 + 350, (seen.rect.top + seen.rect.bottom) / 2, 1);
    EXPECT_FALSE(::IsWindow(seen.dialog));
}

}  // namespace
}  // namespace velk::statistics
