// What the Wine tests of the settings dialogs share: an installation and a
// user folder of their own, the real language module and string table, the
// scanning-process stand-in listening, the diagnostic log in a file, and
// helpers to press buttons and answer message boxes.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"

namespace velk::settings_ui::testing {

std::string ReadAll(const std::wstring& path);
std::size_t CountOf(const std::string& text, const std::string& what);
// Polls `done` for up to `ms`, pumping this thread's messages meanwhile.
bool WaitFor(const std::function<bool()>& done, DWORD ms = 5000);
std::wstring TextOf(HWND window);
// A click as the user makes it: the control's own button handling, then
// the notification to its dialog.
void Click(HWND dialog, int id);

// Answers each message box this thread shows with OK, keeping what it said.
class MessageBoxAnswerer {
public:
    MessageBoxAnswerer();
    ~MessageBoxAnswerer();
    struct Box {
        std::wstring caption;
        std::wstring text;
    };
    std::vector<Box> boxes;

private:
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD);
    UINT_PTR timer_;
};

class DialogsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    std::wstring UserIni() const { return ui_.where.user_ini; }
    std::wstring InstallIni() const { return ui_.where.install_ini; }
    void SetUser(const wchar_t* section, const wchar_t* key, const std::wstring& value);
    void SetInstall(const wchar_t* section, const wchar_t* key, const std::wstring& value);
    // The value, or "<none>" when the key is absent.
    std::wstring User(const wchar_t* section, const wchar_t* key) const;
    std::string UserFile() const;

    // The scanning-process stand-in; StopScanner waits until it has written
    // everything it received.
    void StartScanner();
    void StopScanner();
    std::string Heard() const { return ReadAll(heard_); }
    bool HeardLine(const std::string& line) {
        return WaitFor([&] { return Heard().find(line) != std::string::npos; });
    }

    std::string LogText() const;

    // A top-level window playing the mail client's main window.
    HWND ClientWindow();

    QzCommon::testing_util::TempFolder temp_;
    win32::UiContext ui_;
    std::wstring heard_;
    std::wstring log_base_;
    win32::unique_handle scanner_;
    win32::unique_file nul_;
    win32::unique_hwnd client_;

    static HMODULE language_module_;
    static QzResourceStringLoader* strings_;
};

}  // namespace velk::settings_ui::testing
