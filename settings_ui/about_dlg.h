// The About box: title, banner, product and company names from the
// installation file, the add-in's version from its own version resource,
// the engine and pattern versions, and the copyright texts.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"

namespace velk::settings_ui {

class CAboutDlg : public win32::Dialog {
public:
    // `ui` must outlive the dialog.
    explicit CAboutDlg(const win32::UiContext& ui);

    // Modal, owned by the client's window and centred on it.
    INT_PTR Run();

    // "FileVersion" and "PrivateBuild" of a module's version resource;
    // false when it has none.
    static bool ReadModuleVersion(HMODULE module, std::wstring& file_version,
                                  std::wstring& private_build);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void LoadBanner();

    const win32::UiContext& m_ui;
    win32::unique_hbitmap m_bmpBanner;
    win32::unique_hfont m_fontProduct;
};

}  // namespace velk::settings_ui
