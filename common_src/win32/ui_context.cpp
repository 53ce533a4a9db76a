#include "common_src/win32/ui_context.h"

#include <cwchar>

#include "settings/ini_profile.h"
#include "settings/settings_access.h"

namespace velk::win32 {

std::wstring UiContext::RawText(const wchar_t* key) const {
    if (strings == nullptr || key == nullptr)
        return std::wstring();
    return strings->LoadStringW(key);
}

std::wstring UiContext::Text(const wchar_t* key) const {
    return ReplacePlaceholders(RawText(key), placeholders());
}

Placeholders UiContext::placeholders() const {
    settings::IniProfile profile(where);
    using settings::Key;
    Placeholders p;
    p.spam_name = Prefer(settings::ReadText(profile, Key::AntiSpam), RawText(L"IDS_SPAM_NAME"));
    p.corp_name = Prefer(settings::ReadText(profile, Key::CorpName), RawText(L"IDS_CORP_NAME"));
    p.product_name =
        Prefer(settings::ReadText(profile, Key::AboutProductName), RawText(L"IDS_PRODUCT_NAME"));
    return p;
}

void ApplyTexts(HWND window, const UiContext& ui, const ControlText* table, std::size_t count) {
    if (window == nullptr || table == nullptr)
        return;
    const Placeholders values = ui.placeholders();
    for (std::size_t i = 0; i < count; ++i) {
        const std::wstring raw = ui.RawText(table[i].key);
        if (raw.empty())
            continue;
        HWND target = table[i].id == 0 ? window : ::GetDlgItem(window, table[i].id);
        if (target != nullptr)
            ::SetWindowTextW(target, ReplacePlaceholders(raw, values).c_str());
    }
}

int ShowMessage(HWND owner, const UiContext& ui, const wchar_t* text_key,
                const wchar_t* caption_key, UINT type) {
    return ShowMessageText(owner, ui.Text(text_key), ui.Text(caption_key), type);
}

int ShowMessageText(HWND owner, const std::wstring& text, const std::wstring& caption, UINT type) {
    return ::MessageBoxW(owner, text.c_str(), caption.c_str(), type);
}

HWND TopLevelOwner(HWND window) noexcept {
    return window != nullptr ? ::GetAncestor(window, GA_ROOT) : nullptr;
}

void CenterOnOwner(HWND window) noexcept {
    if (window == nullptr)
        return;
    HWND owner = ::GetWindow(window, GW_OWNER);
    if (owner == nullptr)
        owner = ::GetParent(window);
    RECT me{};
    ::GetWindowRect(window, &me);
    RECT area{};
    HMONITOR monitor = ::MonitorFromWindow(owner != nullptr ? owner : window,
                                           MONITOR_DEFAULTTONEAREST);
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    if (monitor != nullptr && ::GetMonitorInfoW(monitor, &info))
        area = info.rcWork;
    else
        ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    RECT around = area;
    if (owner != nullptr && ::IsWindowVisible(owner) && !::IsIconic(owner))
        ::GetWindowRect(owner, &around);
    const int w = me.right - me.left;
    const int h = me.bottom - me.top;
    int x = around.left + ((around.right - around.left) - w) / 2;
    int y = around.top + ((around.bottom - around.top) - h) / 2;
    if (x + w > area.right)
        x = area.right - w;
    if (y + h > area.bottom)
        y = area.bottom - h;
    if (x < area.left)
        x = area.left;
    if (y < area.top)
        y = area.top;
    ::SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

HFONT CreateDialogFont(HWND dialog, const std::wstring& face, int points, int weight) noexcept {
    LOGFONTW lf{};
    HFONT base = dialog != nullptr
                     ? reinterpret_cast<HFONT>(::SendMessageW(dialog, WM_GETFONT, 0, 0))
                     : nullptr;
    if (base == nullptr || ::GetObjectW(base, sizeof(lf), &lf) == 0)
        ::GetObjectW(::GetStockObject(DEFAULT_GUI_FONT), sizeof(lf), &lf);
    if (!face.empty() && face.size() < LF_FACESIZE)
        wcsncpy_s(lf.lfFaceName, face.c_str(), _TRUNCATE);
    if (points > 0) {
        HDC screen = ::GetDC(nullptr);
        lf.lfHeight = -::MulDiv(points, ::GetDeviceCaps(screen, LOGPIXELSY), 72);
        ::ReleaseDC(nullptr, screen);
    }
    lf.lfWidth = 0;
    lf.lfWeight = weight;
    return ::CreateFontIndirectW(&lf);
}

}  // namespace velk::win32
