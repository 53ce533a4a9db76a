// The folder operations against a store that fails, and the store's
// method-table positions as the real server numbers them.
#include "actions/folder_msg_ops.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "actions/actions_test_support.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

using FolderOps = StoreTest;

// Each operation, with every store call it makes failing, or handing out
// null, in turn: never retried, no leaks, and its own lines in the log.
TEST_F(FolderOps, EveryStoreCallFailingInTurnIsSurvivedWithoutLeaks) {
    CFolderMsgOps& ops = queue.Operations();
    const std::tuple<std::string, std::string, std::function<void()>> operations[] = {
        {"ProcCloneMsg", "clone",
         [&] {
             queue.PushCloneRequest(Clone(1, 7, L"X-QZ-AS-Tagged-Subject: T\r\nX-A: b", 1));
             ops.ProcCloneMsg();
         }},
        {"ProcMoveMsg", "move",
         [&] {
             queue.PushMoveRequest(Move(1, 2, 7, 1, 1, L"X-QZ-AS-Tagged-Subject: M", 1));
             ops.ProcMoveMsg();
         }},
        {"ProcDeleteMsg", "delete",
         [&] {
             queue.PushDeleteRequest(Delete(1, 7));
             ops.ProcDeleteMsg();
         }},
        {"ProcDeleteAllSpamMsg", "delete", [&] { ops.ProcDeleteAllSpamMsg(Delete(1, 0, true)); }},
    };
    const auto arrange = [&] {
        store.PutMessage(1, 7, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 5\r\n"));
        store.CreateFolder(2);
        store.Reset();
    };
    // Null where the operation can tell: a folder, and a move's new id.
    arrange();
    store.InjectNullOut(L"GetFolder", 1);
    std::get<2>(operations[2])();
    EXPECT_EQ(1, Logged("@@@ Error: spFolder is NULL."));
    store.InjectNullOut(L"MoveMessage", 1);
    std::get<2>(operations[1])();
    EXPECT_EQ(1, Logged("!!! the action of move item is not complete"));
    const std::string noStore = "@@@ Error: in oea spFolderMsg is NULL.";
    for (const auto& [name, what, run] : operations) {
        SCOPED_TRACE(name);
        const std::string caught = "@@@ Exception Catched in Function: CToolBarWnd::" + name;
        const std::string incomplete = "!!! the action of " + what + " item is not complete";
        arrange();
        run();
        ASSERT_EQ(1, Logged("@@@ CToolBarWnd::" + name + "  OUT"));
        const auto clean = store.JournalLines();
        for (ULONG k = 1; k <= clean.size(); ++k) {
            for (ULONG kind : {STORE_STUB_FAULT_FAIL, STORE_STUB_FAULT_NULL_OUT}) {
                SCOPED_TRACE(::testing::Message() << clean[k - 1] << " kind " << kind);
                arrange();
                const int counts[] = {Logged(caught), Logged(incomplete), Logged(noStore)};
                store.InjectFault(L"*", k, E_FAIL, kind);
                run();
                EXPECT_EQ(0u, store.PendingFaults());
                EXPECT_EQ(0, store.LiveObjects()) << store.DescribeLiveObjects();
                if (k == 1) {  // no store object at all: its own line
                    EXPECT_EQ(counts[2] + 1, Logged(noStore));
                } else if (kind == STORE_STUB_FAULT_FAIL) {
                    EXPECT_EQ(counts[0] + 1, Logged(caught));
                    EXPECT_EQ(counts[1] + 1, Logged(incomplete));
                    EXPECT_EQ(k, store.JournalLines().size());
                }
            }
        }
    }
    EXPECT_EQ(0u, store.ContractViolations()) << store.Journal();
}

// Calls method `slot` of `object`'s table (IUnknown's three counted from 0),
// without the interface header the add-in and the stand-in share: a header
// that shifts a slot makes both agree with each other and not with the
// real server. The identifiers are spelt out here for the same reason.
constexpr CLSID kStoreClass = {
    0x6E3B9A14, 0x0C57, 0x4D2E, {0xB8, 0xF1, 0x93, 0xA2, 0xC5, 0xD7, 0xE0, 0x48}};
constexpr IID kFolderMgr = {
    0x6E3B9A38, 0x0C57, 0x4D2E, {0xB8, 0xF1, 0x93, 0xA2, 0xC5, 0xD7, 0xE0, 0x48}};

template <class... Args>
HRESULT Slot(void* object, int slot, Args... args) {
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*, Args...);
    return reinterpret_cast<Method>((*static_cast<void***>(object))[slot])(object, args...);
}

TEST_F(FolderOps, EveryStoreMethodAnswersAtTheSlotOfTheRealServer) {
    store.PutMessage(1, 7, Eml());
    store.PutMessage(1, 8, Eml());
    store.CreateFolder(2);
    store.Reset();
    win32::com_ptr<IUnknown> mgr, folder, first, next, msg;
    ASSERT_EQ(S_OK, ::CoCreateInstance(kStoreClass, nullptr, CLSCTX_INPROC_SERVER, kFolderMgr,
                                       mgr.put_void()));
    ASSERT_EQ(S_OK, Slot(mgr.get(), 13, ULONG(1), folder.put()));
    ASSERT_EQ(S_OK, Slot(folder.get(), 10, first.put()));
    ASSERT_EQ(S_OK, Slot(folder.get(), 11, next.put()));
    ASSERT_EQ(S_OK, Slot(folder.get(), 12, ULONG(7), msg.put()));
    ULONG ignored = 0, body = 0;
    BYTE found = 0;
    win32::unique_bstr text, name(::SysAllocString(L"X-A")), value(::SysAllocString(L"1"));
    EXPECT_EQ(S_OK, Slot(msg.get(), 16, &ignored));
    EXPECT_EQ(S_OK, Slot(msg.get(), 21, text.put()));
    EXPECT_EQ(S_OK, Slot(msg.get(), 32, ULONG(0), ULONG(0), &body));
    EXPECT_EQ(S_OK, Slot(msg.get(), 47, body, ULONG(5), value.get(), &ignored));
    EXPECT_EQ(S_OK, Slot(msg.get(), 48, body, name.get(), value.get(), &ignored));
    EXPECT_EQ(S_OK, Slot(msg.get(), 49, body, name.get(), &found, text.put()));
    EXPECT_EQ(S_OK, Slot(msg.get(), 53, &ignored));
    EXPECT_EQ(S_OK, Slot(msg.get(), 17, ULONG(1)));
    EXPECT_EQ(S_OK, Slot(folder.get(), 14, ULONG(8), ULONG(1), &ignored));
    store.PutMessage(1, 9, Eml());
    EXPECT_EQ(S_OK, Slot(mgr.get(), 22, ULONG(1), ULONG(2), ULONG(9), &ignored));

    std::vector<std::wstring> called;
    for (const std::wstring& line : store.JournalLines())
        called.push_back(line.substr(0, line.find(L'(')));
    EXPECT_EQ(
        (std::vector<std::wstring>{
            L"CreateInstance", L"GetFolder", L"GetFirstMessage", L"GetNextMessage", L"GetMessage",
            L"PostProcess", L"GetHeaderText", L"GetBodyHandle", L"SetPropById", L"SetHeader",
            L"QueryHeader", L"Commit", L"Delete", L"DeleteMessage", L"MoveMessage"}),
        called);
    EXPECT_EQ(0u, store.ContractViolations());
}

}  // namespace
}  // namespace velk::actions
