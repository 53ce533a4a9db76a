// The custom-level panel of the spam detection page: the level of each kind
// of spam at a glance, the way to change them (the category dialog) and
// back to one level for all, Serenel, and the in-the-cloud box.
#pragma once

#include <windows.h>

#include <array>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"
#include "settings_ui/detection_settings.h"
#include "settings_ui/level_panel_listener.h"

namespace velk::settings_ui {

class CCustomLevel : public win32::Dialog {
public:
    CCustomLevel(const win32::UiContext& ui, LevelPanelListener& listener);

    // A hidden child of `page` on template 6040; `white` is the page's.
    bool Create(HWND page, HBRUSH white);

    // The summary of the category stops (shown order, see Category).
    void ShowLevels(const std::array<int, kCategoryCount>& stops);
    bool cloud() const;
    void SetCloud(bool on);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();

    const win32::UiContext& m_ui;
    LevelPanelListener& m_listener;
    HBRUSH m_hbrWhite = nullptr;
    win32::unique_hfont m_levelFont;
};

}  // namespace velk::settings_ui
