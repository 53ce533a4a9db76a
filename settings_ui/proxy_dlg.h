// The proxy settings of the updates ([RuleFile-Update] EnableProxy,
// HTTPProxy, HTTPPort, ProxyUserName, ProxyPassword), opened from the
// updates dialog. The password is stored protected (password_codec.h).
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/dialog.h"
#include "common_src/win32/ui_context.h"
#include "controls/digit_edit.h"

namespace velk::settings_ui {

class CProxySettingDlg : public win32::Dialog {
public:
    // `ui` must outlive the dialog.
    explicit CProxySettingDlg(const win32::UiContext& ui);

    // Modal, owned by `owner` and centred on it.
    INT_PTR Run(HWND owner);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    bool OnOK();
    void EnableProxyItems();

    const win32::UiContext& m_ui;
    controls::DigitEdit m_edtPort;
    bool m_bEnableProxy = false;
    std::wstring m_strHost;
    int m_nPort = 0;
    std::wstring m_strUserName;
    std::wstring m_strPassword;
};

}  // namespace velk::settings_ui
