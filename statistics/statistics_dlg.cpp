#include "statistics/statistics_dlg.h"

#include <oleauto.h>

#include <cwchar>
#include <string>

#include "common_src/win32/companion.h"
#include "common_src/win32/paint_buffer.h"
#include "log/diag_log.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "statistics/statistics_core.h"
#include "statistics/statistics_ids.h"

namespace velk::statistics {

namespace {

using settings::Key;

constexpr COLORREF kBackground = 0xFFFFFF;
// Slice colours (0x00BBGGRR); users know the chart by them.
constexpr COLORREF kNormalMailColor = 0xFF9999;
constexpr COLORREF kDetectedColor = 0x663399;
constexpr COLORREF kReportedColor = 0xCCFFFF;
constexpr COLORREF kInvalidColor = 0x7F7F7F;

constexpr int kHeadingIds[] = {IDC_STAT_HEADING, IDC_STAT_MESSAGES_HEADING, IDC_STAT_RATES_HEADING};

constexpr win32::ControlText kTexts[] = {
    {0, L"IDS_DLG_STAT_CAPTION"},
    {IDC_STAT_SINCE_LABEL, L"IDS_DLG_STAT_SINCE"},
    {IDC_STAT_MESSAGES_HEADING, L"IDS_DLG_STAT_MESSAGES"},
    {IDC_STAT_PROCESSED_LABEL, L"IDS_DLG_STAT_PROCESSED"},
    {IDC_STAT_DETECTED_LABEL, L"IDS_DLG_STAT_DETECTED"},
    {IDC_STAT_REPORTED_SPAM_LABEL, L"IDS_DLG_STAT_REPORTED_SPAM"},
    {IDC_STAT_REPORTED_FP_LABEL, L"IDS_DLG_STAT_REPORTED_FP"},
    {IDC_STAT_RATES_HEADING, L"IDS_DLG_STAT_RATES"},
    {IDC_STAT_DETECT_RATE_LABEL, L"IDS_DLG_STAT_DETECT_RATE"},
    {IDC_STAT_FP_RATE_LABEL, L"IDS_DLG_STAT_FP_RATE"},
    {IDC_STAT_RESET, L"IDS_DLG_STAT_RESET"},
    {IDCANCEL, L"IDS_DLG_STAT_CLOSE"},
};

// One step of BuildBaseLayout or PreDraw. Whatever it throws ends the step,
// is logged and never reaches the user: the dialog keeps what it shows.
template <class F>
bool RunStep(const wchar_t* function, int number, F&& step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        VELK_LOG(L"@@@ Error : CStatisticsDlg::%s step %d failed, the dialog keeps what it shows",
                 function, number);
        return false;
    }
}

std::int64_t UnixNow() {
    FILETIME ft;
    ::GetSystemTimeAsFileTime(&ft);
    ULARGE_INTEGER t;
    t.LowPart = ft.dwLowDateTime;
    t.HighPart = ft.dwHighDateTime;
    return static_cast<std::int64_t>((t.QuadPart - 116444736000000000ull) / 10000000ull);
}

// The start of counting as local time in the user's own date format.
// False when it is no date: before 1970 (local time has none), a failing
// conversion, or an OLE date that does not give back the same second.
bool FormatStartDate(std::int64_t seconds, std::wstring& text) {
    if (seconds < 0)
        return false;
    ULARGE_INTEGER t;
    t.QuadPart = static_cast<ULONGLONG>(seconds) * 10000000ull + 116444736000000000ull;
    const FILETIME ft{t.LowPart, t.HighPart};
    SYSTEMTIME utc{}, local{}, back{};
    if (!::FileTimeToSystemTime(&ft, &utc) ||
        !::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) {
        return false;
    }
    DATE date = 0;
    if (!::SystemTimeToVariantTime(&local, &date) || !::VariantTimeToSystemTime(date, &back))
        return false;
    if (back.wYear != local.wYear || back.wMonth != local.wMonth || back.wDay != local.wDay ||
        back.wHour != local.wHour || back.wMinute != local.wMinute ||
        back.wSecond != local.wSecond) {
        return false;
    }
    BSTR formatted = nullptr;
    if (FAILED(::VarBstrFromDate(date, LOCALE_USER_DEFAULT, 0, &formatted)))
        return false;
    win32::unique_bstr owner(formatted);
    text.assign(formatted, ::SysStringLen(formatted));
    return true;
}

std::wstring Decimal(std::int32_t value) {
    wchar_t text[16];
    std::swprintf(text, 16, L"%d", value);
    return text;
}

}  // namespace

CStatisticsDlg::CStatisticsDlg(const win32::UiContext& ui) : m_ui(ui) {}

CStatisticsDlg::~CStatisticsDlg() {
    if (hwnd() != nullptr)
        ::DestroyWindow(hwnd());
}

INT_PTR CStatisticsDlg::DoModal() {
    return Dialog::DoModal(m_ui.resources, IDD_STATISTICS, win32::TopLevelOwner(m_ui.owner));
}

bool CStatisticsDlg::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            // Enter closes the dialog: the focus starts on Close, not Reset.
            ::SetFocus(::GetDlgItem(hwnd(), IDCANCEL));
            result = FALSE;
            return true;
        case WM_COMMAND:
            switch (LOWORD(wp)) {
                case IDC_STAT_RESET:
                    if (HIWORD(wp) == BN_CLICKED)
                        OnReset();
                    return true;
                case IDOK:
                case IDCANCEL:
                    Close(LOWORD(wp));
                    return true;
            }
            return false;
        case WM_ERASEBKGND:
            result = TRUE;  // WM_PAINT paints everything
            return true;
        case WM_PAINT:
            OnPaint();
            return true;
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORSTATIC:
            ::SetBkMode(reinterpret_cast<HDC>(wp), TRANSPARENT);
            result = reinterpret_cast<LRESULT>(m_brBackground.get());
            return m_brBackground.get() != nullptr;
        default:
            return false;
    }
}

std::wstring CStatisticsDlg::Text(const wchar_t* key) const {
    return win32::ReplacePlaceholders(m_ui.RawText(key), m_placeholders);
}

void CStatisticsDlg::OnInitDialog() {
    m_brBackground.reset(::CreateSolidBrush(kBackground));
    m_placeholders = m_ui.placeholders();
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    // The heading keeps its placeholder until FillInHeading.
    const std::wstring heading = m_ui.RawText(L"IDS_DLG_STAT_HEADING");
    if (!heading.empty())
        ::SetDlgItemTextW(hwnd(), IDC_STAT_HEADING, heading.c_str());
    m_chart.SetFont(reinterpret_cast<HFONT>(::SendMessageW(hwnd(), WM_GETFONT, 0, 0)));
    m_chart.SetTitle(Text(L"IDS_DLG_STAT_CHART_TITLE"));

    if (BuildBaseLayout() < 0)
        VELK_LOG(L"@@CStatisticsDlg::OnInitDialog@@ BuildBaseLayout Fail!");
    PreDraw();
    FillInHeading();
    win32::CenterOnOwner(hwnd());
}

void CStatisticsDlg::FillInHeading() {
    RunStep(L"OnInitDialog", 1, [&] {
        wchar_t text[1024] = {};
        ::GetDlgItemTextW(hwnd(), IDC_STAT_HEADING, text, 1024);
        const std::wstring current = text;
        if (current.find(win32::kSpamNameToken) == std::wstring::npos)
            return;
        settings::IniProfile profile(m_ui.where);
        const std::wstring name = win32::Prefer(settings::ReadText(profile, Key::AntiSpam),
                                                m_ui.RawText(L"IDS_SPAM_NAME"));
        const std::wstring filled = ReplaceFirst(current, win32::kSpamNameToken, name);
        if (filled != current)
            ::SetDlgItemTextW(hwnd(), IDC_STAT_HEADING, filled.c_str());
    });
}

int CStatisticsDlg::BuildBaseLayout() {
    VELK_LOG(L"@@CStatisticsDlg::BuildBaseLayout@@ Starting");
    bool ok = true;
    // The steps do not depend on each other: a failing one leaves the others.
    ok &= RunStep(L"BuildBaseLayout", 2, [&] {
        settings::IniProfile profile(m_ui.where);
        std::int64_t since = settings::ReadInt(profile, Key::RunningSince);
        if (since == 0)
            since = UnixNow();
        std::wstring text;
        if (!FormatStartDate(since, text)) {
            VELK_LOG(L"!!! [Statistics] RunningSince = %I64d is no valid date", since);
            text = Text(L"IDS_DLG_STAT_DATE_UNKNOWN");
        }
        ::SetDlgItemTextW(hwnd(), IDC_STAT_SINCE, text.c_str());
    });
    ok &= RunStep(L"BuildBaseLayout", 3, [&] {
        const std::wstring face = m_ui.RawText(L"IDS_CRX_YES_FONT");
        const int points = static_cast<int>(
            std::wcstol(m_ui.RawText(L"IDS_STATISTIC_DLG_FONT_SIZE").c_str(), nullptr, 10));
        win32::unique_hfont font(win32::CreateDialogFont(hwnd(), face, points, FW_BOLD));
        if (!font)
            return;
        for (int id : kHeadingIds)
            ::SendDlgItemMessageW(hwnd(), id, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()),
                                  TRUE);
        m_fontHeading = std::move(font);  // the labels no longer use the old one
    });
    return ok ? 0 : -1;
}

int CStatisticsDlg::PreDraw() {
    VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ Starting");
    Counters c;
    Derived d;
    double detect_rate = 0, fp_rate = 0;
    // Each step needs the one before: the first that fails ends PreDraw.
    const bool ok =
        RunStep(
            L"PreDraw", 1,
            [&] {
                win32::companion::Send(kFlushCountersMessage);
                settings::IniProfile profile(m_ui.where);
                c.processed = settings::ReadInt(profile, Key::ProcessedMsg);
                c.detected = settings::ReadInt(profile, Key::DetectedSpam);
                c.reported_spam = settings::ReadInt(profile, Key::ReportedSpam);
                c.reported_fp = settings::ReadInt(profile, Key::ReportedFP);
                d = Derive(c);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ lProcessedMsg      (A) : %d", c.processed);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ lDetectedSpam      (B) : %d", c.detected);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ lReportedSpam      (C) : %d",
                         c.reported_spam);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ lReportedFP        (D) : %d", c.reported_fp);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ lRealSpamMsg=B+C-D (E) : %d", d.real_spam);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ lNormalMsg  =A-E   (F) : %d", d.normal);
            }) &&
        RunStep(L"PreDraw", 2,
                [&] {
                    ::SetDlgItemTextW(hwnd(), IDC_STAT_PROCESSED, Decimal(c.processed).c_str());
                    ::SetDlgItemTextW(hwnd(), IDC_STAT_DETECTED, Decimal(c.detected).c_str());
                    ::SetDlgItemTextW(hwnd(), IDC_STAT_REPORTED_SPAM,
                                      Decimal(c.reported_spam).c_str());
                    ::SetDlgItemTextW(hwnd(), IDC_STAT_REPORTED_FP, Decimal(c.reported_fp).c_str());
                }) &&
        RunStep(
            L"PreDraw", 3,
            [&] {
                detect_rate = d.detect_rate;
                fp_rate = d.fp_rate;
                if (AnyNegative(c)) {
                    VELK_LOG(
                        L"@@CStatisticsDlg::PreDraw@@ Disable Pie Chart because of invalid Data");
                    m_bChartValid = false;
                }
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ fDetectRate=(B-D)/E (G) : %.3f%%",
                         detect_rate);
                VELK_LOG(L"@@CStatisticsDlg::PreDraw@@ fFPRate    =D/F     (H) : %.3f%%", fp_rate);
            }) &&
        RunStep(L"PreDraw", 4,
                [&] {
                    detect_rate = ClampPercent(detect_rate);
                    fp_rate = ClampPercent(fp_rate);
                    if (AllZero(c)) {
                        detect_rate = fp_rate = 0;
                        m_bChartValid = true;
                    }
                }) &&
        RunStep(L"PreDraw", 5,
                [&] {
                    ::SetDlgItemTextW(hwnd(), IDC_STAT_DETECT_RATE,
                                      FormatRate(detect_rate).c_str());
                    ::SetDlgItemTextW(hwnd(), IDC_STAT_FP_RATE, FormatRate(fp_rate).c_str());
                }) &&
        RunStep(L"PreDraw", 6, [&] {
            m_chart.RemoveAllSlices();
            if (!m_bChartValid) {
                m_chart.AddSlice(100, kInvalidColor, std::wstring());
                return;
            }
            const Shares s = ChartShares(c, d);
            m_chart.AddSlice(s.normal, kNormalMailColor, Text(L"IDS_DLG_STAT_GENERAL_MESSAGE"));
            m_chart.AddSlice(s.detected, kDetectedColor, Text(L"IDS_DLG_STAT_GENERAL_DETECT"));
            m_chart.AddSlice(s.reported, kReportedColor, Text(L"IDS_DLG_STAT_GENERAL_REPORT_SPAM"));
        });
    return ok ? 0 : -1;
}

void CStatisticsDlg::OnReset() {
    const int answer = win32::ShowMessage(hwnd(), m_ui, L"IDS_WARN_RESET_STATISTICS",
                                          L"IDS_WARNING_CAPTION", MB_YESNO | MB_ICONWARNING);
    if (answer != IDYES)
        return;
    win32::companion::Send(kResetCountersMessage);
    BuildBaseLayout();
    PreDraw();
    ::InvalidateRect(hwnd(), nullptr, TRUE);
}

RECT CStatisticsDlg::ChartArea() const {
    RECT area{};
    if (HWND frame = ::GetDlgItem(hwnd(), IDC_STAT_CHART)) {
        ::GetWindowRect(frame, &area);
        ::MapWindowPoints(nullptr, hwnd(), reinterpret_cast<POINT*>(&area), 2);
    }
    return area;
}

void CStatisticsDlg::OnPaint() {
    win32::BufferedPaint paint(hwnd());
    HDC dc = paint.dc();
    ::FillRect(
        dc, &paint.client(),
        m_brBackground ? m_brBackground.get() : static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
    const RECT area = ChartArea();
    if (m_bChartValid) {
        const POINT centre{(area.left + area.right) / 2, (area.top + area.bottom) / 2};
        m_chart.Draw(dc, centre, kChartRadius,
                     controls::CPieChart::kShowTitle | controls::CPieChart::kLegendRight |
                         controls::CPieChart::kStrict);
        return;
    }
    // The error text takes the chart's place: from the chart area's left to
    // the dialog's right margin, centred on the chart area's middle.
    LOGFONTW lf{};
    lf.lfHeight = -::MulDiv(9, ::GetDeviceCaps(dc, LOGPIXELSY), 72);
    lf.lfWeight = FW_BOLD;
    lf.lfCharSet = DEFAULT_CHARSET;
    wcsncpy_s(lf.lfFaceName, L"MS Sans Serif", _TRUNCATE);
    win32::unique_hfont font(::CreateFontIndirectW(&lf));
    win32::select_object keep_font(dc, font.get());
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, RGB(0, 0, 0));
    RECT margin{7, 7, 0, 0};
    ::MapDialogRect(hwnd(), &margin);
    const std::wstring text = Text(L"IDS_DLG_STAT_CHART_ERR");
    RECT box{area.left, 0, paint.client().right - margin.left, 0};
    ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &box,
                DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    const int height = box.bottom - box.top;
    box.left = area.left;
    box.right = paint.client().right - margin.left;
    box.top = (area.top + area.bottom) / 2 - height / 2;
    box.bottom = box.top + height;
    ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &box,
                DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
}

void ShowStatistics(const win32::UiContext& ui) {
    try {
        CStatisticsDlg dialog(ui);
        if (dialog.DoModal() == -1) {
            VELK_LOG(L"@@@ Error : the statistics dialog %d could not be created (%lu)",
                     IDD_STATISTICS, ::GetLastError());
        }
    } catch (...) {
        VELK_LOG(L"@@@ Error : the statistics dialog failed");
    }
}

}  // namespace velk::statistics
