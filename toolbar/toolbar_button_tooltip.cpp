#include "toolbar/toolbar_button_tooltip.h"

#include <commctrl.h>

#include "common_src/win32/window.h"
#include "log/diag_log.h"

namespace velk::toolbar {

CToolBarButtonToolTip::~CToolBarButtonToolTip() {
    // The band's destruction takes its owned tooltips with it; only a
    // tooltip that outlived that is destroyed here.
    if (tip_ != nullptr && ::IsWindow(tip_))
        ::DestroyWindow(tip_);
}

bool CToolBarButtonToolTip::Create(HWND band, DWORD style) {
    if (tip_ != nullptr || band == nullptr)
        return false;
    INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_BAR_CLASSES};
    ::InitCommonControlsEx(&icc);
    tip_ = ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | style,
                             CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, band,
                             nullptr, win32::ThisModule(), nullptr);
    if (tip_ == nullptr) {
        VELK_LOG(L"@@@ Error : creating a tooltip failed, error %lu", ::GetLastError());
        return false;
    }
    band_ = band;
    return true;
}

TTTOOLINFOW CToolBarButtonToolTip::ToolInfo(HWND button, const std::wstring* text) const {
    TTTOOLINFOW ti{};
    // The size without lpReserved: comctl32 version 5, which a client without
    // a version 6 manifest gets, rejects the larger record.
    ti.cbSize = TTTOOLINFOW_V2_SIZE;
    ti.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    ti.hwnd = band_;
    ti.uId = reinterpret_cast<UINT_PTR>(button);
    ti.hinst = nullptr;
    ti.lpszText = text != nullptr ? const_cast<wchar_t*>(text->c_str()) : nullptr;
    return ti;
}

bool CToolBarButtonToolTip::AddTool(HWND button, const std::wstring& text) {
    if (tip_ == nullptr || button == nullptr)
        return false;
    TTTOOLINFOW ti = ToolInfo(button, &text);
    return ::SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&ti)) != 0;
}

void CToolBarButtonToolTip::SetText(HWND button, const std::wstring& text) {
    if (tip_ == nullptr || button == nullptr)
        return;
    TTTOOLINFOW ti = ToolInfo(button, &text);
    ::SendMessageW(tip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&ti));
}

}  // namespace velk::toolbar
