#include "actions/msg_action_queue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "actions/actions_test_support.h"

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
    static constexpr char kCloneFull[] =
        "!!! COPY_DATA: m_ovMsgCopyDataForClone deque is full, waiting...";
};

TEST_F(ActionQueue, FullDequeKeepsTheSenderTwentyOneWaitsThenDropsUnlessTheWorkerMakesRoom) {
    PutMessages(54);
    // Request 1 is held in the store by the worker; 2..52 fill the deque to
    // its 51; request 53 finds it full and is dropped.
    StartHeld();
    for (ULONG i = 2; i <= 52; ++i)
        window.Send(COPYDATA_CLONE_MSG, Clone(1, i));
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 53));
    EXPECT_EQ(21, Logged(kCloneFull));
    EXPECT_EQ(1, Logged("!!! COPY_DATA: request dropped, its deque stayed full"));
    // Request 54 is taken as soon as the worker frees a place, not dropped.
    std::thread releaser([&] {
        WaitFor([&] { return Logged(kCloneFull) > 21; });
        store.ReleaseHold();
    });
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 54));
    releaser.join();
    ASSERT_TRUE(WaitFor([&] { return Calls(L"Commit") == 53; }));
    ::Sleep(300);
    EXPECT_EQ(0, Calls(L"GetMessage(53)")) << "the dropped request was carried out";
}

TEST_F(ActionQueue, AStopEndsTheSendersWaitAndAStoppedQueueRefusesEveryRequestAtOnce) {
    EXPECT_TRUE(queue.Stop());  // before any start: harmless
    PutMessages(54);
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
    EXPECT_LT(Logged(kCloneFull), 21) << "the stop did not end the wait";
    // Held in the store, the worker cannot end within 3000 ms: the handles
    // are closed anyway, and every request now is refused at once.
    EXPECT_FALSE(queue.Stop());
    EXPECT_EQ(1, Logged("!!! ThreadFuncMsgProcess did not end within 3000 ms"));
    for (int i = 0; i < 60; ++i)
        window.Send(COPYDATA_MOVE_MSG, Move(1, 2, 1, 1, 0));
    EXPECT_EQ(60, Logged("!!! COPY_DATA: the message worker is not running, request refused"));
    // The stopped-out worker finishes the request it was on, with its own
    // state and handles, and ends; the queued ones stay undone.
    store.ReleaseHold();
    ASSERT_TRUE(WaitFor([&] { return Logged("[ThreadFuncMsgProcess] OUT"); }));
    EXPECT_EQ(1, Calls(L"Commit"));
    // A fresh start gets fresh deques.
    ASSERT_TRUE(queue.Start());
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 54));
    ASSERT_TRUE(WaitFor([&] { return Calls(L"Commit") == 2; }));
    ::Sleep(300);
    EXPECT_EQ(2, Calls(L"Commit"));
}

// Payloads of every length that end right at a PAGE_NOACCESS page: a receipt
// that reads one byte past cbData faults at once. What is queued is the
// bytes sent, up to what a queued element keeps (the fixed fields and 512
// units of text), then zeros. The queue is not started: records stay in
// their deques.
TEST_F(ActionQueue, RecordsOfEveryLengthAreReadOnlyUpToCbDataAndOtherKindsNotAtAll) {
    auto* base = static_cast<std::uint8_t*>(
        ::VirtualAlloc(nullptr, 8192, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD old = 0;
    ASSERT_TRUE(base && ::VirtualProtect(base + 4096, 4096, PAGE_NOACCESS, &old));
    std::uint8_t* const guard = base + 4096;
    std::uint8_t bytes[sizeof(MoveMsgRequest)];
    for (std::size_t i = 0; i < sizeof bytes; ++i)  // non-zero: a missing zero shows
        bytes[i] = std::uint8_t(i % 251 + 1);
    const auto everyLength = [&](ULONG_PTR dwData, auto& deque, auto record) {
        using Record = decltype(record);
        for (std::size_t size = 0; size <= sizeof(Record); ++size) {
            std::memcpy(guard - size, bytes, size);
            EXPECT_EQ(FALSE, window.Send(dwData, guard - size, size));
            Record queued;
            if (!deque.PopFront(queued))
                continue;  // a purge, run at once
            const auto* raw = reinterpret_cast<const std::uint8_t*>(&queued);
            const std::size_t kept =
                std::min(size, sizeof(Record) - (sizeof(Record) > 12 ? 1024 : 0));
            for (std::size_t i = 0; i < sizeof(Record); ++i)
                ASSERT_EQ(i < kept ? bytes[i] : 0, raw[i]) << "cbData " << size << ", byte " << i;
        }
    };
    auto& queues = queue.Queues();
    everyLength(COPYDATA_CLONE_MSG, queues.m_ovMsgCopyDataForClone, CloneMsgRequest{});
    everyLength(COPYDATA_MOVE_MSG, queues.m_ovMsgCopyDataForMove, MoveMsgRequest{});
    bytes[offsetof(DeleteMsgRequest, bDeleteAllSpam)] = 0;
    everyLength(COPYDATA_DELETE_MSG, queues.m_ovMsgCopyDataForDelete, DeleteMsgRequest{});
    EXPECT_EQ(0, Calls(L"CreateInstance"));
    // With the purge flag: the 9 shorter records lack it and are queued;
    // the others purge at once.
    bytes[offsetof(DeleteMsgRequest, bDeleteAllSpam)] = 1;
    everyLength(COPYDATA_DELETE_MSG, queues.m_ovMsgCopyDataForDelete, DeleteMsgRequest{});
    EXPECT_EQ(4, Calls(L"CreateInstance"));
    // cbData claims a whole record, but not one byte of it is readable; the
    // full 64-bit dwData counts, not its low bits.
    for (ULONG_PTR dwData : {ULONG_PTR{1075}, ULONG_PTR{1079}, ULONG_PTR{0x100000434}})
        EXPECT_EQ(FALSE, window.Send(dwData, guard, sizeof(MoveMsgRequest)));
    EXPECT_EQ(FALSE, ::SendMessageW(window.hwnd(), WM_COPYDATA, 0, 0));
    EXPECT_TRUE(queues.m_ovMsgCopyDataForClone.Empty() && queues.m_ovMsgCopyDataForMove.Empty() &&
                queues.m_ovMsgCopyDataForDelete.Empty());
    ::VirtualFree(base, 0, MEM_RELEASE);
}

}  // namespace
}  // namespace velk::actions
