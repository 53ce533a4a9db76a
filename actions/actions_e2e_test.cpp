// The whole path across two processes: the scanning-process stand-in sends
// its records to a window of this test, the receiver queues them, the worker
// carries them out on the message-store stand-in in its fixed order, and the
// .eml files show the headers the scanning process and the client's rules
// look for.
#include <windows.h>

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <future>
#include <string>
#include <vector>

#include "actions/actions_test_support.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

// Runs scanner_stub.exe on `script`; true when it sent every request (exit
// code 0). Its standard streams are NUL (a Wine child holding the runner's
// pipes hangs the run), and our window is pumped while it sends.
bool RunScanner(HWND target, const std::wstring& scriptPath, const std::string& script) {
    std::ofstream(scriptPath.c_str(), std::ios::binary) << script;
    const std::wstring command = L"\"\"" VELK_SCANNER_STUB_EXE L"\" --hwnd " +
                                 std::to_wstring(reinterpret_cast<UINT_PTR>(target)) +
                                 L" script \"" + scriptPath + L"\" <NUL >NUL 2>&1\"";
    auto exit = std::async(std::launch::async, [&] { return ::_wsystem(command.c_str()); });
    EXPECT_TRUE(
        WaitFor([&] { return exit.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
                60000));
    return exit.get() == 0;
}

using EndToEnd = StoreTest;

TEST_F(EndToEnd, RequestsFromTheScanningProcessChangeTheMessageFiles) {
    for (ULONG id : {7, 8, 9, 10})
        store.PutMessage(1, id, Eml());
    store.PutMessage(2, 1, Eml());
    store.PutMessage(3, 1, Eml("x-nuvexa-antispamaddin-quarantinetime: 0\r\n"));
    store.PutMessage(3, 2, Eml("X-Nuvexa-AntispamAddin-Checked: 1\r\n"));
    store.PutMessage(3, 3, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 100\r\n"));
    store.PutMessage(4, 1, Eml("x-has-been-detected_normal: 0\r\n"));
    store.PutMessage(4, 2, Eml("X-Has-Been-Detected_Normal: 1\r\n"));
    store.Reset();
    ASSERT_TRUE(queue.Start());
    // The worker is held in the store on a clone of our own while the
    // scanning process's requests arrive.
    ASSERT_EQ(S_OK, store.HoldCall(L"GetFolder"));
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 10));
    ASSERT_TRUE(store.WaitUntilHeld(10000));
    const auto before = static_cast<long long>(std::time(nullptr));
    ASSERT_TRUE(RunScanner(
        window.hwnd(), folder.path() + L"script.txt",
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
    EXPECT_EQ(2, Logged("@@@ [CToolBarWnd::ProcDeleteAllMsg] Spam mail deleted."));
    store.ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return Calls(L"DeleteMessage") == 1 && Calls(L"Commit") == 5; }));
    // The held clone's deque is drained first, then moves, then deletes.
    std::vector<std::wstring> order;
    for (const auto& line : store.JournalLines(STORE_STUB_JOURNAL_TARGET)) {
        if (line.rfind(L"GetMessage", 0) == 0 || line.rfind(L"DeleteMessage", 0) == 0)
            order.push_back(line);
    }
    EXPECT_EQ((std::vector<std::wstring>{L"GetMessage(10) @1", L"GetMessage(8) @1",
                                         L"GetMessage(2) @4", L"GetMessage(7) @1",
                                         L"GetMessage(1) @4", L"DeleteMessage(9, 1) @1"}),
              order);
    EXPECT_EQ(2, Calls(L"PostProcess"));  // only the two requests with an option

    // The quarantine stamp: seconds since 1970 in decimal.
    std::string moved = store.ReadMessage(2, 2);
    const std::string stampName = "X-Nuvexa-AntispamAddin-QuarantineTime: ";
    const auto at = moved.find(stampName) + stampName.size();
    const auto end = moved.find_first_not_of("0123456789", at);
    EXPECT_GE(std::stoll(moved.substr(at, end - at)), before);
    EXPECT_LE(std::stoll(moved.substr(at, end - at)), static_cast<long long>(std::time(nullptr)));
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
