// The operations the scanning process's requests end in, carried out on the
// mail client's message store: re-write a message's headers in place
// (clone), the same then move it (move), delete one message, and purge the
// quarantined messages of a folder.
//
// The toolbar window reaches them through the action queue; their log lines
// keep the toolbar window's qualified names ("CToolBarWnd::ProcCloneMsg"),
// which is what support staff search the logs for.
//
// Each operation opens the store afresh, and ends either normally or in the
// two "Exception Catched" / "is not complete" log lines with every interface
// it obtained released. Nothing is retried; a request taken from its deque is
// gone either way.
#pragma once

#include <windows.h>

#include <functional>

#include "actions/QzStoreInterfaces.h"
#include "actions/copydata_records.h"
#include "actions/msg_request_queues.h"
#include "common_src/win32/handles.h"

namespace velk::actions {

// Opens the message store; a failing HRESULT leaves *folderMgr null.
using StoreFactory = std::function<HRESULT(IQzFolderMgr** folderMgr)>;

// CoCreateInstance of the store component's server (CLSCTX_ALL).
HRESULT CreateStoreFolderMgr(IQzFolderMgr** folderMgr);

class CFolderMsgOps {
public:
    explicit CFolderMsgOps(CMsgRequestQueues& queues, StoreFactory factory = CreateStoreFolderMgr);

    // Worker thread, one request per call from the front of its deque.
    // 1 when the deque was empty, otherwise 0 or 1 as the operation ended.
    int ProcCloneMsg();
    int ProcMoveMsg();
    int ProcDeleteMsg();

    // UI thread, straight from the receiver: 1 after a purge pass, 0 when it
    // could not start.
    int ProcDeleteAllSpamMsg(const DeleteMsgRequest& request);

    // True when the message has header `name` and its value is not "0".
    // Store failures are thrown to the calling operation.
    static bool CheckPropertyExist(IQzMessage* spMessage, const wchar_t* name);

private:
    struct OpenedMessage;
    // Store, folder, message and body handle for clone and move; false (after
    // the matching error line) when the operation is to end with 0.
    bool OpenMessage(ULONG folderId, ULONG msgId, OpenedMessage& opened) const;
    win32::com_ptr<IQzFolderMgr> OpenStore() const;

    CMsgRequestQueues& m_queues;
    StoreFactory m_factory;
};

}  // namespace velk::actions
