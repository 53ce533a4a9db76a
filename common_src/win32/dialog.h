// The dialog base: modal and modeless dialogs from a template in a resource
// module (the language module inside the client) or in memory.
//
// `this` is the lParam of CreateDialogParam/DialogBoxParam and lives in
// DWLP_USER from WM_INITDIALOG until WM_NCDESTROY. ProcessMessage has the
// same shape as Window's; the static procedure turns its result into what a
// dialog procedure must return and catches every exception.
#pragma once

#include <windows.h>

namespace velk::win32 {

// Messages whose answer a dialog procedure returns itself instead of through
// DWLP_MSGRESULT (WM_INITDIALOG, WM_CTLCOLOR*, ...).
bool DialogAnswersDirectly(UINT msg) noexcept;

// What a dialog procedure returns for a message its object handled (or not)
// with `result`: directly, or TRUE with the answer in DWLP_MSGRESULT.
INT_PTR DialogAnswer(HWND hwnd, UINT msg, bool handled, LRESULT result) noexcept;

class Dialog {
public:
    Dialog() noexcept = default;
    // Destroys a modeless dialog that is still open (detached first, as for
    // Window: the derived part is gone by now).
    virtual ~Dialog();

    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    HWND hwnd() const noexcept { return hwnd_; }

    HWND CreateModeless(HINSTANCE resources, int template_id, HWND parent);
    HWND CreateModelessIndirect(const DLGTEMPLATE* dialog_template, HWND parent,
                                HINSTANCE instance = nullptr);
    // -1 when the dialog could not be created.
    INT_PTR DoModal(HINSTANCE resources, int template_id, HWND parent);
    INT_PTR DoModalIndirect(const DLGTEMPLATE* dialog_template, HWND parent,
                            HINSTANCE instance = nullptr);

    // Ends a modal dialog with `code`; destroys a modeless one.
    void Close(INT_PTR code) noexcept;

    // The object behind one of our dialogs, else null.
    static Dialog* FromHandle(HWND hwnd) noexcept;

    static INT_PTR CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

protected:
    // True when handled, with `result` set: the answer of the message (the
    // focus flag of WM_INITDIALOG, the brush of WM_CTLCOLOR*, the
    // DWLP_MSGRESULT value of any other message). False: default processing.
    virtual bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) = 0;

    // After WM_NCDESTROY, the dialog no longer pointing at this object.
    virtual void OnFinalMessage(HWND hwnd) {}

private:
    static INT_PTR Dispatch(Dialog* self, HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

    HWND hwnd_ = nullptr;
    bool modal_ = false;
};

}  // namespace velk::win32
