// The cloud-feedback dialog: whether the user agrees to share feedback with
// the cloud service ([Statistics] EnableCRX), with a link to what is sent.
#pragma once

#include <windows.h>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"
#include "controls/ext_static.h"

namespace velk::settings_ui {

class CCRXDlg : public win32::Dialog {
public:
    // `ui` must outlive the dialog.
    explicit CCRXDlg(const win32::UiContext& ui);

    // Modal, owned by the client's window and centred on it.
    INT_PTR Run();

    // The link's object, for a caller that opens links its own way.
    controls::ExtStatic& link() noexcept { return m_stLink; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void OnOK();

    const win32::UiContext& m_ui;
    int m_nChoice = 0;  // radio-group index: 0 yes, 1 no
    win32::unique_hfont m_fontChoice;
    controls::ExtStatic m_stLink;
};

}  // namespace velk::settings_ui
