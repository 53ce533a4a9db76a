// The three request deques the receiver fills and the worker drains. The
// member names are the ones the diagnostic log lines name.
#pragma once

#include "actions/copydata_records.h"
#include "actions/request_deque.h"
#include "common_src/win32/handles.h"

namespace velk::actions {

template <class Record>
using RequestDeque = BoundedRequestDeque<Record, win32::critical_section>;

struct CMsgRequestQueues {
    RequestDeque<CloneMsgRequest> m_ovMsgCopyDataForClone;
    RequestDeque<MoveMsgRequest> m_ovMsgCopyDataForMove;
    RequestDeque<DeleteMsgRequest> m_ovMsgCopyDataForDelete;

    void Clear() {
        m_ovMsgCopyDataForClone.Clear();
        m_ovMsgCopyDataForMove.Clear();
        m_ovMsgCopyDataForDelete.Clear();
    }
};

}  // namespace velk::actions
