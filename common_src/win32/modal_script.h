// Drives our own modal windows from inside their loop: steps run one at a
// time from a thread timer while a modal call of the same thread (a dialog,
// a property sheet, a message box) runs. The tests of the settings windows
// and the screenshot tool use it; it is not part of the add-in.
#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace velk::win32 {

class ModalScript {
public:
    // A step is retried on every tick until it returns true.
    using Step = std::function<bool()>;

    // A step that does not finish within `step_timeout_ms` ends the script:
    // every dialog of the thread is destroyed so the modal call returns.
    explicit ModalScript(DWORD step_timeout_ms) : step_timeout_ms_(step_timeout_ms) {}

    // `what` names the step in a failure.
    ModalScript& Then(std::wstring what, Step step);
    ModalScript& Then(Step step) { return Then(std::wstring(), std::move(step)); }
    ModalScript& Do(std::function<void()> action);
    ModalScript& Wait(DWORD ms);

    // Runs `modal` (which returns when its window closes) with the steps
    // ticking. True when every step finished.
    bool Run(const std::function<void()>& modal);

    // After Run: whether a step ran out of time, and the first step that did
    // not finish (its index is the step count when all did).
    bool timed_out() const noexcept { return timed_out_; }
    std::size_t stopped_at() const noexcept { return next_; }
    std::wstring stopped_what() const;

private:
    struct Entry {
        std::wstring what;
        Step step;
    };
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD);
    void OnTick();

    DWORD step_timeout_ms_;
    std::vector<Entry> steps_;
    std::size_t next_ = 0;
    DWORD step_started_ = 0;
    bool busy_ = false;
    bool timed_out_ = false;
};

}  // namespace velk::win32
