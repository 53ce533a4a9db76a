#include "common_src/win32/modal_script.h"

#include <memory>

namespace velk::win32 {
namespace {

// The thread's running script; a thread timer carries no pointer of its own.
thread_local ModalScript* g_running = nullptr;

BOOL CALLBACK DestroyDialog(HWND window, LPARAM) {
    wchar_t name[16] = L"";
    ::GetClassNameW(window, name, 16);
    if (std::wstring(name) == L"#32770")
        ::DestroyWindow(window);
    return TRUE;
}

}  // namespace

ModalScript& ModalScript::Then(std::wstring what, Step step) {
    steps_.push_back(Entry{std::move(what), std::move(step)});
    return *this;
}

ModalScript& ModalScript::Do(std::function<void()> action) {
    return Then([action] {
        action();
        return true;
    });
}

ModalScript& ModalScript::Wait(DWORD ms) {
    auto started = std::make_shared<DWORD>(0);
    return Then([started, ms] {
        if (*started == 0)
            *started = ::GetTickCount() | 1;
        if (::GetTickCount() - *started < ms)
            return false;
        *started = 0;  // the script may run again
        return true;
    });
}

bool ModalScript::Run(const std::function<void()>& modal) {
    next_ = 0;
    timed_out_ = false;
    step_started_ = ::GetTickCount();
    ModalScript* outer = g_running;
    g_running = this;
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 25, &Tick);
    modal();
    ::KillTimer(nullptr, timer);
    g_running = outer;
    return !timed_out_ && next_ == steps_.size();
}

std::wstring ModalScript::stopped_what() const {
    return next_ < steps_.size() ? steps_[next_].what : std::wstring();
}

void CALLBACK ModalScript::Tick(HWND, UINT, UINT_PTR, DWORD) {
    if (g_running != nullptr)
        g_running->OnTick();
}

void ModalScript::OnTick() {
    // A step may run a message loop of its own (a message box): the timer
    // must not start the next step inside it.
    if (busy_ || timed_out_ || next_ >= steps_.size())
        return;
    busy_ = true;
    if (steps_[next_].step()) {
        ++next_;
        step_started_ = ::GetTickCount();
    } else if (::GetTickCount() - step_started_ > step_timeout_ms_) {
        timed_out_ = true;
        ::EnumThreadWindows(::GetCurrentThreadId(), &DestroyDialog, 0);
    }
    busy_ = false;
}

}  // namespace velk::win32
