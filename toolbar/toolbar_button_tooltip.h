// The tooltip of one band button: a tooltips_class32 window owned by the
// band, with the button as its one tool.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <string>

namespace velk::toolbar {

class CToolBarButtonToolTip {
public:
    CToolBarButtonToolTip() noexcept = default;
    ~CToolBarButtonToolTip();

    CToolBarButtonToolTip(const CToolBarButtonToolTip&) = delete;
    CToolBarButtonToolTip& operator=(const CToolBarButtonToolTip&) = delete;

    // Creates the tooltip window, owned by `band`.
    bool Create(HWND band, DWORD style = TTS_ALWAYSTIP);

    // The button becomes the tool: identified by its window
    // (TTF_IDISHWND), its mouse messages watched by the tooltip itself
    // (TTF_SUBCLASS), the band as the tool's owner.
    bool AddTool(HWND button, const std::wstring& text);

    // Sets the tool's text again; the band does so after every command of
    // the button and when the tip pops.
    void SetText(HWND button, const std::wstring& text);

    HWND hwnd() const noexcept { return tip_; }

private:
    TTTOOLINFOW ToolInfo(HWND button, const std::wstring* text) const;

    HWND tip_ = nullptr;
    HWND band_ = nullptr;
};

}  // namespace velk::toolbar
