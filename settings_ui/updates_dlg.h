// The updates dialog: the versions of the add-in, the engine and the
// pattern, whether the protection is current, the update schedule, update
// now, the proxy settings and help. The scanning process writes the
// versions and times into [Antispam] and [RuleFile-Update]; this dialog
// only shows them and writes the schedule.
#pragma once

#include <windows.h>

#include <functional>

#include "common_src/win32/dialog.h"
#include "common_src/win32/ui_context.h"
#include "controls/digit_edit.h"

namespace velk::settings_ui {

class CUpdatesDlg : public win32::Dialog {
public:
    // Seconds since 1970-01-01 UTC.
    using Clock = std::function<long long()>;

    // `ui` must outlive the dialog; `now` defaults to the system clock.
    explicit CUpdatesDlg(const win32::UiContext& ui, Clock now = Clock());

    // Modal, owned by the client's window and centred on it.
    INT_PTR Run();

    // Asks the scanning process to update now, unless the installed engine
    // updates itself; logs what it found either way.
    void UpdateNow();

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void ShowStatus();
    bool OnOK();
    void ShowHelp();

    const win32::UiContext& m_ui;
    Clock m_now;
    controls::DigitEdit m_edtInterval;
};

}  // namespace velk::settings_ui
