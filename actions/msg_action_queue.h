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
// event included: a stop signal consumed by a drain's poll or by the
// receiver's wait is not seen again, and the worker runs on. Because of that
// the worker shares ownership of its state, holds its own duplicates of the
// event handles and keeps the add-in's module loaded while it runs: Stop may
// close the component's handles after 3000 ms while such a worker is still
// running, and nothing it uses goes away.
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
    // Sets the stop event, waits at most 3000 ms for the worker, then closes
    // the five handles whatever the wait gave. True when the worker ended.
    bool Stop();
    // Sets the stop event without waiting, as Stop does first.
    void RequestStop();
    bool IsStarted() const noexcept { return static_cast<bool>(m_hThread); }

    // WM_COPYDATA: always FALSE to the sender.
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
};

}  // namespace velk::actions
