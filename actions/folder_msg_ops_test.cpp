#include "actions/folder_msg_ops.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "actions/actions_test_support.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;
using Lines = std::vector<std::wstring>;

class FolderOps : public ::testing::Test {
public:  // the fault table's steps reach in too
    void SetUp() override { ASSERT_TRUE(store.Setup()) << "store stand-in not available"; }
    void TearDown() override {
        store->ClearFaults();
        EXPECT_EQ(0, store->LiveObjects()) << Narrow(store->DescribeLiveObjects());
        EXPECT_EQ(0u, store->ContractViolations()) << Narrow(store->Journal());
    }
    int Run(const CloneMsgRequest& r) {
        return queues.m_ovMsgCopyDataForClone.Push(r), ops.ProcCloneMsg();
    }
    int Run(const MoveMsgRequest& r) {
        return queues.m_ovMsgCopyDataForMove.Push(r), ops.ProcMoveMsg();
    }
    int Run(const DeleteMsgRequest& r) {
        return queues.m_ovMsgCopyDataForDelete.Push(r), ops.ProcDeleteMsg();
    }
    bool FileHas(ULONG folder, ULONG msg, const std::string& text) {
        return store->ReadMessage(folder, msg).find(text) != std::string::npos;
    }

    win32::com_apartment apartment;
    LogCapture log;
    StoreFixture store;
    CMsgRequestQueues queues;
    CFolderMsgOps ops{queues};
};

TEST_F(FolderOps, CloneWritesRequestLinesThenMarkersInItsOrderAndCommitsLast) {
    store->PutMessage(1, 7, Eml());
    store->Reset();
    EXPECT_EQ(0, Run(Clone(1, 7,
                           L"X-Spam-Score:   7\r\nX-QZ-AS-Tagged-Subject: [SPAM] hello\r\n"
                           L"no colon here\n\nX-Flag:on",
                           /*option=*/1)));
    EXPECT_EQ(
        (Lines{L"CreateInstance(IQzFolderMgr)", L"GetFolder(1)", L"GetMessage(7)",
               L"GetBodyHandle(0, 0)", L"SetHeader(X-Spam-Score, 7)",
               L"SetPropById(5, [SPAM] hello)", L"SetHeader(X-Flag, on)", L"GetBodyHandle(0, 0)",
               L"QueryHeader(x-has-been-detected_normal)",
               L"SetHeader(x-has-been-detected_normal, 1)", L"SetHeader(x-has-been-checked, 1)",
               L"SetHeader(X-Nuvexa-AntispamAddin-Checked, 1)", L"PostProcess()", L"Commit()"}),
        store->JournalLines());
    EXPECT_TRUE(FileHas(1, 7, "Subject: [SPAM] hello\r\n"));
    EXPECT_FALSE(FileHas(1, 7, "X-QZ-AS-Tagged-Subject"));
    EXPECT_TRUE(log.Has("@@@ CToolBarWnd::ProcCloneMsg  IN"));
    EXPECT_TRUE(log.Has("@@@ CheckPropertyExist  OUT"));
    EXPECT_TRUE(log.Has("@@@ CToolBarWnd::ProcCloneMsg  OUT"));
    // Nothing queued: 1 at once, the store untouched.
    store->Reset();
    EXPECT_EQ(1, ops.ProcCloneMsg());
    EXPECT_EQ(1, ops.ProcMoveMsg());
    EXPECT_EQ(1, ops.ProcDeleteMsg());
    EXPECT_TRUE(store->JournalLines().empty());
}

TEST_F(FolderOps, DetectedNormalIsWrittenOnlyWhenAbsentOrZero) {
    store->PutMessage(1, 1, Eml());
    store->PutMessage(1, 2, Eml("x-has-been-detected_normal: 0\r\n"));
    store->PutMessage(1, 3, Eml("X-Has-Been-Detected_Normal: 1\r\n"));
    for (ULONG msg : {1u, 2u, 3u}) {
        store->Reset();
        EXPECT_EQ(0, Run(Clone(1, msg)));
        EXPECT_EQ(msg == 3 ? 0 : 1, store.Calls(L"SetHeader(x-has-been-detected_normal, 1)"))
            << msg;
    }
    EXPECT_TRUE(FileHas(1, 2, "x-has-been-detected_normal: 1"));
    EXPECT_EQ(0, store.Calls(L"PostProcess"));  // no option, no post-processing
}

TEST_F(FolderOps, MoveWritesMarkersInReverseOrderStampsTheTimeCommitsThenMoves) {
    store->PutMessage(1, 7, Eml());
    store->PutMessage(2, 4, Eml());
    store->Reset();
    const auto before = static_cast<long long>(std::time(nullptr));
    EXPECT_EQ(0, Run(Move(1, 2, 7, /*verdict=*/1, /*quarantine=*/1, L"X-QZ-AS-Tagged-Subject: S",
                          /*option=*/1)));
    const auto after = static_cast<long long>(std::time(nullptr));

    Lines journal = store->JournalLines();
    ASSERT_EQ(12u, journal.size()) << Narrow(store->Journal());
    const std::wstring stamp = L"SetHeader(X-Nuvexa-AntispamAddin-QuarantineTime, ";
    ASSERT_EQ(0u, journal[8].rfind(stamp, 0)) << Narrow(journal[8]);
    const long long stamped = std::stoll(journal[8].substr(stamp.size()));
    EXPECT_GE(stamped, before);
    EXPECT_LE(stamped, after);
    journal[8] = L"(stamp)";
    EXPECT_EQ(
        (Lines{L"CreateInstance(IQzFolderMgr)", L"GetFolder(1)", L"GetMessage(7)",
               L"GetBodyHandle(0, 0)", L"SetPropById(5, S)",
               L"SetHeader(x-has-been-detected_spam, 1)",
               L"SetHeader(X-Nuvexa-AntispamAddin-Checked, 1)", L"SetHeader(x-has-been-checked, 1)",
               L"(stamp)", L"PostProcess()", L"Commit()", L"MoveMessage(1, 2, 7)"}),
        journal);
    EXPECT_FALSE(store->HasMessage(1, 7));
    EXPECT_TRUE(FileHas(2, 5, "X-Nuvexa-AntispamAddin-QuarantineTime: "));
    EXPECT_TRUE(FileHas(2, 5, "Subject: S\r\n"));
}

TEST_F(FolderOps, MoveVerdictQuarantineFlagAndSameFolderVariants) {
    store->PutMessage(3, 1, Eml());
    store->Reset();
    // Normal mail, no stamp, same folder: headers written, nothing moved.
    EXPECT_EQ(0, Run(Move(3, 3, 1, /*verdict=*/2, /*quarantine=*/0)));
    EXPECT_EQ(1, store.Calls(L"SetHeader(x-has-been-detected_normal, 1)"));
    EXPECT_EQ(3, store.Calls(L"SetHeader("));
    EXPECT_EQ(0, store.Calls(L"MoveMessage"));
    EXPECT_TRUE(FileHas(3, 1, "x-has-been-checked: 1"));
    // An unknown verdict writes no verdict header at all.
    store->Reset();
    EXPECT_EQ(0, Run(Move(3, 3, 1, /*verdict=*/7, /*quarantine=*/0)));
    EXPECT_EQ(0, store.Calls(L"QueryHeader"));
    EXPECT_EQ(2, store.Calls(L"SetHeader("));
}

TEST_F(FolderOps, DeleteRemovesOneMessageAndRefusesAnAllSpamRecord) {
    store->PutMessage(1, 7, Eml());
    store->PutMessage(1, 8, Eml());
    store->Reset();
    EXPECT_EQ(0, Run(Delete(1, 7)));
    EXPECT_EQ((Lines{L"CreateInstance(IQzFolderMgr)", L"GetFolder(1)", L"DeleteMessage(7, 1)"}),
              store->JournalLines());
    EXPECT_EQ((std::vector<ULONG>{8}), store->ListMessages(1));

    store->Reset();
    Run(Delete(1, 8, /*allSpam=*/true));
    EXPECT_TRUE(store->JournalLines().empty());
    EXPECT_TRUE(
        log.Has("@@@ [CToolBarWnd::ProcDeleteMsg] Error: This function cannot process "
                "deleting all mails!!"));
}

TEST_F(FolderOps, PurgeDeletesEveryQuarantinedMessageAndKeepsTheRest) {
    store->PutMessage(5, 1, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 1700000000\r\n"));
    store->PutMessage(5, 2, Eml("X-Nuvexa-AntispamAddin-Checked: 1\r\n"));
    store->PutMessage(5, 3, Eml("x-nuvexa-antispamaddin-quarantinetime: 0\r\n"));
    store->PutMessage(5, 4, Eml());
    store->Reset();
    EXPECT_EQ(1, ops.ProcDeleteAllSpamMsg(Delete(5, 0, /*allSpam=*/true)));
    EXPECT_EQ((std::vector<ULONG>{2, 4}), store->ListMessages(5));
    EXPECT_EQ(2, log.Count("@@@ [CToolBarWnd::ProcDeleteAllMsg] Spam mail deleted."));
    EXPECT_TRUE(
        log.Has("@@@ [CToolBarWnd::ProcDeleteAllMsg] Start deleting all spam mails "
                "inside folder..."));

    store->Reset();
    EXPECT_EQ(0, ops.ProcDeleteAllSpamMsg(Delete(5, 2)));
    EXPECT_TRUE(store->JournalLines().empty());
    EXPECT_TRUE(
        log.Has("@@@ [CToolBarWnd::ProcDeleteAllMsg] Error: This function cannot "
                "process deleting only one mail!!"));
}

TEST_F(FolderOps, NullInterfacesAndHandlesEndWithTheirOwnLines) {
    store->PutMessage(1, 7, Eml());
    store->Reset();
    store->InjectNullOut(L"CreateInstance", 1);
    EXPECT_EQ(0, Run(Clone(1, 7)));
    EXPECT_TRUE(log.Has("@@@ Error: in oea spFolderMsg is NULL."));
    store->InjectNullOut(L"GetMessage", 1);
    EXPECT_EQ(0, Run(Clone(1, 7)));
    EXPECT_TRUE(log.Has("@@@ Error: Using spFolderMgr get message fail, spMessage is NULL."));
    store->InjectNullOut(L"GetBodyHandle", 1);
    EXPECT_EQ(0, Run(Move(1, 2, 7, 1, 1)));
    EXPECT_TRUE(log.Has("@@@ Error: spMessage->GetBodyHandle return lHandle is 0."));
    store->InjectNullOut(L"GetFolder", 1);
    EXPECT_EQ(0, Run(Delete(1, 7)));
    store->InjectNullOut(L"GetFolder", 1);
    EXPECT_EQ(0, ops.ProcDeleteAllSpamMsg(Delete(1, 0, true)));
    EXPECT_EQ(2, log.Count("@@@ Error: spFolder is NULL."));
    EXPECT_EQ(0, log.Count("Exception Catched"));
    // A move reported as done but without a new id is not done.
    store->CreateFolder(2);
    store->InjectNullOut(L"MoveMessage", 1);
    EXPECT_EQ(0, Run(Move(1, 2, 7, 1, 1)));
    EXPECT_TRUE(log.Has("@@@ Exception Catched in Function: CToolBarWnd::ProcMoveMsg"));
    EXPECT_TRUE(log.Has("!!! the action of move item is not complete"));
}

// One operation, its setup, and what shows it did its work.
struct Operation {
    const char* name;
    const char* incomplete;
    std::function<void(FolderOps&)> arrange;
    std::function<void(FolderOps&)> run;
    std::function<bool(FolderOps&)> done;
};

TEST_F(FolderOps, EveryStoreCallFailingInTurnIsSurvivedWithoutLeaksAndTheNextRequestWorks) {
    const Operation operations[] = {
        {"ProcCloneMsg", "!!! the action of clone item is not complete",
         [](FolderOps& t) { t.store->PutMessage(1, 7, Eml()); },
         [](FolderOps& t) { t.Run(Clone(1, 7, L"X-QZ-AS-Tagged-Subject: T\r\nX-A: b", 1)); },
         [](FolderOps& t) { return t.FileHas(1, 7, "Subject: T\r\n"); }},
        {"ProcMoveMsg", "!!! the action of move item is not complete",
         [](FolderOps& t) {
             t.store->PutMessage(1, 7, Eml());
             t.store->CreateFolder(2);
         },
         [](FolderOps& t) { t.Run(Move(1, 2, 7, 1, 1, L"X-QZ-AS-Tagged-Subject: M", 1)); },
         [](FolderOps& t) { return !t.store->HasMessage(1, 7); }},
        {"ProcDeleteMsg", "!!! the action of delete item is not complete",
         [](FolderOps& t) { t.store->PutMessage(1, 7, Eml()); },
         [](FolderOps& t) { t.Run(Delete(1, 7)); },
         [](FolderOps& t) { return !t.store->HasMessage(1, 7); }},
        {"ProcDeleteAllSpamMsg", "!!! the action of delete item is not complete",
         [](FolderOps& t) {
             t.store->PutMessage(4, 1, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 5\r\n"));
             t.store->PutMessage(4, 2, Eml());
         },
         [](FolderOps& t) { t.ops.ProcDeleteAllSpamMsg(Delete(4, 0, true)); },
         [](FolderOps& t) { return !t.store->HasMessage(4, 1) && t.store->HasMessage(4, 2); }},
    };
    const std::string noStore = "@@@ Error: in oea spFolderMsg is NULL.";
    for (const Operation& op : operations) {
        SCOPED_TRACE(op.name);
        const std::string caught =
            std::string("Exception Catched in Function: CToolBarWnd::") + op.name;
        const std::string out = std::string("@@@ CToolBarWnd::") + op.name + "  OUT";
        op.arrange(*this);
        store->Reset();
        op.run(*this);
        ASSERT_TRUE(op.done(*this)) << Narrow(store->Journal());
        const Lines clean = store->JournalLines();
        for (ULONG k = 1; k <= clean.size(); ++k) {
            for (ULONG kind : {STORE_STUB_FAULT_FAIL, STORE_STUB_FAULT_NULL_OUT}) {
                SCOPED_TRACE(::testing::Message() << Narrow(clean[k - 1]) << " kind " << kind);
                op.arrange(*this);
                store->Reset();
                const int counts[] = {log.Count(caught), log.Count(op.incomplete),
                                      log.Count(noStore)};
                store->InjectFault(L"*", k, E_FAIL, kind);
                op.run(*this);
                EXPECT_EQ(0u, store->PendingFaults());
                EXPECT_EQ(0, store->LiveObjects()) << Narrow(store->DescribeLiveObjects());
                if (k == 1) {  // no store object at all: its own line
                    EXPECT_EQ(counts[2] + 1, log.Count(noStore));
                } else if (kind == STORE_STUB_FAULT_FAIL) {
                    EXPECT_EQ(counts[0] + 1, log.Count(caught));
                    EXPECT_EQ(counts[1] + 1, log.Count(op.incomplete));
                    EXPECT_EQ(k, store->JournalLines().size());  // never retried
                }
                op.arrange(*this);
                store->Reset();
                const int outs = log.Count(out);
                op.run(*this);
                EXPECT_EQ(outs + 1, log.Count(out));
                EXPECT_TRUE(op.done(*this)) << Narrow(store->Journal());
            }
        }
    }
}

}  // namespace
}  // namespace velk::actions
