// The folder operations against a store that fails: every call of each
// operation failing in turn, null interfaces and handles, and the store's
// method-table positions as the real server numbers them.
#include "actions/folder_msg_ops.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "actions/actions_test_support.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

class FolderOps : public StoreTest {
public:  // the operation table's steps reach in too
    void Run(const CloneMsgRequest& r) {
        queue.PushCloneRequest(r);
        ops().ProcCloneMsg();
    }
    void Run(const MoveMsgRequest& r) {
        queue.PushMoveRequest(r);
        ops().ProcMoveMsg();
    }
    void Run(const DeleteMsgRequest& r) {
        queue.PushDeleteRequest(r);
        ops().ProcDeleteMsg();
    }
    CFolderMsgOps& ops() { return queue.Operations(); }
};

TEST_F(FolderOps, NullInterfacesAndHandlesEndWithTheirOwnLines) {
    store.PutMessage(1, 7, Eml());
    store.CreateFolder(2);
    store.InjectNullOut(L"GetMessage", 1);
    Run(Clone(1, 7));
    store.InjectNullOut(L"GetBodyHandle", 1);
    Run(Move(1, 2, 7, 1, 1));
    store.InjectNullOut(L"GetFolder", 1);
    Run(Delete(1, 7));
    EXPECT_TRUE(log.Has("@@@ Error: Using spFolderMgr get message fail, spMessage is NULL."));
    EXPECT_TRUE(log.Has("@@@ Error: spMessage->GetBodyHandle return lHandle is 0."));
    EXPECT_TRUE(log.Has("@@@ Error: spFolder is NULL."));
    EXPECT_EQ(0, log.Count("Exception Catched"));
    // A move reported as done but without a new id is not done.
    store.InjectNullOut(L"MoveMessage", 1);
    Run(Move(1, 2, 7, 1, 1));
    EXPECT_TRUE(log.Has("!!! the action of move item is not complete"));
}

// Each operation with its request and what shows it did its work; every
// store call it makes is then made to fail, or to hand out null, in turn.
TEST_F(FolderOps, EveryStoreCallFailingInTurnIsSurvivedWithoutLeaksAndTheNextRequestWorks) {
    struct Operation {
        const char* name;
        const char* incomplete;
        std::function<void()> run;
        std::function<bool()> done;
    };
    const Operation operations[] = {
        {"ProcCloneMsg", "clone",
         [&] { Run(Clone(1, 7, L"X-QZ-AS-Tagged-Subject: T\r\nX-A: b", 1)); },
         [&] { return store.ReadMessage(1, 7).find("Subject: T\r\n") != std::string::npos; }},
        {"ProcMoveMsg", "move", [&] { Run(Move(1, 2, 7, 1, 1, L"X-QZ-AS-Tagged-Subject: M", 1)); },
         [&] { return !store.HasMessage(1, 7); }},
        {"ProcDeleteMsg", "delete", [&] { Run(Delete(1, 7)); },
         [&] { return !store.HasMessage(1, 7); }},
        {"ProcDeleteAllSpamMsg", "delete", [&] { ops().ProcDeleteAllSpamMsg(Delete(1, 0, true)); },
         [&] { return !store.HasMessage(1, 7); }},
    };
    const auto arrange = [&] {
        store.PutMessage(1, 7, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 5\r\n"));
        store.CreateFolder(2);
        store.Reset();
    };
    const std::string noStore = "@@@ Error: in oea spFolderMsg is NULL.";
    for (const Operation& op : operations) {
        SCOPED_TRACE(op.name);
        const std::string caught =
            std::string("Exception Catched in Function: CToolBarWnd::") + op.name;
        const std::string incomplete =
            std::string("!!! the action of ") + op.incomplete + " item is not complete";
        const std::string out = std::string("@@@ CToolBarWnd::") + op.name + "  OUT";
        arrange();
        op.run();
        ASSERT_TRUE(op.done()) << store.Journal();
        const auto clean = store.JournalLines();
        for (ULONG k = 1; k <= clean.size(); ++k) {
            for (ULONG kind : {STORE_STUB_FAULT_FAIL, STORE_STUB_FAULT_NULL_OUT}) {
                SCOPED_TRACE(::testing::Message() << clean[k - 1] << " kind " << kind);
                arrange();
                const int counts[] = {log.Count(caught), log.Count(incomplete), log.Count(noStore)};
                store.InjectFault(L"*", k, E_FAIL, kind);
                op.run();
                EXPECT_EQ(0u, store.PendingFaults());
                EXPECT_EQ(0, store.LiveObjects()) << store.DescribeLiveObjects();
                if (k == 1) {  // no store object at all: its own line
                    EXPECT_EQ(counts[2] + 1, log.Count(noStore));
                } else if (kind == STORE_STUB_FAULT_FAIL) {
                    EXPECT_EQ(counts[0] + 1, log.Count(caught));
                    EXPECT_EQ(counts[1] + 1, log.Count(incomplete));
                    EXPECT_EQ(k, store.JournalLines().size());  // never retried
                }
                arrange();
                const int outs = log.Count(out);
                op.run();
                EXPECT_EQ(outs + 1, log.Count(out));
                EXPECT_TRUE(op.done()) << store.Journal();
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
