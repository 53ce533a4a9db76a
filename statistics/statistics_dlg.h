// The statistics dialog: how much mail the scanning process has processed,
// detected and the user reported since counting began, the two rates, and
// a pie chart of normal mail, detected and reported spam. The counters
// belong to the scanning process; the dialog asks it to flush them to the
// user's settings file before reading them, and to reset them when the
// user confirms. It never writes them itself.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"
#include "controls/pie_chart.h"

namespace velk::statistics {

// Sent to the scanning process (the add-in and it agree on these numbers).
constexpr UINT kFlushCountersMessage = WM_USER + 21;  // 1045: write the counters now
constexpr UINT kResetCountersMessage = WM_USER + 26;  // 1050: start counting again

// Radius of the chart's circle, in device pixels.
constexpr int kChartRadius = 50;

class CStatisticsDlg : public win32::Dialog {
public:
    // `ui` is copied; its string loader must outlive the dialog.
    explicit CStatisticsDlg(const win32::UiContext& ui);
    // A modeless dialog still open goes first, while its font and brush exist.
    ~CStatisticsDlg() override;

    // Modal, owned by the client's top-level window and centred on it.
    INT_PTR DoModal();

    // The start date and the headings' font. Negative when a step failed
    // (logged; the dialog goes on with what it has).
    int BuildBaseLayout();
    // Asks for fresh counters, shows them and the rates, rebuilds the
    // chart. Negative when a step failed.
    int PreDraw();

    bool chart_valid() const noexcept { return m_bChartValid; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void FillInHeading();
    void OnReset();
    void OnPaint();
    RECT ChartArea() const;
    // A localised text with its placeholders replaced (looked up once).
    std::wstring Text(const wchar_t* key) const;

    win32::UiContext m_ui;
    win32::Placeholders m_placeholders;
    win32::unique_hbrush m_brBackground;
    win32::unique_hfont m_fontHeading;
    controls::CPieChart m_chart;
    bool m_bChartValid = true;
};

// Runs the statistics dialog modally for the user (menu command 32773).
// Never throws; a dialog that cannot be created is logged.
void ShowStatistics(const win32::UiContext& ui);

}  // namespace velk::statistics
