// The first page of the filtering settings sheet: how strictly mail is
// judged. Two modes, each with its panel: one protection level for all
// spam (CDefaultLevel), or a level per kind of spam (CCustomLevel, set in
// the CCategoryLevel dialog). The Serenel dialog hangs off both panels.
//
// The page saves only when the user changed something on it; it then writes
// every detection key (detection_settings.h) and posts message 1036 to the
// scanning process.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "settings_ui/category_level.h"
#include "settings_ui/custom_level.h"
#include "settings_ui/default_level.h"
#include "settings_ui/level_panel_listener.h"
#include "settings_ui/serenel_level.h"

namespace velk::settings_ui {

// The scanning process rereads the detection keys on this (WM_USER + 12).
constexpr UINT kMsgDetectionSettingsSaved = WM_USER + 12;

class CSpamDetectionPage : public win32::PropertyPage, private LevelPanelListener {
public:
    explicit CSpamDetectionPage(const win32::UiContext& ui);
    ~CSpamDetectionPage() override;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    bool OnApply() override;

private:
    void OnInitDialog();
    void ShowMode();
    void MarkChanged();

    void OnPanelChanged() override;
    void OnCloudClicked(bool on) override;
    void OnCustomLevelRequested() override;
    void OnDefaultLevelRequested() override;
    void OnSerenelRequested() override;

    const win32::UiContext& m_ui;
    std::wstring m_strTitle;
    win32::unique_hbrush m_hbrWhite;
    std::unique_ptr<CDefaultLevel> m_pDefaultLevel;
    std::unique_ptr<CCustomLevel> m_pCustomLevel;
    bool m_bDefaultMode = true;
    CCategoryLevel m_categoryLevel;
    bool m_bDirty = false;
    CSerenelLevel m_serenelLevel;
    bool m_bSerenelChanged = false;
    win32::unique_hbitmap m_thumbs;
};

}  // namespace velk::settings_ui
