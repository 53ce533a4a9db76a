// The whole path across two processes: the scanning-process stand-in sends
// its records to a window of this test, the receiver queues them, the worker
// carries them out on the message-store stand-in, and the .eml files show it.
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

// Runs scanner_stub.exe on `script` against `target` and returns its report
// lines. The child's standard streams are NUL (a Wine child holding the
// runner's pipes hangs the run); our window is pumped while it sends.
std::vector<std::string> RunScanner(HWND target, const std::string& script) {
    const std::wstring scriptPath = TempPath(L"velk_actions_script"),
                       reportPath = TempPath(L"velk_actions_report");
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
                        std::to_wstring(reinterpret_cast<UINT_PTR>(target)) + L" --report \"" +
                        reportPath + L"\" script \"" + scriptPath + L"\"";
    PROCESS_INFORMATION pi{};
    EXPECT_TRUE(::CreateProcessW(exe.c_str(), &line[0], nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                                 nullptr, nullptr, &si, &pi));
    win32::unique_handle process(pi.hProcess), thread(pi.hThread);
    EXPECT_TRUE(
        WaitFor([&] { return ::WaitForSingleObject(pi.hProcess, 0) == WAIT_OBJECT_0; }, 60000));
    DWORD code = 0xDEAD;
    ::GetExitCodeProcess(pi.hProcess, &code);
    EXPECT_EQ(0u, code);
    std::ifstream in(reportPath.c_str(), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string l; std::getline(in, l);)
        lines.push_back(l);
    return lines;
}

class EndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(store.Setup()) << "store stand-in not available";
        window.set_queue(&queue);
        ASSERT_TRUE(queue.Start());
    }
    void TearDown() override {
        ::Sleep(200);
        EXPECT_TRUE(queue.Stop());
        EXPECT_EQ(0, store->LiveObjects()) << Narrow(store->DescribeLiveObjects());
    }
    // The journal's calls on one target ("1/7" a message), in order.
    std::vector<std::wstring> CallsOn(const std::wstring& target) {
        std::vector<std::wstring> calls;
        const std::wstring tail = L" @" + target;
        for (const auto& line : store->JournalLines(STORE_STUB_JOURNAL_TARGET)) {
            if (line.size() > tail.size() &&
                line.compare(line.size() - tail.size(), tail.size(), tail) == 0)
                calls.push_back(line.substr(0, line.size() - tail.size()));
        }
        return calls;
    }

    win32::com_apartment apartment;
    LogCapture log;
    StoreFixture store;
    ReceiverWindow window{L"VelkActionsE2EWnd"};
    CMsgActionQueue queue{window.lock()};
};

TEST_F(EndToEnd, RequestsFromTheScanningProcessChangeTheMessageFiles) {
    for (ULONG id : {7, 8, 9})
        store->PutMessage(1, id, Eml());
    store->PutMessage(2, 1, Eml());
    store->PutMessage(3, 1, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 100\r\n"));
    store->PutMessage(3, 2, Eml("X-Nuvexa-AntispamAddin-Checked: 1\r\n"));
    store->Reset();

    const auto report = RunScanner(
        window.hwnd(),
        "move --src 1 --dst 2 --msg 7 --verdict 1 --quarantine 1 "
        "--headers \"X-QZ-AS-Tagged-Subject: [SPAM] hello\\r\\nX-Spam-Score:  9\"\n"
        "clone --folder 1 --msg 8 --option 1 --headers \"X-Note: caf\\u00e9\\nno colon\"\n"
        "delete --folder 1 --msg 9\n"
        "purge --folder 3\n");
    ASSERT_EQ(5u, report.size());  // four sends and the summary
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NE(std::string::npos, report[i].find("result=0"));
    const auto now = static_cast<long long>(std::time(nullptr));

    // The purge ran inside its receipt, before the scanning process went on.
    EXPECT_EQ((std::vector<ULONG>{2}), store->ListMessages(3));
    ASSERT_TRUE(WaitFor([&] {
        return store.Calls(L"DeleteMessage") == 1 && store.Calls(L"MoveMessage") == 1 &&
               store.Calls(L"Commit") == 2;
    }));

    const auto moveCalls = CallsOn(L"1/7");
    ASSERT_GE(moveCalls.size(), 6u) << Narrow(store->Journal(STORE_STUB_JOURNAL_TARGET));
    EXPECT_EQ(
        (std::vector<std::wstring>{
            L"GetBodyHandle(0, 0)", L"SetPropById(5, [SPAM] hello)", L"SetHeader(X-Spam-Score, 9)",
            L"SetHeader(x-has-been-detected_spam, 1)",
            L"SetHeader(X-Nuvexa-AntispamAddin-Checked, 1)", L"SetHeader(x-has-been-checked, 1)"}),
        std::vector<std::wstring>(moveCalls.begin(), moveCalls.begin() + 6));
    EXPECT_FALSE(store->HasMessage(1, 7));
    const std::string moved = store->ReadMessage(2, 2);
    EXPECT_NE(std::string::npos, moved.find("Subject: [SPAM] hello\r\n")) << moved;
    const std::string stampName = "X-Nuvexa-AntispamAddin-QuarantineTime: ";
    const auto at = moved.find(stampName);
    ASSERT_NE(std::string::npos, at) << moved;
    EXPECT_LE(std::llabs(now - std::stoll(moved.substr(at + stampName.size()))), 30) << moved;

    // The clone stays in place; its non-ASCII value survived the ANSI trip.
    const std::string cloned = store->ReadMessage(1, 8);
    EXPECT_NE(std::string::npos, cloned.find("X-Note: caf\xC3\xA9\r\n")) << cloned;
    EXPECT_NE(std::string::npos, cloned.find("Subject: hello\r\n")) << cloned;
    EXPECT_NE(std::string::npos, cloned.find("x-has-been-detected_normal: 1\r\n")) << cloned;
    EXPECT_EQ(1, store.Calls(L"PostProcess"));
    EXPECT_FALSE(store->HasMessage(1, 9));
}

}  // namespace
}  // namespace velk::actions
