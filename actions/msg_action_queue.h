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
// add-in ran), so when the worker drops it matters. After StopForUnload the
// worker drops it only (1) once the stopping thread has let it go, which that
// thread does when no code of the add-in is on its stack any more, and (2)
// while that thread is held inside the system: the worker posts WM_CLOSE to a
// window of the stopping thread whose parent is a window of the worker, so
// that thread, destroying it from its message loop, waits in the system's
// WM_PARENTNOTIFY for the worker, which ends without answering. The library
// is thus unmapped either by the worker while the client's thread is out of
// our code, or, when the client still holds it, by the client's own
// FreeLibrary afterwards, on its own thread and at once.
#pragma once

#include <windows.h>

#include <functional>
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
    // The same for the add-in, whose last reference the worker may hold
    // (see above): the worker ends only after the returned action has run on
    // this thread, which the caller does once its thread is out of the
    // add-in's code, and after this thread has come back to its message loop.
    // Where that cannot be arranged, the worker keeps the module loaded for
    // the rest of the process.
    std::function<void()> StopForUnload();
    // Sets the stop event without waiting, as Stop does first.
    void RequestStop();
    bool IsStarted() const noexcept { return static_cast<bool>(m_hThread); }
    // Started and its thread still running (at process exit it is not).
    bool WorkerAlive() const noexcept;

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
    bool StopWith(bool for_unload);
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
