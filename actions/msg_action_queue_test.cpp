#include "actions/msg_action_queue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "actions/actions_test_support.h"
#include "actions/record_decode.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

class ActionQueue : public StoreTest {
protected:
    // Messages 1..count in folder 1, and the empty move target folder 2.
    void PutMessages(ULONG count) {
        for (ULONG id = 1; id <= count; ++id)
            store.PutMessage(1, id, Eml());
        store.CreateFolder(2);
        store.Reset();
    }
    // Starts the worker and parks it inside the store on a first clone.
    void StartHeld() {
        ASSERT_TRUE(queue.Start());
        ASSERT_EQ(S_OK, store.HoldCall(L"GetFolder"));
        window.Send(COPYDATA_CLONE_MSG, Clone(1, 1));
        ASSERT_TRUE(store.WaitUntilHeld(10000));
    }
    int Commits() { return Calls(L"Commit"); }
    static constexpr char kCloneFull[] =
        "!!! COPY_DATA: m_ovMsgCopyDataForClone deque is full, waiting...";
};

TEST_F(ActionQueue, EachPassDrainsClonesThenMovesThenDeletesAndAPurgeRunsInsideItsReceipt) {
    PutMessages(4);
    store.PutMessage(5, 1, Eml("X-Nuvexa-AntispamAddin-QuarantineTime: 12\r\n"));
    store.PutMessage(5, 2, Eml());
    StartHeld();
    // Sent in the reverse order while the worker is busy with clone 1.
    window.Send(COPYDATA_DELETE_MSG, Delete(1, 3));
    window.Send(COPYDATA_MOVE_MSG, Move(1, 2, 2, 1, 1));
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 4));
    // The purge does not wait for the busy worker.
    EXPECT_EQ(FALSE, window.Send(COPYDATA_DELETE_MSG, Delete(5, 0, /*allSpam=*/true)));
    EXPECT_EQ((std::vector<ULONG>{2}), store.ListMessages(5));
    store.ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return Calls(L"DeleteMessage") == 1; }));
    std::vector<std::wstring> order;
    for (const auto& line : store.JournalLines()) {
        if (line.rfind(L"GetMessage", 0) == 0 || line.rfind(L"DeleteMessage", 0) == 0)
            order.push_back(line);
    }
    EXPECT_EQ((std::vector<std::wstring>{L"GetMessage(1)", L"GetMessage(4)", L"GetMessage(2)",
                                         L"DeleteMessage(3, 1)"}),
              order);
    EXPECT_EQ((std::vector<ULONG>{1, 4}), store.ListMessages(1));
    EXPECT_TRUE(queue.Stop());
    EXPECT_TRUE(log.Has("[ThreadFuncMsgProcess] IN"));
    EXPECT_TRUE(log.Has("[ThreadFuncMsgProcess] OUT"));
}

TEST_F(ActionQueue, FullDequeKeepsTheSenderTwentyOneWaitsThenDropsUnlessTheWorkerMakesRoom) {
    PutMessages(54);
    // Request 1 is held in the store by the worker; 2..52 fill the deque to
    // its 51; request 53 finds it full and is dropped.
    StartHeld();
    for (ULONG i = 2; i <= 52; ++i)
        window.Send(COPYDATA_CLONE_MSG, Clone(1, i));
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 53));
    EXPECT_EQ(21, log.Count(kCloneFull));
    EXPECT_EQ(1, log.Count("!!! COPY_DATA: request dropped, its deque stayed full"));
    // Request 54 is taken as soon as the worker frees a place.
    std::thread releaser([&] {
        WaitFor([&] { return log.Count(kCloneFull) > 21; });
        store.ReleaseHold();
    });
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 54));
    releaser.join();
    EXPECT_LT(log.Count(kCloneFull), 42) << "given up instead of accepted";
    ASSERT_TRUE(WaitFor([&] { return Commits() == 53; }));
    ::Sleep(300);
    EXPECT_EQ(0, Calls(L"GetMessage(53)"));
    EXPECT_EQ(1, Calls(L"GetMessage(54)"));
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
    EXPECT_LT(log.Count(kCloneFull), 21) << "the stop did not end the wait";
    // The sender's wait took the signal, yet the stop holds: the worker
    // finishes the request it is on and ends; the queued ones stay undone.
    store.ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return log.Has("[ThreadFuncMsgProcess] OUT"); }));
    EXPECT_EQ(1, Commits());
}

TEST_F(ActionQueue, StartAndStopRepeatAndAStoppedQueueRefusesEveryRequestAtOnce) {
    EXPECT_TRUE(queue.Stop());  // before any start: harmless
    PutMessages(4);
    ASSERT_TRUE(queue.Start());
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 1));
    ASSERT_TRUE(WaitFor([&] { return Commits() == 1; }));
    EXPECT_TRUE(queue.Stop());
    for (int i = 0; i < 60; ++i)
        window.Send(COPYDATA_MOVE_MSG, Move(1, 2, 1, 1, 0));
    EXPECT_EQ(60, log.Count("!!! COPY_DATA: the message worker is not running, request refused"));
    EXPECT_EQ(0, log.Count("deque is full"));

    // Held in the store, the worker cannot end within 3000 ms: the handles
    // are closed anyway, and a request now is refused without harm.
    StartHeld();
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 2));
    EXPECT_FALSE(queue.Stop());
    EXPECT_TRUE(log.Has("!!! ThreadFuncMsgProcess did not end within 3000 ms"));
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 3));
    // The stopped-out worker finishes the request it was on, with its own
    // state and handles, and ends; a fresh start gets fresh deques.
    store.ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return log.Count("[ThreadFuncMsgProcess] OUT") == 2; }));
    EXPECT_EQ(2, Commits());
    ASSERT_TRUE(queue.Start());
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 4));
    ASSERT_TRUE(WaitFor([&] { return Commits() == 3; }));
    EXPECT_EQ(0, Calls(L"GetMessage(2)") + Calls(L"GetMessage(3)"));
}

// Payloads of every length that end right at a PAGE_NOACCESS page: a receipt
// that reads one byte past cbData faults at once. What is queued is the
// bytes sent, up to what a queued element keeps, then zeros.
class CopyDataGuard : public ::testing::Test {
protected:
    template <class Record>
    void SendEveryLength(ULONG_PTR dwData, RequestDeque<Record>& deque, std::uint8_t* page) {
        for (std::size_t size = 0; size <= sizeof(Record); ++size) {
            std::memcpy(page - size, bytes, size);
            EXPECT_EQ(FALSE, window.Send(dwData, page - size, size));
            Record queued;
            if (!deque.PopFront(queued))
                continue;  // a purge, run at once
            const auto* raw = reinterpret_cast<const std::uint8_t*>(&queued);
            const std::size_t kept = std::min(size, KeptBytes<Record>());
            for (std::size_t i = 0; i < sizeof(Record); ++i)
                ASSERT_EQ(i < kept ? bytes[i] : 0, raw[i]) << "cbData " << size << ", byte " << i;
        }
    }

    std::uint8_t bytes[sizeof(MoveMsgRequest)];
    int storeOpened = 0;
    ReceiverWindow window;
    // Not started; the purge path ends at the store's creation.
    CMsgActionQueue queue{window.lock(), [this](IQzFolderMgr** out) {
                              ++storeOpened;
                              *out = nullptr;
                              return E_FAIL;
                          }};
};

TEST_F(CopyDataGuard, RecordsOfEveryLengthAreReadOnlyUpToCbDataAndOtherKindsNotAtAll) {
    auto* base = static_cast<std::uint8_t*>(
        ::VirtualAlloc(nullptr, 8192, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD old = 0;
    ASSERT_TRUE(base && ::VirtualProtect(base + 4096, 4096, PAGE_NOACCESS, &old));
    window.set_queue(&queue);
    for (std::size_t i = 0; i < sizeof bytes; ++i)  // non-zero: a missing zero shows
        bytes[i] = std::uint8_t(i % 251 + 1);
    auto& queues = queue.Queues();
    SendEveryLength(COPYDATA_CLONE_MSG, queues.m_ovMsgCopyDataForClone, base + 4096);
    SendEveryLength(COPYDATA_MOVE_MSG, queues.m_ovMsgCopyDataForMove, base + 4096);
    bytes[offsetof(DeleteMsgRequest, bDeleteAllSpam)] = 0;
    SendEveryLength(COPYDATA_DELETE_MSG, queues.m_ovMsgCopyDataForDelete, base + 4096);
    EXPECT_EQ(0, storeOpened);
    // With the purge flag: the 9 shorter records lack it and are queued;
    // the others purge at once.
    bytes[offsetof(DeleteMsgRequest, bDeleteAllSpam)] = 1;
    SendEveryLength(COPYDATA_DELETE_MSG, queues.m_ovMsgCopyDataForDelete, base + 4096);
    EXPECT_EQ(4, storeOpened);
    // cbData claims a whole record, but not one byte of it is readable; the
    // full 64-bit dwData counts, not its low bits.
    for (ULONG_PTR dwData : {ULONG_PTR{1075}, ULONG_PTR{1079}, ULONG_PTR{0x100000434}})
        EXPECT_EQ(FALSE, window.Send(dwData, base + 4096, sizeof(MoveMsgRequest)));
    EXPECT_EQ(FALSE, ::SendMessageW(window.hwnd(), WM_COPYDATA, 0, 0));
    EXPECT_TRUE(queues.m_ovMsgCopyDataForClone.Empty() && queues.m_ovMsgCopyDataForMove.Empty() &&
                queues.m_ovMsgCopyDataForDelete.Empty());
    ::VirtualFree(base, 0, MEM_RELEASE);
}

}  // namespace
}  // namespace velk::actions
