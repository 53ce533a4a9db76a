#include "settings_ui/sheet_common.h"

#include "settings/ini_profile.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {

std::wstring SheetText(const win32::UiContext& ui, const wchar_t* key) {
    std::wstring text = ui.RawText(key);
    if (text.find(L"<$") != std::wstring::npos)
        text = win32::ReplacePlaceholders(text, ui.placeholders());
    return text;
}

std::array<std::wstring, controls::BitmapSlider::kStops> LevelNames(const win32::UiContext& ui) {
    return {SheetText(ui, L"IDS_LEVEL_HIGH"), SheetText(ui, L"IDS_LEVEL_MEDIUM"),
            SheetText(ui, L"IDS_LEVEL_LOW")};
}

std::array<std::wstring, controls::BitmapSlider::kStops> LevelTooltips(const win32::UiContext& ui) {
    return {SheetText(ui, L"IDS_TOOLTIP_LEVELHIGH"), SheetText(ui, L"IDS_TOOLTIP_LEVELMEDIUM"),
            SheetText(ui, L"IDS_TOOLTIP_LEVELLOW")};
}

win32::unique_hbitmap LoadLevelThumbs(const win32::UiContext& ui) {
    settings::IniProfile profile(ui.where);
    const std::wstring file = settings::ReadTrimmed(profile, settings::Key::SliderBitmap);
    return controls::LoadSliderBitmap(ui.resources, IDB_SLIDER_THUMBS,
                                      file.empty() ? file : ui.where.install_dir + file);
}

bool SetUpLevelSlider(controls::BitmapSlider& slider, HWND dialog, int id,
                      const win32::UiContext& ui, HBITMAP thumbs, bool draw_names) {
    slider.SetStops(LevelNames(ui), LevelTooltips(ui), draw_names);
    slider.SetBitmap(thumbs);
    return slider.TakeOver(dialog, id);
}

bool PaintWhite(UINT msg, WPARAM wp, HBRUSH white, LRESULT& result) {
    switch (msg) {
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN: {
            HDC dc = reinterpret_cast<HDC>(wp);
            ::SetBkColor(dc, RGB(255, 255, 255));
            ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
            result = reinterpret_cast<LRESULT>(white);
            return white != nullptr;
        }
        default:
            return false;
    }
}

std::wstring WithoutMnemonic(const std::wstring& text) {
    std::wstring plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&' && i + 1 < text.size())
            ++i;
        plain += text[i];
    }
    return plain;
}

}  // namespace velk::settings_ui
