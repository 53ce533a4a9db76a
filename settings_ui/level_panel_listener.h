// How the spam detection page hears from its two level panels.
#pragma once

namespace velk::settings_ui {

class LevelPanelListener {
public:
    // The user changed something the page saves (a level, the cloud box).
    virtual void OnPanelChanged() = 0;
    // The in-the-cloud box was clicked on one panel: the other follows.
    virtual void OnCloudClicked(bool on) = 0;
    // Buttons: the category dialog, back to one level, the Serenel dialog.
    virtual void OnCustomLevelRequested() = 0;
    virtual void OnDefaultLevelRequested() = 0;
    virtual void OnSerenelRequested() = 0;

protected:
    ~LevelPanelListener() = default;
};

}  // namespace velk::settings_ui
