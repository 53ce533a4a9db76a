// The language the add-in takes on a system of the language this program
// runs as (ctest starts it once per locale, with the folder it must end in):
// the folder its loader picks in the staged tree, and the add-in inside the
// mail-client stand-in showing that language on its band and in its About
// box.
#include "common_src/win32/ResourceHandle.h"
#include "common_src/win32/handles.h"
#include "host/window_identifiers.h"
#include "resources/resource_ids.h"
#include "resources/resources_test_util.h"
#include "settings_ui/dialog_ids.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace velk::res {
namespace {

std::wstring Env(const wchar_t* name) {
    wchar_t value[64] = L"";
    ::GetEnvironmentVariableW(name, value, 64);
    return value;
}

const std::wstring kExpected = Env(L"VELK_EXPECTED_LANGUAGE");  // de-DE for de-AT

// A text of the expected language's table; a window's text.
std::wstring Text(const wchar_t* key, HWND window = nullptr) {
    wchar_t text[512] = L"";
    if (window != nullptr)
        ::GetWindowTextW(window, text, 512);
    else
        ::GetPrivateProfileStringW(
            L"VELK_OE_AGENT", key, L"", text, 512,
            test::DistPath(L"Resource\\" + kExpected + L"\\StringTable.ini").c_str());
    return text;
}

TEST(LanguageChoice, TheSystemLanguagePicksItsFolderOrTheFallbackAndTheModuleThere) {
    // The locale reached Wine: the system speaks the language asked for.
    EXPECT_EQ(wcstoul(Env(L"VELK_SYSTEM_LANGID").c_str(), nullptr, 16), ::GetSystemDefaultLangID());
    QzLanguageEnvironment environment;
    environment.resourceRoot = test::DistPath(L"Resource\\");
    ResourceHandle module(environment);
    const std::wstring folder = module.GetResourceFolder();
    EXPECT_EQ(0, _wcsicmp((environment.resourceRoot + kExpected + L"\\").c_str(), folder.c_str()))
        << folder;
    EXPECT_TRUE(module.Load(folder));
}

BOOL CALLBACK MatchId(HWND window, LPARAM lp) {
    auto* found = reinterpret_cast<std::pair<int, HWND>*>(lp);
    if (::GetDlgCtrlID(window) == found->first && ::IsWindowVisible(window))
        found->second = window;
    return found->second == nullptr;
}

// Control `id` among the windows of the client's thread, waited for until
// it shows (a dialog shows once it has set its texts).
HWND FindControl(DWORD thread, int id) {
    std::pair<int, HWND> found{id, nullptr};
    for (int i = 0; i < 500 && found.second == nullptr; ++i, ::Sleep(20)) {
        ::EnumThreadWindows(
            thread,
            [](HWND top, LPARAM lp) -> BOOL {
                ::EnumChildWindows(top, MatchId, lp);
                return reinterpret_cast<std::pair<int, HWND>*>(lp)->second == nullptr;
            },
            reinterpret_cast<LPARAM>(&found));
    }
    return found.second;
}

// The client inherits this process's locale.
TEST(LanguageChoice, TheAddinInTheClientShowsTheLanguageOnItsBandAndInItsAboutBox) {
    std::wstring command = std::wstring(L"\"") + VELK_MAIL_CLIENT_STUB_EXE +
                           L"\" --identity {velk-language} --exit-after 60000 --addin \"" +
                           test::DistPath(L"bin\\VELK_OEA.dll") + L"\"";
    STARTUPINFOW si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(::CreateProcessW(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                 &si, &pi));
    win32::unique_handle client(pi.hProcess), thread(pi.hThread);
    HWND spam = FindControl(pi.dwThreadId, ID_TB_REPORT_SPAM), band = ::GetParent(spam);
    // The band's template: a borderless child the keyboard tabs through.
    EXPECT_EQ(WS_CHILD, ::GetWindowLongW(band, GWL_STYLE) &
                            (WS_CHILD | WS_POPUP | WS_CAPTION | WS_BORDER | WS_THICKFRAME));
    EXPECT_TRUE(::GetWindowLongW(band, GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
    EXPECT_EQ(Text(L"IDS_RPTSPAM_CAPTION"), Text(nullptr, spam));
    EXPECT_EQ(Text(L"IDS_RPTFP_CAPTION"), Text(nullptr, ::GetDlgItem(band, ID_TB_REPORT_FP)));

    ::PostMessageW(band, WM_COMMAND, ID_MENU_ABOUT, 0);
    HWND engine = FindControl(pi.dwThreadId, IDC_ABOUT_ENGINE_LABEL);
    EXPECT_EQ(Text(L"IDS_ABOUT_ENGINE_LABEL"), Text(nullptr, engine));
    const std::wstring title = Text(L"IDD_ABOUT_IDC_STATIC_TITLE");
    EXPECT_EQ(title.substr(0, title.find(L"<$")),
              Text(nullptr, ::GetParent(engine)).substr(0, title.find(L"<$")));

    ::PostMessageW(::GetParent(engine), WM_COMMAND, IDOK, 0);
    ::PostMessageW(::FindWindowW(host::kClientMainWindowClass, nullptr), WM_CLOSE, 0, 0);
    if (::WaitForSingleObject(client.get(), 20000) != WAIT_OBJECT_0)
        ::TerminateProcess(client.get(), 1);
}

}  // namespace
}  // namespace velk::res
