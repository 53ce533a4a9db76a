// The receiver of the scanning process's WM_COPYDATA requests and the worker
// thread that carries them out, as one component the toolbar window holds:
// its WM_COPYDATA handler calls OnCopyData, its creation calls Start and its
// WM_CLOSE calls Stop.
//
// Requests of each kind wait in a bounded deque (51 at most). A receipt that
// meets a full deque keeps the sender waiting in 100 ms steps, at most 21
// times, then drops the request: the scanning process is paced by the store
// rather than growing our queues without bound. A delete-all-spam request is
// never queued; it runs at once on the receiving (UI) thread.
//
// Events are auto-reset, so every wait that sees one also clears it, the stop
// event included. A stop is nevertheless never lost: it is also kept as a
// flag that the worker reads between requests, so a stop always ends the
// worker once the request it is carrying out is done.
//
// The worker holds a reference on the add-in's module and leaves through
// FreeLibraryAndExitThread, so the library is never unmapped under it. That
// reference may be the last one (the client freed the library while the
// add-in ran), so where the worker drops it matters: StopForUnload lets the
// worker drop it only once the user-interface thread has handled a message
// sent to a system window of its own, that is, once that thread is back in
// the client's message loop and out of the add-in's code for good.
#pragma once

#include <windows.h>

#include <memory>

#include "actions/copydata_records.h"
#include "actions/folder_msg_ops.h"
#include "actions/msg_request_queues.h"
#include "common_src/win32/handles.h"

namespace velk::actions {

class CMsgActionQueue {
public:
    // `windowLock` is the receiving window's critical section, held across
    // each whole receipt.
    explicit CMsgActionQueue(win32::critical_section& windowLock,
                             StoreFactory factory = CreateStoreFolderMgr);
    ~CMsgActionQueue();
    CMsgActionQueue(const CMsgActionQueue&) = delete;
    CMsgActionQueue& operator=(const CMsgActionQueue&) = delete;

    // Creates the four events, empties the deques and starts the worker.
    // False (logged) when an event or the thread could not be created.
    bool Start();
    // Sets the stop event and waits at most 3000 ms for the worker to finish
    // the request it is carrying out, then closes the five handles whatever
    // the wait gave. True when the worker finished within the wait. Here the
    // worker drops its module reference at once: for callers whose module
    // cannot be unloaded by that (tests, benchmarks).
    bool Stop();
    // The same for the add-in, which may be unloaded by the worker's
    // reference: the worker drops it only after the thread that owns
    // `handshake` (a window of a system class, which it closes) has handled
    // a message sent to it. A null `handshake` keeps the module loaded for
    // the rest of the process.
    bool StopForUnload(HWND handshake);
    // Sets the stop event without waiting, as Stop does first.
    void RequestStop();
    bool IsStarted() const noexcept { return static_cast<bool>(m_hThread); }

    // WM_COPYDATA: always FALSE to the sender. Without a running worker
    // (stopped, or failed to start) each request is refused at once with
    // one log line.
    BOOL OnCopyData(HWND pWnd, const COPYDATASTRUCT* pCopyDataStruct);

    // True when queued, false when the deque was full.
    bool PushCloneRequest(const CloneMsgRequest& request);
    bool PushMoveRequest(const MoveMsgRequest& request);
    bool PushDeleteRequest(const DeleteMsgRequest& request);

    CMsgRequestQueues& Queues() noexcept;
    CFolderMsgOps& Operations() noexcept;

private:
    struct Shared;
    struct WorkerStart;
    bool StartWorker();
    bool StopWith(HWND handshake, bool keep_module);
    static unsigned __stdcall ThreadFuncMsgProcess(void* start);

    template <class Record, class Push>
    void Receive(const Record& record, Push push, HANDLE workEvent, const wchar_t* fullLine);

    win32::critical_section& m_windowLock;
    StoreFactory m_factory;
    std::shared_ptr<Shared> m_shared;
    win32::unique_event m_hStopEvent;
    win32::unique_event m_hCloneEvent;
    win32::unique_event m_hMoveEvent;
    win32::unique_event m_hDeleteEvent;
    win32::unique_handle m_hThread;
    // Stopped, or failed to start: no worker will drain the deques.
    bool m_workerGone = false;
};

}  // namespace velk::actions
