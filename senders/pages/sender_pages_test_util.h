// What the tests of the sender pages share: a world on disk (an installation
// folder with its settings file and the import tool, a user folder with the
// lists), the texts and dialogs the pages need, a sheet that runs scripted
// steps, a driver that answers the dialogs and message boxes they open, and
// the scanning process's stand-in listening.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "senders/sender_list.h"
#include "senders/sender_list_wide.h"

namespace velk::senders::testing {

// Polls `done` while dispatching this thread's messages, for at most 10 s.
bool WaitFor(const std::function<bool()>& done);

// Answers the dialogs and message boxes this thread opens, in order: each
// top-level dialog that becomes active goes to the next handler if it takes
// it (`again`: the dialog was active before and came back after a box of its
// own closed). The sheet itself is left alone; a dialog nobody takes fails
// the test and is cancelled.
class DialogDriver {
public:
    struct Box {
        std::wstring caption;
        std::wstring text;
    };
    using Handler = std::function<bool(HWND dialog, bool again)>;

    DialogDriver();
    ~DialogDriver();
    void Then(Handler handler) { handlers_.push_back(std::move(handler)); }
    // The next new message box: noted, then answered with `button`.
    void Answer(int button);
    // The next new sender edit dialog: both texts typed in, then `button`.
    void FillSender(const std::wstring& address, const std::wstring& name, int button = IDOK);
    // Runs `fn` shortly from the message loop (of whatever dialog is open then).
    static void Later(std::function<void()> fn);
    bool Done() const { return handlers_.empty(); }

    std::vector<Box> boxes;  // every message box answered, in order

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
    void Press(int button) { ::SendMessageW(hwnd(), PSM_PRESSBUTTON, button, 0); }
    void Show(int index) { ::SendMessageW(hwnd(), PSM_SETCURSEL, index, 0); }
    HWND page(int index) const { return pages()[index]->hwnd(); }
    // A button of page `index`, clicked.
    void Click(int index, int control) {
        ::SendMessageW(page(index), WM_COMMAND, MAKEWPARAM(control, BN_CLICKED),
                       reinterpret_cast<LPARAM>(::GetDlgItem(page(index), control)));
    }
    INT_PTR Run() { return DoModal(nullptr, L"Sheet", PSH_NOAPPLYNOW); }

protected:
    void OnInitialized() override;
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    std::size_t next_ = 0;
};

// The folders, files and texts of one test, in a temporary folder: "bin\"
// is the installation, kUserFolder the user's folder (named as users name
// their profiles, outside ASCII).
class PageWorld {
public:
    static constexpr const wchar_t* kUserFolder = L"J\u00F6rg \u5C71\u7530\\";

    PageWorld();
    ~PageWorld();

    // [General] `key` of the installation's settings file.
    void SetInstallValue(const wchar_t* key, const std::wstring& value) {
        ::WritePrivateProfileStringW(L"General", key, value.c_str(), ui.where.install_ini.c_str());
    }
    std::wstring UserValue(const wchar_t* key) const {
        wchar_t value[256] = L"";
        ::GetPrivateProfileStringW(L"General", key, L"<none>", value, 256,
                                   ui.where.user_ini.c_str());
        return value;
    }
    std::wstring ListPath(SenderListKind kind) const {
        return SenderListPathW(ui.where.user_dir, kind);
    }
    std::string UserFile(const wchar_t* name) const {
        return dir.ReadFile(kUserFolder + std::wstring(name));
    }
    void WriteUserFile(const wchar_t* name, const std::string& bytes) const {
        dir.WriteFile(kUserFolder + std::wstring(name), bytes);
    }
    // The diagnostic log of the run so far.
    std::string Log() const;
    // The scanning process's stand-in, recording what it is posted; Stop
    // answers its record once it has taken every message posted so far.
    void StartScanner();
    std::string StopScanner();

    QzCommon::testing_util::TempFolder dir;
    win32::UiContext ui;
    SenderList approved{SenderListKind::kApproved};
    SenderList blocked{SenderListKind::kBlocked};

private:
    QzResourceStringLoader strings_;
    win32::unique_hmodule module_;
    win32::unique_handle scanner_;
};

}  // namespace velk::senders::testing
