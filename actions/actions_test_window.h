// A plain hidden window that hands WM_COPYDATA to the receiver, standing
// where the toolbar window will, and builders of request records. Used by the
// tests and the benchmarks.
#pragma once

#include <windows.h>

#include <cstdint>

#include "actions/copydata_records.h"
#include "actions/msg_action_queue.h"
#include "common_src/win32/handles.h"

namespace velk::actions::testing {

class ReceiverWindow {
public:
    explicit ReceiverWindow(const wchar_t* className = L"VelkActionsTestWnd") {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &Proc;
        wc.hInstance = ::GetModuleHandleW(nullptr);
        wc.lpszClassName = className;
        ::RegisterClassW(&wc);  // fails harmlessly when registered before
        hwnd_.reset(::CreateWindowExW(0, className, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                      wc.hInstance, nullptr));
        ::SetWindowLongPtrW(hwnd_.get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    HWND hwnd() const { return hwnd_.get(); }
    win32::critical_section& lock() { return lock_; }
    void set_queue(CMsgActionQueue* queue) { queue_ = queue; }

    LRESULT Send(ULONG_PTR dwData, const void* data, std::size_t size) {
        COPYDATASTRUCT cds{dwData, static_cast<DWORD>(size), const_cast<void*>(data)};
        return ::SendMessageW(hwnd_.get(), WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&cds));
    }
    template <class Record>
    LRESULT Send(ULONG_PTR dwData, const Record& record) {
        return Send(dwData, &record, sizeof record);
    }

private:
    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
        auto* self = reinterpret_cast<ReceiverWindow*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
        if (msg == WM_COPYDATA && self && self->queue_)
            return self->queue_->OnCopyData(reinterpret_cast<HWND>(wp),
                                            reinterpret_cast<const COPYDATASTRUCT*>(lp));
        return ::DefWindowProcW(hwnd, msg, wp, lp);
    }

    win32::critical_section lock_;
    CMsgActionQueue* queue_ = nullptr;
    win32::unique_hwnd hwnd_;
};

template <class Record>
Record WithText(Record r, const wchar_t* text) {
    for (std::size_t i = 0; text[i] && i + 1 < kHeaderUnits; ++i)
        r.szHeaders[i] = char16_t(text[i]);
    return r;
}
inline CloneMsgRequest Clone(std::uint32_t folder, std::uint32_t msg, const wchar_t* headers = L"",
                             std::uint32_t option = 0) {
    return WithText(CloneMsgRequest{option, folder, msg, {}}, headers);
}
inline MoveMsgRequest Move(std::uint32_t src, std::uint32_t dst, std::uint32_t msg,
                           std::uint32_t verdict, std::uint32_t quarantine,
                           const wchar_t* headers = L"", std::uint32_t option = 0) {
    return WithText(MoveMsgRequest{quarantine, option, verdict, src, dst, msg, {}}, headers);
}
inline DeleteMsgRequest Delete(std::uint32_t folder, std::uint32_t msg, bool allSpam = false) {
    return DeleteMsgRequest{folder, msg, std::uint8_t(allSpam ? 1 : 0), {}};
}

}  // namespace velk::actions::testing
