#include "actions/msg_action_queue.h"

#include <process.h>

#include <atomic>
#include <cstdint>

#include "actions/record_decode.h"
#include "log/diag_log.h"

namespace velk::actions {

using win32::unique_event;

namespace {

// A full deque keeps the sender waiting this long per step ...
constexpr DWORD kFullWaitMs = 100;
// ... and gives up when the retry count exceeds this: 21 waits, about 2.1 s.
constexpr std::uint8_t kMaxFullRetries = 20;
constexpr DWORD kWorkerPollMs = 100;
constexpr DWORD kStopWaitMs = 3000;

// Polls with a zero time-out; on an auto-reset event a hit also clears it.
bool Signalled(HANDLE event) {
    return ::WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

unique_event Duplicate(HANDLE event) {
    HANDLE copy = nullptr;
    const HANDLE self = ::GetCurrentProcess();
    if (!::DuplicateHandle(self, event, self, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
        return unique_event();
    return unique_event(copy);
}

}  // namespace

struct CMsgActionQueue::Shared {
    explicit Shared(const StoreFactory& factory) : ops(queues, factory) {}
    CMsgRequestQueues queues;
    CFolderMsgOps ops;
    // The worker's own handles to the component's events.
    unique_event stop, clone, move, del;
    // Set with the stop event and never consumed: the stop always holds.
    std::atomic<bool> stopping{false};
    // Manual-reset: the worker has left its loop (set by the worker), it may
    // now end (set by the stopping side once `handshake` and `keep_module`
    // are filled in), it has posted the handshake (set by the worker).
    unique_event finished, may_end, posted;
    // The worker's own message-only window, parent of the handshake window.
    std::atomic<HWND> anchor{nullptr};
    // A window of the stopping thread, child of `anchor`.
    std::atomic<HWND> handshake{nullptr};
    std::atomic<bool> keep_module{false};
};

struct CMsgActionQueue::WorkerStart {
    std::shared_ptr<Shared> shared;
    // Keeps the add-in loaded while the worker runs, even past a Stop that
    // gave up waiting for it.
    HMODULE pin = nullptr;
};

CMsgActionQueue::CMsgActionQueue(win32::critical_section& windowLock, StoreFactory factory)
    : m_windowLock(windowLock),
      m_factory(std::move(factory)),
      m_shared(std::make_shared<Shared>(m_factory)) {}

CMsgActionQueue::~CMsgActionQueue() {
    Stop();
}

CMsgRequestQueues& CMsgActionQueue::Queues() noexcept {
    return m_shared->queues;
}
CFolderMsgOps& CMsgActionQueue::Operations() noexcept {
    return m_shared->ops;
}

bool CMsgActionQueue::Start() {
    if (m_hThread)
        return true;
    try {
        return StartWorker();
    } catch (...) {
        VELK_LOG(L"@@@ Exception Catched in Function: %s", L"CMsgActionQueue::Start");
        Stop();
        return false;
    }
}

bool CMsgActionQueue::StartWorker() {
    // A worker that outlived an earlier Stop keeps its own state; a new one
    // starts from fresh deques.
    if (m_shared.use_count() > 1)
        m_shared = std::make_shared<Shared>(m_factory);

    for (unique_event* event : {&m_hStopEvent, &m_hCloneEvent, &m_hMoveEvent, &m_hDeleteEvent}) {
        event->reset(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!*event) {
            VELK_LOG(L"@@@ Error : CreateEvent for the message actions failed (%lu)",
                     ::GetLastError());
            Stop();
            return false;
        }
    }
    // Requests that came before the first start are kept for the worker.
    if (m_workerGone)
        m_shared->queues.Clear();
    m_shared->stopping = false;
    m_shared->finished.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_shared->may_end.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_shared->posted.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_shared->stop = Duplicate(m_hStopEvent.get());
    m_shared->clone = Duplicate(m_hCloneEvent.get());
    m_shared->move = Duplicate(m_hMoveEvent.get());
    m_shared->del = Duplicate(m_hDeleteEvent.get());
    if (!m_shared->stop || !m_shared->clone || !m_shared->move || !m_shared->del ||
        !m_shared->finished || !m_shared->may_end || !m_shared->posted) {
        VELK_LOG(L"@@@ Error : DuplicateHandle for the message worker failed (%lu)",
                 ::GetLastError());
        Stop();
        return false;
    }

    auto start = std::make_unique<WorkerStart>();
    start->shared = m_shared;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(&CMsgActionQueue::ThreadFuncMsgProcess),
                         &start->pin);
    const uintptr_t thread = ::_beginthreadex(nullptr, 0, &CMsgActionQueue::ThreadFuncMsgProcess,
                                              start.get(), 0, nullptr);
    if (thread == 0) {
        VELK_LOG(L"@@@ Error : _beginthreadex for ThreadFuncMsgProcess failed");
        if (start->pin)
            ::FreeLibrary(start->pin);
        Stop();
        return false;
    }
    start.release();  // the worker owns it now
    m_hThread.reset(reinterpret_cast<HANDLE>(thread));
    m_workerGone = false;
    return true;
}

void CMsgActionQueue::RequestStop() {
    if (m_hStopEvent) {
        m_shared->stopping = true;
        ::SetEvent(m_hStopEvent.get());
    }
}

bool CMsgActionQueue::WorkerAlive() const noexcept {
    return m_hThread && ::WaitForSingleObject(m_hThread.get(), 0) == WAIT_TIMEOUT;
}

bool CMsgActionQueue::Stop() {
    return StopWith(false);
}

std::function<void()> CMsgActionQueue::StopForUnload() {
    const std::shared_ptr<Shared> shared = m_shared;
    const bool finished = StopWith(true);
    return [shared, finished] {
        ::SetEvent(shared->may_end.get());
        // A worker that has finished posts its handshake at once: wait for it,
        // so the message is queued before this thread's loop looks again.
        if (finished && shared->handshake)
            ::WaitForSingleObject(shared->posted.get(), 2000);
    };
}

bool CMsgActionQueue::StopWith(bool for_unload) {
    RequestStop();
    bool ended = true;
    if (m_hThread) {
        // The worker finishes the request it is on, then leaves its loop.
        const HANDLE both[] = {m_shared->finished.get(), m_hThread.get()};
        ended = ::WaitForMultipleObjects(2, both, FALSE, kStopWaitMs) != WAIT_TIMEOUT;
        if (!ended)
            VELK_LOG(L"!!! ThreadFuncMsgProcess did not end within %lu ms", kStopWaitMs);
        if (for_unload) {
            // Made now, on this thread; no notice to the parent while it is
            // made, as the worker answers none (its destruction does notify).
            HWND handshake =
                ::CreateWindowExW(WS_EX_NOPARENTNOTIFY, L"STATIC", nullptr, WS_CHILD, 0, 0, 0, 0,
                                  m_shared->anchor, nullptr, nullptr, nullptr);
            if (handshake != nullptr) {
                ::SetWindowLongPtrW(handshake, GWL_EXSTYLE, 0);
            } else {
                VELK_LOG(L"!!! no handshake with the message worker (%lu): the add-in stays loaded",
                         ::GetLastError());
            }
            m_shared->handshake = handshake;
            m_shared->keep_module = handshake == nullptr;
        } else {
            ::SetEvent(m_shared->may_end.get());
            // Nothing stands between the worker and its end now.
            if (ended)
                ::WaitForSingleObject(m_hThread.get(), kStopWaitMs);
        }
    }
    // Closed either way; a worker still running holds its own duplicates.
    m_workerGone = true;
    m_hStopEvent.reset();
    m_hMoveEvent.reset();
    m_hCloneEvent.reset();
    m_hDeleteEvent.reset();
    m_hThread.reset();
    return ended;
}

unsigned __stdcall CMsgActionQueue::ThreadFuncMsgProcess(void* arg) {
    auto* start = static_cast<WorkerStart*>(arg);
    HMODULE pin = start->pin;
    std::shared_ptr<Shared> shared;
    try {
        shared = std::move(start->shared);
        delete start;
        start = nullptr;
        Shared& s = *shared;
        // A poll that finds the stop event set clears it; the flag keeps it.
        auto stopped = [&s] { return Signalled(s.stop.get()) || s.stopping; };

        VELK_LOG(L"[ThreadFuncMsgProcess] IN");
        // The parent of the stopping thread's handshake window (see the
        // header). It goes with this thread, never before: its end is what
        // frees the stopping thread.
        s.anchor = ::CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                     nullptr, nullptr);
        {
            win32::com_apartment apartment(COINIT_APARTMENTTHREADED);
            for (;;) {
                // Clone, move, delete: the order of each pass is fixed. A
                // deque is drained only in a pass that found its event set.
                if (Signalled(s.clone.get()) && !s.queues.m_ovMsgCopyDataForClone.Empty()) {
                    while (!stopped() && !s.queues.m_ovMsgCopyDataForClone.Empty())
                        s.ops.ProcCloneMsg();
                }
                if (Signalled(s.move.get()) && !s.queues.m_ovMsgCopyDataForMove.Empty()) {
                    while (!stopped() && !s.queues.m_ovMsgCopyDataForMove.Empty())
                        s.ops.ProcMoveMsg();
                }
                if (Signalled(s.del.get()) && !s.queues.m_ovMsgCopyDataForDelete.Empty()) {
                    while (!stopped() && !s.queues.m_ovMsgCopyDataForDelete.Empty())
                        s.ops.ProcDeleteMsg();
                }
                if (s.stopping)
                    break;
                // A failed wait ends the worker too: it could never be stopped.
                if (::WaitForSingleObject(s.stop.get(), kWorkerPollMs) != WAIT_TIMEOUT)
                    break;
            }
        }
        const std::size_t undone = s.queues.m_ovMsgCopyDataForClone.Size() +
                                   s.queues.m_ovMsgCopyDataForMove.Size() +
                                   s.queues.m_ovMsgCopyDataForDelete.Size();
        if (undone != 0)
            VELK_LOG(L"!!! %u requests left undone at the stop", static_cast<unsigned>(undone));
        VELK_LOG(L"[ThreadFuncMsgProcess] OUT");
        // Wait to be told how to end: at once, after the handshake, or
        // keeping the module.
        ::SetEvent(s.finished.get());
        ::WaitForSingleObject(s.may_end.get(), INFINITE);
        if (s.keep_module)
            pin = nullptr;
        if (HWND handshake = s.handshake) {
            // The stopping thread destroys it from its message loop and then
            // waits for our answer to WM_PARENTNOTIFY, which never comes: the
            // thread ends, inside the system, while that thread waits there.
            ::PostMessageW(handshake, WM_CLOSE, 0, 0);
            ::SetEvent(s.posted.get());
            while ((HIWORD(::GetQueueStatus(QS_SENDMESSAGE)) & QS_SENDMESSAGE) == 0)
                ::Sleep(5);
        }
    } catch (...) {
        delete start;
        VELK_LOG(L"@@@ Exception Catched in Function: %s", L"ThreadFuncMsgProcess");
    }
    shared.reset();
    if (pin)
        ::FreeLibraryAndExitThread(pin, 0);
    return 0;
}

bool CMsgActionQueue::PushCloneRequest(const CloneMsgRequest& request) {
    return m_shared->queues.m_ovMsgCopyDataForClone.Push(request);
}
bool CMsgActionQueue::PushMoveRequest(const MoveMsgRequest& request) {
    return m_shared->queues.m_ovMsgCopyDataForMove.Push(request);
}
bool CMsgActionQueue::PushDeleteRequest(const DeleteMsgRequest& request) {
    return m_shared->queues.m_ovMsgCopyDataForDelete.Push(request);
}

template <class Record, class Push>
void CMsgActionQueue::Receive(const Record& record, Push push, HANDLE workEvent,
                              const wchar_t* fullLine) {
    // After a stop or a failed start nothing will drain the deques again,
    // and before the start nothing drains a full one yet: waiting could only
    // fail, so the request goes at once.
    const auto refuse = [] {
        VELK_LOG(L"!!! COPY_DATA: the message worker is not running, request refused");
    };
    if (m_workerGone) {
        refuse();
        return;
    }
    if (!push(record)) {
        if (!m_hThread) {
            refuse();
            return;
        }
        std::uint8_t retries = 0;
        bool queued = false;
        do {
            ::SetEvent(workEvent);
            VELK_LOG(L"%s", fullLine);
            if (::WaitForSingleObject(m_hStopEvent.get(), kFullWaitMs) == WAIT_OBJECT_0)
                break;
            if (++retries > kMaxFullRetries)
                break;
            queued = push(record);
        } while (!queued);
        if (!queued)
            VELK_LOG(L"!!! COPY_DATA: request dropped, its deque stayed full");
    }
    ::SetEvent(workEvent);
}

BOOL CMsgActionQueue::OnCopyData(HWND pWnd, const COPYDATASTRUCT* pCopyDataStruct) {
    try {
        win32::cs_guard lock(m_windowLock);
        if (!pCopyDataStruct)
            return FALSE;
        const void* data = pCopyDataStruct->lpData;
        const std::size_t size = pCopyDataStruct->cbData;
        switch (pCopyDataStruct->dwData) {
            case COPYDATA_CLONE_MSG:
                Receive(
                    DecodeRecord<CloneMsgRequest>(data, size),
                    [this](const CloneMsgRequest& r) { return PushCloneRequest(r); },
                    m_hCloneEvent.get(),
                    L"!!! COPY_DATA: m_ovMsgCopyDataForClone deque is full, waiting...");
                break;
            case COPYDATA_MOVE_MSG:
                Receive(
                    DecodeRecord<MoveMsgRequest>(data, size),
                    [this](const MoveMsgRequest& r) { return PushMoveRequest(r); },
                    m_hMoveEvent.get(),
                    L"!!! COPY_DATA: m_ovMsgCopyDataForMove deque is full, waiting...");
                break;
            case COPYDATA_DELETE_MSG: {
                const auto request = DecodeRecord<DeleteMsgRequest>(data, size);
                if (request.bDeleteAllSpam != 0) {
                    m_shared->ops.ProcDeleteAllSpamMsg(request);
                } else {
                    Receive(
                        request, [this](const DeleteMsgRequest& r) { return PushDeleteRequest(r); },
                        m_hDeleteEvent.get(),
                        L"!!! COPY_DATA: m_ovMsgCopyDataForDelete deque is full, waiting...");
                }
                break;
            }
            default:
                break;  // not ours
        }
    } catch (...) {
        VELK_LOG(L"@@@ Exception Catched in Function: %s", L"CToolBarWnd::OnCopyData");
    }
    return FALSE;
}

}  // namespace velk::actions
