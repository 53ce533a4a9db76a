// The link filter's settings panel (template 6109), hosted by the link
// filter page: whether links are checked, the two warnings, and the list of
// trusted domains with an edit box to add to it. It loads [LinkFilter] when
// created and saves it when asked.
#pragma once

#include <windows.h>

#include "common_src/win32/dialog.h"
#include "common_src/win32/subclassed_window.h"
#include "common_src/win32/ui_context.h"
#include "settings_ui/link_filter_settings.h"

namespace velk::settings_ui {

class CLinkFilterPanel : public win32::Dialog {
public:
    explicit CLinkFilterPanel(const win32::UiContext& ui);

    // A hidden child of `page`; `white` is the page's background brush.
    bool Create(HWND page, HBRUSH white);

    // The values as the controls show them now.
    LinkFilterValues Values() const;
    // Whether they differ from what the settings file held.
    bool Changed() const;
    // Writes them (every key) and takes them as the saved state.
    bool Save();

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    // Enter in the domain box adds the domain instead of closing the sheet.
    class DomainEdit : public win32::SubclassedWindow {
    protected:
        bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    };

    void OnInitDialog();
    void AddDomain();
    void RemoveSelected();
    void UpdateControls();
    std::vector<std::wstring> ListedDomains() const;

    const win32::UiContext& m_ui;
    HBRUSH m_hbrWhite = nullptr;
    LinkFilterValues m_saved;
    DomainEdit m_domainEdit;
};

}  // namespace velk::settings_ui
