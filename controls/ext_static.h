// A stock STATIC control with a font, a text colour and a background of its
// own, or a transparent background over whatever its parent paints, and a
// link style: underlined in the link colour, a hand cursor, opened with the
// shell on a click or, once it has the keyboard focus (it becomes a tab
// stop), on Enter or Space. The control keeps drawing its own text, so its
// window text stays what screen readers and other programs read.
//
// The colours and the background are answers to WM_CTLCOLORSTATIC, which
// the parent (Dialog, PropertyPage) reflects to this object.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/subclassed_window.h"

namespace velk::controls {

class ExtStatic : public win32::SubclassedWindow {
public:
    // Opens a link's target; true when it was opened.
    using Opener = std::function<bool(HWND control, const std::wstring& target)>;

    // ShellExecuteExW with the verb "open", shown normally; failures logged.
    static bool OpenWithShell(HWND control, const std::wstring& target);

    // A font of the parent dialog's family with this face (empty: the
    // dialog's own), point size (0: the dialog's) and weight, owned here.
    void SetFont(const std::wstring& face, int points, int weight = FW_NORMAL);
    // A font made by the caller, owned here from now on.
    void SetFont(win32::unique_hfont font);
    void SetTextColor(COLORREF colour);
    // The background behind the text; without either call the parent's
    // answer stands.
    void SetBackground(COLORREF colour);
    void SetTransparent();

    // Makes the control a link to `target` (empty: its window text, read at
    // the moment it is opened). Call after Attach.
    void SetLink(const std::wstring& target = std::wstring(), Opener opener = &OpenWithShell);
    bool is_link() const noexcept { return link_; }
    // Narrows a one-line control to its text (never widens it), so the hand
    // cursor shows over the text only.
    void SizeToText();
    // What a click opens now.
    std::wstring LinkTarget() const;
    // Opens the link as a click would; false when not a link or not opened.
    bool Activate();

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    bool OnColor(HDC dc, LRESULT& result);
    void RefreshParentBehind();
    void UpdateLinkFont();
    void DrawFocus();

    win32::unique_hfont font_;       // SetFont's font
    win32::unique_hfont link_font_;  // the current font, underlined
    win32::unique_hbrush background_;
    COLORREF text_colour_ = CLR_INVALID;
    bool transparent_ = false;
    bool link_ = false;
    bool pressed_ = false;
    std::wstring target_;
    Opener opener_;
};

}  // namespace velk::controls
