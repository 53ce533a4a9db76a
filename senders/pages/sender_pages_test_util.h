// What the tests of the sender pages share: a world on disk (an installation
// folder with its settings file and the import tool, a user folder with the
// lists), the texts and dialogs the pages need, a sheet that runs scripted
// steps, a driver that answers the dialogs and message boxes they open, and
// the scanning process's stand-in listening.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "senders/sender_list.h"

namespace velk::senders::testing {

std::string ReadBytes(const std::wstring& path);
void WriteBytes(const std::wstring& path, const std::string& bytes);
// Dispatches this thread's messages for `ms`.
void PumpFor(DWORD ms);
// Polls `done` while pumping, for at most `ms`.
bool WaitFor(const std::function<bool()>& done, DWORD ms = 10000);

// Answers the dialogs and message boxes this thread opens, in order: each
// top-level dialog that becomes active goes to the next handler that takes
// it. The sheet itself is left alone.
class DialogDriver {
public:
    struct Box {
        std::wstring caption;
        std::wstring text;
    };

    DialogDriver();
    ~DialogDriver();
    DialogDriver(const DialogDriver&) = delete;
    DialogDriver& operator=(const DialogDriver&) = delete;

    // A handler answers true when it took the dialog (`again` tells a dialog
    // that was active before, coming back after a box of its own closed).
    using Handler = std::function<bool(HWND dialog, bool again)>;
    void Then(Handler handler);

    // The next new message box: noted, then answered with `button`.
    void Answer(int button);
    // The next new sender edit dialog: both texts typed in, then `button`.
    void FillSender(const std::wstring& address, const std::wstring& name, int button = IDOK);

    // Runs `fn` from the message loop shortly (the modal loop of whatever
    // dialog is open then).
    static void Later(std::function<void()> fn);

    std::vector<Box> boxes;       // every message box answered, in order
    int unhandled = 0;            // dialogs no handler took: cancelled
    bool Done() const { return handlers_.empty(); }

    static Box Describe(HWND box);

private:
    static LRESULT CALLBACK Hook(int code, WPARAM wp, LPARAM lp);
    void OnActivate(HWND window);

    HHOOK hook_ = nullptr;
    std::deque<Handler> handlers_;
    std::set<HWND> seen_;
};

// A bare sheet over the given pages that runs `steps` one after another from
// its own message loop once it is up; a step usually ends with Press(). It
// gives up (Cancel) after 60 s so a test never hangs.
class ScriptedSheet : public win32::PropertySheet {
public:
    std::vector<std::function<void(ScriptedSheet&)>> steps;

    // PSBTN_OK or PSBTN_CANCEL, as the user's click.
    void Press(int button);
    // Makes page `index` the active one.
    void Show(int index);
    HWND page(int index) const;
    // A button of the active page, clicked.
    void Click(int index, int control);
    INT_PTR Run();

protected:
    void OnInitialized() override;
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    std::size_t next_ = 0;
};

// The folders, files and texts of one test.
class PageWorld {
public:
    PageWorld();
    ~PageWorld();

    // [General] `key` of the installation's settings file.
    void SetInstallValue(const wchar_t* key, const std::wstring& value);
    std::wstring UserValue(const wchar_t* key) const;
    std::wstring ListPath(SenderListKind kind) const;
    void LoadLists();

    // The diagnostic log of the run so far.
    std::string Log() const;

    // The scanning process's stand-in, recording what it is posted.
    void StartScanner();
    // Its record after it has taken every message posted so far.
    std::string StopScanner();

    win32::UiContext ui;
    SenderList approved{SenderListKind::kApproved};
    SenderList blocked{SenderListKind::kBlocked};
    std::wstring root;

private:
    QzResourceStringLoader strings_;
    win32::unique_hmodule module_;
    win32::unique_handle scanner_;
    win32::unique_handle nul_;
    std::wstring heard_;
};

}  // namespace velk::senders::testing
