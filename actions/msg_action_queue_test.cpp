#include "actions/msg_action_queue.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "actions/actions_test_support.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

class ActionQueue : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(store.Setup()) << "store stand-in not available";
        window.set_queue(&queue);
    }
    void TearDown() override {
        store->ReleaseHold();
        EXPECT_TRUE(StopWhenIdle());
        EXPECT_EQ(0, store->LiveObjects()) << Narrow(store->DescribeLiveObjects());
    }
    // Messages 1..count in folder 1, and the empty move target folder 2.
    void PutMessages(ULONG count) {
        for (ULONG id = 1; id <= count; ++id)
            store->PutMessage(1, id, Eml());
        store->CreateFolder(2);
        store->Reset();
    }
    // Starts the worker and parks it inside the store on a first clone.
    void StartHeld() {
        ASSERT_TRUE(queue.Start());
        ASSERT_EQ(S_OK, store->HoldCall(L"GetFolder"));
        window.Send(COPYDATA_CLONE_MSG, Clone(1, 1));
        ASSERT_TRUE(store->WaitUntilHeld(10000));
    }
    // The worker ends after the request it is on, whenever the stop comes.
    bool StopWhenIdle() { return queue.Stop(); }
    int Commits() { return store.Calls(L"Commit"); }

    win32::com_apartment apartment;
    LogCapture log;
    StoreFixture store;
    ReceiverWindow window;
    CMsgActionQueue queue{window.lock()};
};

TEST_F(ActionQueue, EachPassDrainsClonesThenMovesThenDeletes) {
    PutMessages(4);
    StartHeld();
    // Sent in the reverse order while the worker is busy with clone 1.
    window.Send(COPYDATA_DELETE_MSG, Delete(1, 3));
    window.Send(COPYDATA_MOVE_MSG, Move(1, 2, 2, 1, 1));
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 4));
    store->ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return store.Calls(L"DeleteMessage") == 1; }));
    std::vector<std::wstring> order;
    for (const auto& line : store->JournalLines()) {
        if (line.rfind(L"GetMessage", 0) == 0 || line.rfind(L"DeleteMessage", 0) == 0)
            order.push_back(line);
    }
    EXPECT_EQ((std::vector<std::wstring>{L"GetMessage(1)", L"GetMessage(4)", L"GetMessage(2)",
                                         L"DeleteMessage(3, 1)"}),
              order);
    EXPECT_EQ((std::vector<ULONG>{1, 4}), store->ListMessages(1));
    EXPECT_TRUE(StopWhenIdle());
    EXPECT_TRUE(log.Has("[ThreadFuncMsgProcess] IN"));
    EXPECT_TRUE(log.Has("[ThreadFuncMsgProcess] OUT"));
}

TEST_F(ActionQueue, FullDequeKeepsTheSenderTwentyOneWaitsThenDropsAndReleaseDrainsTheRest) {
    struct Kind {
        const char* name;
        const char* fullLine;
        std::function<void(ULONG)> send;
        const wchar_t* doneCall;
    };
    const Kind kinds[] = {
        {"clone", "!!! COPY_DATA: m_ovMsgCopyDataForClone deque is full, waiting...",
         [&](ULONG i) { window.Send(COPYDATA_CLONE_MSG, Clone(1, i)); }, L"Commit"},
        {"move", "!!! COPY_DATA: m_ovMsgCopyDataForMove deque is full, waiting...",
         [&](ULONG i) { window.Send(COPYDATA_MOVE_MSG, Move(1, 2, i, 1, 0)); }, L"MoveMessage"},
        {"delete", "!!! COPY_DATA: m_ovMsgCopyDataForDelete deque is full, waiting...",
         [&](ULONG i) { window.Send(COPYDATA_DELETE_MSG, Delete(1, i)); }, L"DeleteMessage"},
    };
    ASSERT_TRUE(queue.Start());
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        PutMessages(53);
        // Request 1 is held in the store by the worker; 2..52 fill the deque
        // to its 51; request 53 finds it full.
        ASSERT_EQ(S_OK, store->HoldCall(L"GetFolder"));
        kind.send(1);
        ASSERT_TRUE(store->WaitUntilHeld(10000));
        for (ULONG i = 2; i <= 52; ++i)
            kind.send(i);
        const int before = log.Count(kind.fullLine);
        const DWORD t0 = ::GetTickCount();
        kind.send(53);
        RecordProperty(std::string(kind.name) + "_full_wait_ms",
                       static_cast<int>(::GetTickCount() - t0));
        EXPECT_EQ(before + 21, log.Count(kind.fullLine));

        store->ReleaseHold();
        ASSERT_TRUE(WaitFor([&] { return store.Calls(kind.doneCall) == 52; }));
        ::Sleep(300);
        EXPECT_EQ(52, store.Calls(kind.doneCall));
        EXPECT_EQ(0, store.Calls(L"GetMessage(53)") + store.Calls(L"DeleteMessage(53"))
            << "the dropped request was carried out";
    }
}

TEST_F(ActionQueue, FullDequeAcceptsTheRequestOnceTheWorkerDrainsDuringTheWait) {
    const char* full = "!!! COPY_DATA: m_ovMsgCopyDataForClone deque is full, waiting...";
    PutMessages(53);
    StartHeld();
    for (ULONG i = 2; i <= 52; ++i)
        window.Send(COPYDATA_CLONE_MSG, Clone(1, i));
    std::thread releaser([&] {
        WaitFor([&] { return log.Has(full); });
        store->ReleaseHold();
    });
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 53));
    releaser.join();
    const int waits = log.Count(full);
    EXPECT_GE(waits, 1);
    EXPECT_LT(waits, 21) << "given up instead of accepted";
    ASSERT_TRUE(WaitFor([&] { return Commits() == 53; }));
    EXPECT_EQ(1, store.Calls(L"GetMessage(53)"));
}

TEST_F(ActionQueue, StopEndsTheSendersWaitAtOnceAndTheWorkerAfterTheRequestItIsOn) {
    PutMessages(53);
    StartHeld();
    for (ULONG i = 2; i <= 52; ++i)
        window.Send(COPYDATA_CLONE_MSG, Clone(1, i));
    std::thread stopper([&] {
        ::Sleep(350);
        // The waiting receipt still holds the window's critical section.
        EXPECT_FALSE(::TryEnterCriticalSection(window.lock().native()));
        queue.RequestStop();
    });
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 53));
    stopper.join();
    const int waits = log.Count("!!! COPY_DATA: m_ovMsgCopyDataForClone deque is full");
    EXPECT_GE(waits, 1);
    EXPECT_LT(waits, 21);
    // The sender's wait took the signal, yet the stop holds: the worker
    // finishes the request it is on and ends; the queued ones stay undone.
    store->ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return log.Has("[ThreadFuncMsgProcess] OUT"); }));
    EXPECT_EQ(1, Commits());
}

TEST_F(ActionQueue, StopDuringADrainEndsTheWorkerAfterTheRequestItIsOn) {
    PutMessages(5);
    StartHeld();
    for (ULONG i = 2; i <= 4; ++i)
        window.Send(COPYDATA_CLONE_MSG, Clone(1, i));
    queue.RequestStop();
    store->ReleaseHold();
    // The drain's poll after request 1 takes the signal and the worker ends.
    ASSERT_TRUE(WaitFor([&] { return log.Has("[ThreadFuncMsgProcess] OUT"); }));
    EXPECT_EQ(1, Commits());
}

TEST_F(ActionQueue, WithoutARunningWorkerEveryRequestIsRefusedAtOnceWithOneLine) {
    PutMessages(1);
    ASSERT_TRUE(queue.Start());
    ASSERT_TRUE(StopWhenIdle());
    for (int i = 0; i < 60; ++i)
        EXPECT_EQ(FALSE, window.Send(COPYDATA_MOVE_MSG, Move(1, 2, 1, 1, 0)));
    EXPECT_EQ(60, log.Count("!!! COPY_DATA: the message worker is not running, request refused"));
    EXPECT_EQ(0, log.Count("deque is full"));
    EXPECT_TRUE(queue.Queues().m_ovMsgCopyDataForMove.Empty());
}

TEST_F(ActionQueue, AllSpamDeleteRunsInsideTheReceiptEvenWhileTheWorkerIsHeld) {
    PutMessages(1);
    store->PutMessage(5, 1, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 12\r\n"));
    store->PutMessage(5, 2, Eml());
    StartHeld();
    EXPECT_EQ(FALSE, window.Send(COPYDATA_DELETE_MSG, Delete(5, 2, /*allSpam=*/true)));
    EXPECT_EQ((std::vector<ULONG>{2}), store->ListMessages(5));
    EXPECT_TRUE(queue.Queues().m_ovMsgCopyDataForDelete.Empty());
    store->ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return Commits() == 1; }));
    ::Sleep(250);
    EXPECT_FALSE(log.Has("CToolBarWnd::ProcDeleteMsg"));
}

TEST_F(ActionQueue, StartAndStopRepeatAndAStopThatGivesUpLeavesTheWorkerSafe) {
    EXPECT_TRUE(queue.Stop());  // before any start: harmless
    PutMessages(4);
    ASSERT_TRUE(queue.Start());
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 1));
    ASSERT_TRUE(WaitFor([&] { return Commits() == 1; }));
    EXPECT_TRUE(StopWhenIdle());
    EXPECT_FALSE(queue.IsStarted());

    // Held in the store, the worker cannot end within 3000 ms: the handles
    // are closed anyway, and a request now is refused without harm.
    StartHeld();
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 2));
    EXPECT_FALSE(queue.Stop());
    EXPECT_TRUE(log.Has("!!! ThreadFuncMsgProcess did not end within 3000 ms"));
    EXPECT_EQ(FALSE, window.Send(COPYDATA_CLONE_MSG, Clone(1, 3)));
    // The stopped-out worker finishes the request it was on, with its own
    // state and handles, and ends.
    store->ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return log.Count("[ThreadFuncMsgProcess] OUT") == 2; }));
    EXPECT_EQ(2, Commits());
    // A fresh start gets fresh events and deques.
    ASSERT_TRUE(queue.Start());
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 4));
    ASSERT_TRUE(WaitFor([&] { return Commits() == 3; }));
}

}  // namespace
}  // namespace velk::actions
