#include "controls/pie_chart.h"

#include <cwchar>

#include "common_src/win32/handles.h"
#include "controls/pie_chart_geometry.h"

namespace velk::controls {

namespace {

using unique_hpen = win32::unique_any<HPEN, win32::detail::DeleteGdi<HPEN>>;

// Text in the chart is drawn over whatever the owner painted: no boxes
// behind the letters, alignment put back afterwards.
class TextState {
public:
    TextState(HDC dc, UINT align)
        : dc_(dc),
          align_(::SetTextAlign(dc, align)),
          mode_(::SetBkMode(dc, TRANSPARENT)),
          color_(::SetTextColor(dc, RGB(0, 0, 0))) {}
    ~TextState() {
        ::SetTextColor(dc_, color_);
        ::SetBkMode(dc_, mode_);
        ::SetTextAlign(dc_, align_);
    }
    TextState(const TextState&) = delete;
    TextState& operator=(const TextState&) = delete;

private:
    HDC dc_;
    UINT align_;
    int mode_;
    COLORREF color_;
};

}  // namespace

void CPieChart::AddSlice(std::int32_t percent, COLORREF color, const std::wstring& label) {
    m_arrSlices.push_back(std::make_unique<CPieSlice>(percent, color, label));
}

void CPieChart::SetFont(HFONT like) noexcept {
    LOGFONTW lf{};
    if (like == nullptr || ::GetObjectW(like, sizeof lf, &lf) == 0)
        ::GetObjectW(::GetStockObject(DEFAULT_GUI_FONT), sizeof lf, &lf);
    m_lfText = lf;
    m_bHaveFont = true;
}

HFONT CPieChart::CreateTextFont(HDC dc) const {
    LOGFONTW lf = m_lfText;
    if (!m_bHaveFont)
        ::GetObjectW(::GetStockObject(DEFAULT_GUI_FONT), sizeof lf, &lf);
    wcsncpy_s(lf.lfFaceName, L"Arial", _TRUNCATE);
    lf.lfHeight = -::MulDiv(9, ::GetDeviceCaps(dc, LOGPIXELSY), 72);
    lf.lfWidth = 0;
    lf.lfWeight = FW_NORMAL;
    return ::CreateFontIndirectW(&lf);
}

std::vector<std::int32_t> CPieChart::Percents() const {
    std::vector<std::int32_t> percents;
    percents.reserve(m_arrSlices.size());
    for (const auto& s : m_arrSlices)
        percents.push_back(s->m_nPercent);
    return percents;
}

void CPieChart::Draw(HDC dc, POINT centre, int radius, unsigned options) const {
    const bool strict = (options & kStrict) != 0;
    const std::vector<std::int32_t> percents = Percents();
    if (dc == nullptr || (strict && !AddsUpToHundred(percents)))
        return;

    unique_hpen pen(::CreatePen(PS_SOLID, 1, m_crPen));
    {
        win32::select_object keep_pen(dc, pen.get());
        for (const SliceWedge& w : SliceWedges(percents, strict)) {
            win32::unique_hbrush brush(::CreateSolidBrush(m_arrSlices[w.slice]->m_crColor));
            win32::select_object keep_brush(dc, brush.get());
            ::Pie(dc, centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius,
                  centre.x + w.start.x, centre.y + w.start.y, centre.x + w.end.x,
                  centre.y + w.end.y);
        }
    }

    if ((options & kShowTitle) != 0 && !m_strTitle.empty()) {
        win32::unique_hfont font(CreateTextFont(dc));
        win32::select_object keep_font(dc, font.get());
        TextState text(dc, TA_CENTER | TA_BOTTOM);
        const ChartPoint at = TitleAnchor({centre.x, centre.y}, radius);
        ::TextOutW(dc, at.x, at.y, m_strTitle.c_str(), static_cast<int>(m_strTitle.size()));
    }
    if ((options & kLegendRight) != 0)
        DrawLegend(dc, centre, radius, strict);
}

void CPieChart::DrawLegend(HDC dc, POINT centre, int radius, bool strict) const {
    const std::vector<std::int32_t> percents = Percents();
    if (dc == nullptr || (strict && !AddsUpToHundred(percents)))
        return;
    win32::unique_hfont font(CreateTextFont(dc));
    win32::select_object keep_font(dc, font.get());
    unique_hpen pen(::CreatePen(PS_SOLID, 1, m_crPen));
    win32::select_object keep_pen(dc, pen.get());
    TextState text(dc, TA_LEFT | TA_TOP);
    for (const LegendRow& row : LegendRows({centre.x, centre.y}, radius, percents, strict)) {
        const CPieSlice& slice = *m_arrSlices[row.slice];
        {
            // Framed with the slices' pen: a pale colour stays visible on white.
            win32::unique_hbrush brush(::CreateSolidBrush(slice.m_crColor));
            win32::select_object keep_brush(dc, brush.get());
            ::Rectangle(dc, row.box_left, row.box_top, row.box_right, row.box_bottom);
        }
        const std::wstring label = LegendText(slice.m_strLabel, row);
        ::TextOutW(dc, row.text_x, row.text_y, label.c_str(), static_cast<int>(label.size()));
    }
}

}  // namespace velk::controls
