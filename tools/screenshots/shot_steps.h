// Driving this thread's modal windows from a timer while their own message
// loops run: each step is retried every 25 ms until it reports done, and a
// step that does not finish in time ends the run with its name, every
// dialog of the thread destroyed so that the modal call returns.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "common_src/win32/modal_script.h"
#include "demo/driver/screen_shot.h"

namespace velk::screens {

// Where pictures go and what went wrong; shared by every run of a program.
class Album {
public:
    explicit Album(std::wstring folder) : folder_(std::move(folder)) {}

    // Saves `picture` as <folder>\<name>.bmp; a failure is recorded.
    void Save(const std::wstring& name, const demo::Picture& picture);
    // The window as it is on the screen, repainted first.
    void SaveWindow(const std::wstring& name, HWND window);
    void Fail(const std::wstring& what);

    bool ok() const { return failures_.empty(); }
    int saved() const { return saved_; }

private:
    std::wstring folder_;
    std::vector<std::wstring> failures_;
    int saved_ = 0;
};

// The part of the screen inside `area` (screen coordinates, clipped to the
// screen).
bool CaptureArea(const RECT& area, demo::Picture& out);

class Steps {
public:
    explicit Steps(Album& album);

    // `done` is retried until it returns true; `what` names it in a failure.
    Steps& Until(std::wstring what, std::function<bool()> done);
    Steps& Do(std::function<void()> action);
    Steps& Wait(DWORD ms);
    // Waits for the window `find` returns to be visible, lets it paint, and
    // saves it as `name`.
    Steps& Shoot(const std::wstring& name, std::function<HWND()> find);
    // Clicks the button `id` below the window `find` returns.
    Steps& Click(std::function<HWND()> find, int id);
    // Posts a command to the window `find` returns (IDCANCEL closes a dialog).
    Steps& Command(std::function<HWND()> find, int id);

    // Runs `modal` (which returns when its window closes) with the steps
    // ticking; a failure is recorded in the album. True when every step
    // finished.
    bool Run(const std::wstring& what, const std::function<void()>& modal);

private:
    Album& album_;
    win32::ModalScript script_;
};

// A visible, enabled top-level dialog of this thread holding a control with
// `control_id` (a modal dialog's owner is disabled, so this is the one on
// top); null when there is none.
HWND FindOwnDialog(int control_id);
// The sheet of this thread: the dialog that answers PSM_GETTABCONTROL.
HWND FindOwnSheet();
// The first window below `root`, at any depth, with `control_id`.
HWND FindControl(HWND root, int control_id);

}  // namespace velk::screens
