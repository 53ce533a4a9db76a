// The sender edit dialog (template 6047) that Add and Edit of both sender
// pages open: an address and a name. OK stays disabled while the address is
// blank; an address or name that is too long, or an address the list cannot
// hold, is refused with the focus put back on it. On OK both texts are
// trimmed and runs of "*" in the address become one.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/dialog.h"
#include "common_src/win32/ui_context.h"

namespace velk::senders {

class CSenderEditDlg : public win32::Dialog {
public:
    // `caption_key` names the dialog's caption (add or edit, approved or
    // blocked); the texts fill the fields at the start.
    CSenderEditDlg(const win32::UiContext& ui, const wchar_t* caption_key, std::wstring address,
                   std::wstring name);

    // IDOK with address() and name() set, else IDCANCEL (or -1 when the
    // template is missing).
    INT_PTR Run(HWND owner);

    const std::wstring& address() const { return address_; }
    const std::wstring& name() const { return name_; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInit();
    void OnOk();
    void UpdateOk();
    // Tells the user why `edit`'s text is refused and puts the focus on it.
    void Refuse(int edit, const wchar_t* text_key, const wchar_t* caption_key, UINT icon);

    const win32::UiContext& ui_;
    const wchar_t* caption_key_;
    std::wstring address_;
    std::wstring name_;
};

}  // namespace velk::senders
