// What the Wine tests of the settings windows stand on: the staged language
// module and string table, a private installation and user folder, the
// scanning process's stand-in listening, a script that drives a modal
// window from a timer while its message loop runs.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/modal_script.h"
#include "common_src/win32/ui_context.h"
#include "demo/driver/child_process.h"

namespace velk::settings_ui::test {

// The settings windows' tests drive them from their own modal loop; a step
// that does not finish within 10 s ends the run and fails the test.
class Script : public win32::ModalScript {
public:
    Script();
    bool Run(const std::function<void()>& modal);
};

// A top-level dialog of this thread by caption; null when none.
HWND FindDialog(const std::wstring& caption);
// The first window below `root` with control id `id`.
HWND FindDescendant(HWND root, int id);
std::wstring TextOf(HWND window);
// Clicks button `id` of `dialog` as the user would and answers the message
// box it shows with `answer`: "caption|text" of that box, "" when none came.
std::wstring ClickAnswering(HWND dialog, int id, int answer = IDOK);

// A value of the engine installation's registry key; RemoveEngineKey takes
// the key away again.
void SetEngineValue(const wchar_t* name, const std::wstring& value);
void RemoveEngineKey();

class SheetWorld {
public:
    // With `counters`, lines of [Statistics], the stand-in keeps its
    // counters in the user's settings file, starting from those.
    explicit SheetWorld(const std::string& counters = std::string());
    ~SheetWorld();

    win32::UiContext& ui() { return ui_; }

    void WriteUserIni(const std::string& text) const;
    std::string ReadUserIni() const;
    // The value, or "<none>" when the key is absent.
    std::wstring UserValue(const wchar_t* section, const wchar_t* key) const;
    void SetUser(const wchar_t* section, const wchar_t* key, const std::wstring& value) const {
        ::WritePrivateProfileStringW(section, key, value.c_str(), ui_.where.user_ini.c_str());
    }
    void SetInstall(const wchar_t* section, const wchar_t* key, const std::wstring& value) const {
        ::WritePrivateProfileStringW(section, key, value.c_str(), ui_.where.install_ini.c_str());
    }

    // The private messages the scanning-process stand-in received since the
    // last call ("posted WM_USER+12 ..." lines).
    std::vector<std::string> HeardSinceLastAsk();

    // The caption of the sheet.
    std::wstring SheetCaption() const { return ui_.Text(L"IDS_STRING_FILTERING_SHEET"); }

private:
    std::wstring root_;
    std::wstring heard_;
    QzResourceStringLoader strings_;
    win32::unique_hmodule module_;
    win32::UiContext ui_;
    demo::ChildProcess scanner_;
    std::size_t heard_offset_ = 0;
    unsigned fence_ = 0;
};

}  // namespace velk::settings_ui::test
