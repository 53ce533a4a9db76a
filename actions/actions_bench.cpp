// Figures of the message actions under Wine:
//  - the UI thread's cost of one WM_COPYDATA receipt while the deque has
//    room;
//  - the worker's throughput for move requests against the store stand-in
//    kept in memory, while it has work.
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "actions/actions_test_window.h"
#include "actions/msg_action_queue.h"
#include "common_src/bench/bench.h"
#include "tools/store_stub/store_stub_control.h"

namespace {

using namespace velk::actions;
using namespace velk::actions::testing;
using velk::tools::StoreStub;
using Clock = std::chrono::steady_clock;

const wchar_t kHeaders[] = L"X-QZ-AS-Tagged-Subject: [SPAM] an offer\r\nX-Score: 9";

template <class Record, class Deque>
velk::bench::Stats TimeReceipts(ReceiverWindow& window, Deque& deque, ULONG_PTR dwData,
                                const Record& record) {
    constexpr std::size_t kSamples = 20000;
    std::vector<double> us;
    us.reserve(kSamples);
    Record popped;
    for (std::size_t i = 0; i < kSamples; ++i) {
        const auto t0 = Clock::now();
        window.Send(dwData, record);
        us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - t0).count());
        deque.PopFront(popped);  // keeps the room, untimed
    }
    return velk::bench::Summarise(us);
}

// The worker is parked inside the store on a first request, so the figures
// are the receipt alone: lock, copy, push and event.
void BenchReceipt(const StoreStub& store) {
    store.PutMessage(1, 1, "Subject: s\r\n\r\nb\r\n");
    store.Reset();
    store.EnableJournal(false);
    ReceiverWindow window(L"VelkActionsBenchReceipt");
    CMsgActionQueue queue(window.lock());
    window.set_queue(&queue);
    queue.Start();
    store.HoldCall(L"CreateInstance");
    window.Send(COPYDATA_CLONE_MSG, Clone(1, 1));
    if (!store.WaitUntilHeld(10000))
        std::printf("bench actions receipt: worker not parked\n");

    velk::bench::Report("actions receipt of a clone record (UI thread)",
                        TimeReceipts(window, queue.Queues().m_ovMsgCopyDataForClone,
                                     COPYDATA_CLONE_MSG, Clone(1, 1, kHeaders)),
                        "median <= 20 us");
    velk::bench::Report("actions receipt of a move record (UI thread)",
                        TimeReceipts(window, queue.Queues().m_ovMsgCopyDataForMove,
                                     COPYDATA_MOVE_MSG, Move(1, 2, 1, 1, 1, kHeaders)),
                        "median <= 20 us");
    store.ReleaseHold();
    ::Sleep(200);
    queue.Stop();
}

// Move requests against a deque kept filled: the worker is parked in the
// store on the first while 51 more fill its deque, then timed from its
// release until the source folder is empty, while the sender tops the deque
// up whenever it has room. The worker thus always has work and never reaches
// its idle 100 ms wait while the sender keeps up.
double MovesPerSecond(const StoreStub& store, StoreFactory factory) {
    constexpr ULONG kRequests = 4000, kSource = 3;
    static ULONG nextId = 1000;
    const ULONG first = nextId, end = first + kRequests;
    nextId = end;
    store.CreateFolder(2);
    for (ULONG id = first; id < end; ++id)
        store.PutMessage(kSource, id, "From: a@example.com\r\nSubject: offer\r\n\r\nbody\r\n");

    ReceiverWindow window(L"VelkActionsBenchWorker");
    CMsgActionQueue queue(window.lock(), std::move(factory));
    window.set_queue(&queue);
    queue.Start();
    auto& moves = queue.Queues().m_ovMsgCopyDataForMove;
    auto send = [&](ULONG id) {
        window.Send(COPYDATA_MOVE_MSG, Move(kSource, 2, id, 1, 1, kHeaders));
    };

    store.HoldCall(L"GetFolder");
    ULONG id = first;
    send(id++);
    if (!store.WaitUntilHeld(10000))
        return 0;
    while (moves.Size() < kMaxQueued)
        send(id++);
    const auto t0 = Clock::now();
    store.ReleaseHold();
    while (id < end) {
        if (moves.Size() < kMaxQueued) {
            send(id++);
        } else {
            ::SwitchToThread();
        }
    }
    while (!store.ListMessages(kSource).empty())
        ::SwitchToThread();
    const double seconds = std::chrono::duration<double>(Clock::now() - t0).count();
    ::Sleep(200);
    queue.Stop();
    return kRequests / seconds;
}

}  // namespace

int main() {
    velk::win32::com_apartment apartment;
    StoreStub store;
    if (!store.Load() || FAILED(store.Register()) || FAILED(store.UseMemoryStore())) {
        std::printf("bench actions: store stand-in not available\n");
        return 1;
    }
    store.Reset();
    store.EnableJournal(false);
    BenchReceipt(store);

    velk::bench::ReportValue("actions worker move requests (in-memory store)",
                             MovesPerSecond(store, CreateStoreFolderMgr), "requests/s",
                             ">= 10000 requests/s");
    // The same with the store's class looked up once: what the worker costs
    // apart from Wine's CoCreateInstance, which reads the registry each time.
    velk::win32::com_ptr<IClassFactory> factory;
    velk::bench::ReportValue(
        "actions worker move requests, class lookup excluded (in-memory store)",
        MovesPerSecond(store,
                       [&factory](IQzFolderMgr** out) {
                           if (!factory) {
                               const HRESULT hr =
                                   ::CoGetClassObject(CLSID_QzStoreAccess, CLSCTX_ALL, nullptr,
                                                      IID_IClassFactory, factory.put_void());
                               if (FAILED(hr))
                                   return hr;
                           }
                           return factory->CreateInstance(nullptr, IID_IQzFolderMgr,
                                                          reinterpret_cast<void**>(out));
                       }),
        "requests/s");
    factory.reset();
    const long alive = store.LiveObjects();
    if (alive != 0)
        std::printf("bench actions: %ld store objects left alive\n", alive);
    return alive == 0 ? 0 : 1;
}
