// The pie chart the statistics dialog draws on its own surface: slices with
// their colours and labels, a title above the circle and a legend to its
// right. Not a window: its owner calls Draw from WM_PAINT with the centre
// and radius it chose. The geometry is pie_chart_geometry.h's.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velk::controls {

class CPieSlice {
public:
    CPieSlice(std::int32_t percent, COLORREF color, std::wstring label)
        : m_nPercent(percent), m_crColor(color), m_strLabel(std::move(label)) {}

    std::int32_t m_nPercent;
    COLORREF m_crColor;
    std::wstring m_strLabel;
};

class CPieChart {
public:
    // Options of Draw.
    enum : unsigned {
        kShowTitle = 1u << 0,
        kLegendRight = 1u << 1,
        // Nothing at all unless the slices add up to exactly 100.
        kStrict = 1u << 2,
    };

    CPieChart() = default;
    CPieChart(const CPieChart&) = delete;
    CPieChart& operator=(const CPieChart&) = delete;

    void AddSlice(std::int32_t percent, COLORREF color, const std::wstring& label);
    void RemoveAllSlices() noexcept { m_arrSlices.clear(); }

    void SetTitle(const std::wstring& title) { m_strTitle = title; }
    void SetPenColor(COLORREF color) noexcept { m_crPen = color; }
    // Title and legend use Arial 9 pt (at the DC's own pixel density) with
    // every other field of `like`, the owner's font.
    void SetFont(HFONT like) noexcept;

    // Slices, then the title and the legend as `options` ask.
    void Draw(HDC dc, POINT centre, int radius, unsigned options) const;
    void DrawLegend(HDC dc, POINT centre, int radius, bool strict) const;

private:
    std::vector<std::int32_t> Percents() const;
    HFONT CreateTextFont(HDC dc) const;

    std::vector<std::unique_ptr<CPieSlice>> m_arrSlices;
    COLORREF m_crPen = RGB(0x60, 0x60, 0x60);
    std::wstring m_strTitle;
    LOGFONTW m_lfText{};
    bool m_bHaveFont = false;
};

}  // namespace velk::controls
