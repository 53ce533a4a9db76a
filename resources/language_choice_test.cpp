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

#include <shellapi.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace velk::res {
namespace {

std::wstring Env(const wchar_t* name) {
    wchar_t value[64] = L"";
    ::GetEnvironmentVariableW(name, value, 64);
    return value;
}

const std::wstring kExpected = Env(L"VELK_EXPECTED_LANGUAGE");  // de-DE for de-AT

std::wstring Text(const wchar_t* key) {
    wchar_t text[512] = L"";
    ::GetPrivateProfileStringW(
        L"VELK_OE_AGENT", key, L"", text, 512,
        test::DistPath(L"Resource\\" + kExpected + L"\\StringTable.ini").c_str());
    return text;
}

std::wstring TextOf(HWND window) {
    wchar_t text[512] = L"";
    ::GetWindowTextW(window, text, 512);
    return text;
}

int Shell(UINT operation, const std::wstring& from, const std::wstring& to) {
    SHFILEOPSTRUCTW op{};
    op.wFunc = operation;
    op.pFrom = from.c_str();  // both double-terminated
    op.pTo = to.c_str();
    op.fFlags = FOF_NO_UI;
    return ::SHFileOperationW(&op);
}

bool WaitFor(const std::function<bool()>& done) {
    for (int i = 0; i < 500 && !done(); ++i)
        ::Sleep(20);
    return done();
}

TEST(LanguageChoice, TheSystemLanguagePicksItsFolderOrTheFallbackAndTheModuleThere) {
    ASSERT_FALSE(kExpected.empty());
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

struct Found {
    DWORD process;
    int id;
    HWND window;
};

// The window of `id` among the descendants (or, with `top`, the top-level
// windows) of the client process.
HWND FindInClient(DWORD process, int id, bool top) {
    Found found{process, id, nullptr};
    const WNDENUMPROC match = [](HWND window, LPARAM lp) -> BOOL {
        auto* f = reinterpret_cast<Found*>(lp);
        DWORD owner = 0;
        ::GetWindowThreadProcessId(window, &owner);
        if (owner == f->process && (f->id < 0 ? ::GetDlgItem(window, -f->id) != nullptr
                                              : ::GetDlgCtrlID(window) == f->id))
            f->window = window;
        return f->window == nullptr;
    };
    if (top)
        ::EnumWindows(match, reinterpret_cast<LPARAM>(&found));
    else
        ::EnumChildWindows(::FindWindowW(host::kClientMainWindowClass, nullptr), match,
                           reinterpret_cast<LPARAM>(&found));
    return found.window;
}

// From a private copy of the staged installation; the client inherits this
// process's locale.
TEST(LanguageChoice, TheAddinInTheClientShowsTheLanguageOnItsBandAndInItsAboutBox) {
    wchar_t temp[MAX_PATH] = L"";
    ::GetTempPathW(MAX_PATH, temp);
    const std::wstring root = std::wstring(temp) + L"velk_language_" + kExpected;
    const std::wstring from = test::DistPath(L"*") + L'\0', to = root + L'\0';
    ASSERT_EQ(0, Shell(FO_COPY, from, to));
    std::wstring command = std::wstring(L"\"") + VELK_MAIL_CLIENT_STUB_EXE +
                           L"\" --identity {velk-language} --exit-after 60000 --addin \"" + root +
                           L"\\bin\\VELK_OEA.dll\"";
    STARTUPINFOW si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(::CreateProcessW(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                 &si, &pi));
    win32::unique_handle client(pi.hProcess), thread(pi.hThread);

    HWND spam = nullptr, about = nullptr;
    EXPECT_TRUE(WaitFor([&] { return (spam = FindInClient(pi.dwProcessId, ID_TB_REPORT_SPAM, false)); }));
    EXPECT_EQ(Text(L"IDS_RPTSPAM_CAPTION"), TextOf(spam));
    EXPECT_EQ(Text(L"IDS_RPTFP_CAPTION"),
              TextOf(::GetDlgItem(::GetParent(spam), ID_TB_REPORT_FP)));
    ::PostMessageW(::GetParent(spam), WM_COMMAND, ID_MENU_ABOUT, 0);
    EXPECT_TRUE(WaitFor([&] { return (about = FindInClient(pi.dwProcessId, -IDC_ABOUT_ENGINE_LABEL, true)); }));
    const std::wstring title = Text(L"IDD_ABOUT_IDC_STATIC_TITLE");
    EXPECT_EQ(title.substr(0, title.find(L"<$")), TextOf(about).substr(0, title.find(L"<$")));
    EXPECT_EQ(Text(L"IDS_ABOUT_ENGINE_LABEL"), TextOf(::GetDlgItem(about, IDC_ABOUT_ENGINE_LABEL)));

    ::PostMessageW(about, WM_COMMAND, IDOK, 0);
    ::PostMessageW(::FindWindowW(host::kClientMainWindowClass, nullptr), WM_CLOSE, 0, 0);
    if (::WaitForSingleObject(client.get(), 20000) != WAIT_OBJECT_0)
        ::TerminateProcess(client.get(), 1);
    Shell(FO_DELETE, to, std::wstring(2, L'\0'));
}

}  // namespace
}  // namespace velk::res
