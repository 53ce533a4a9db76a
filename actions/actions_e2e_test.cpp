// The whole path across two processes: the scanning-process stand-in sends
// its records to a window of this test, the receiver queues them, the worker
// carries them out on the message-store stand-in, and the .eml files show
// the headers the scanning process and the client's rules look for.
#include <windows.h>

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <string>
#include <vector>

#include "actions/actions_test_support.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

// Runs scanner_stub.exe on `script` against `target`; true when it sent every
// request (exit code 0). The child's standard streams are NUL (a Wine child holding the
// runner's pipes hangs the run); our window is pumped while it sends.
bool RunScanner(HWND target, const std::string& script) {
    const std::wstring scriptPath = TempPath(L"velk_actions_script");
    std::ofstream(scriptPath.c_str(), std::ios::binary) << script;
    SECURITY_ATTRIBUTES sa{sizeof sa, nullptr, TRUE};
    win32::unique_file nul(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, &sa, OPEN_EXISTING, 0,
                                         nullptr));
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul.get();
    const std::wstring exe = VELK_SCANNER_STUB_EXE;
    std::wstring line = L"\"" + exe + L"\" --hwnd " +
                        std::to_wstring(reinterpret_cast<UINT_PTR>(target)) + L" script \"" +
                        scriptPath + L"\"";
    PROCESS_INFORMATION pi{};
    EXPECT_TRUE(::CreateProcessW(exe.c_str(), &line[0], nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                                 nullptr, nullptr, &si, &pi));
    win32::unique_handle process(pi.hProcess), thread(pi.hThread);
    EXPECT_TRUE(
        WaitFor([&] { return ::WaitForSingleObject(pi.hProcess, 0) == WAIT_OBJECT_0; }, 60000));
    DWORD code = 0xDEAD;
    ::GetExitCodeProcess(pi.hProcess, &code);
    return code == 0;
}

using EndToEnd = StoreTest;

TEST_F(EndToEnd, RequestsFromTheScanningProcessChangeTheMessageFiles) {
    for (ULONG id : {7, 8, 9})
        store.PutMessage(1, id, Eml());
    store.PutMessage(2, 1, Eml());
    store.PutMessage(3, 1, Eml("x-nuvexa-antispamaddin-quarantinetime: 0\r\n"));
    store.PutMessage(3, 2, Eml("X-Nuvexa-AntispamAddin-Checked: 1\r\n"));
    store.PutMessage(3, 3, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 100\r\n"));
    store.PutMessage(4, 1, Eml("x-has-been-detected_normal: 0\r\n"));
    store.PutMessage(4, 2, Eml("X-Has-Been-Detected_Normal: 1\r\n"));
    store.Reset();
    ASSERT_TRUE(queue.Start());

    const auto before = static_cast<long long>(std::time(nullptr));
    ASSERT_TRUE(RunScanner(
        window.hwnd(),
        "move --src 1 --dst 2 --msg 7 --verdict 1 --quarantine 1 --option 1 "
        "--headers \"X-QZ-AS-Tagged-Subject: [SPAM] hello\\r\\nX-Spam-Score:  9\"\n"
        "clone --folder 1 --msg 8 --option 1 --headers \"X-Note: caf\\u00e9\\nno colon\"\n"
        "move --src 4 --dst 4 --msg 1 --verdict 2 --quarantine 0\n"
        "clone --folder 4 --msg 2\n"
        "delete --folder 1 --msg 9\n"
        "purge --folder 3\n"));

    // The purge ran inside its receipt, before the scanning process went on;
    // every quarantined message goes, whatever its stamp says.
    EXPECT_EQ((std::vector<ULONG>{2}), store.ListMessages(3));
    EXPECT_TRUE(
        log.Has("@@@ [CToolBarWnd::ProcDeleteAllMsg] Start deleting all spam mails "
                "inside folder..."));
    EXPECT_EQ(2, log.Count("@@@ [CToolBarWnd::ProcDeleteAllMsg] Spam mail deleted."));
    ASSERT_TRUE(WaitFor([&] {
        return Calls(L"DeleteMessage") == 1 && Calls(L"MoveMessage") == 1 && Calls(L"Commit") == 4;
    }));
    const auto after = static_cast<long long>(std::time(nullptr));
    EXPECT_FALSE(store.HasMessage(1, 9));
    EXPECT_FALSE(store.HasMessage(1, 7));
    EXPECT_EQ(2, Calls(L"PostProcess"));  // only the two requests with an option

    // The quarantine stamp: seconds since 1970 in decimal.
    std::string moved = store.ReadMessage(2, 2);
    const std::string stampName = "X-Nuvexa-AntispamAddin-QuarantineTime: ";
    const auto at = moved.find(stampName) + stampName.size();
    const auto end = moved.find("\r\n", at);
    ASSERT_LT(end, moved.size()) << moved;
    const std::string stamp = moved.substr(at, end - at);
    ASSERT_EQ(std::string::npos, stamp.find_first_not_of("0123456789")) << stamp;
    EXPECT_GE(std::stoll(stamp), before);
    EXPECT_LE(std::stoll(stamp), after);
    moved.replace(at, end - at, "T");

    const std::string head = "From: sender@example.com\r\nSubject: ";
    const std::string tail = "\r\nbody text\r\n";
    EXPECT_EQ(head +
                  "[SPAM] hello\r\nX-Spam-Score: 9\r\nx-has-been-detected_spam: 1\r\n"
                  "X-Nuvexa-AntispamAddin-Checked: 1\r\nx-has-been-checked: 1\r\n"
                  "X-Nuvexa-AntispamAddin-QuarantineTime: T\r\n" +
                  tail,
              moved);
    // The clone's non-ASCII value survived the trip through the ANSI page.
    EXPECT_EQ(head +
                  "hello\r\nX-Note: caf\xC3\xA9\r\nx-has-been-detected_normal: 1\r\n"
                  "x-has-been-checked: 1\r\nX-Nuvexa-AntispamAddin-Checked: 1\r\n" +
                  tail,
              store.ReadMessage(1, 8));
    // A marker of "0" counts as unset; one that is set is left alone.
    EXPECT_EQ(head +
                  "hello\r\nx-has-been-detected_normal: 1\r\n"
                  "X-Nuvexa-AntispamAddin-Checked: 1\r\nx-has-been-checked: 1\r\n" +
                  tail,
              store.ReadMessage(4, 1));
    EXPECT_EQ(head +
                  "hello\r\nX-Has-Been-Detected_Normal: 1\r\n"
                  "x-has-been-checked: 1\r\nX-Nuvexa-AntispamAddin-Checked: 1\r\n" +
                  tail,
              store.ReadMessage(4, 2));
}

}  // namespace
}  // namespace velk::actions
