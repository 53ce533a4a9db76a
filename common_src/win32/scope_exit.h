// Runs a callable when the scope ends, unless dismissed.
#pragma once

#include <utility>

namespace velk {

template <class F>
class scope_exit_t {
public:
    explicit scope_exit_t(F f) noexcept : f_(std::move(f)) {}
    ~scope_exit_t() {
        if (active_) f_();
    }
    scope_exit_t(const scope_exit_t&) = delete;
    scope_exit_t& operator=(const scope_exit_t&) = delete;
    void dismiss() noexcept { active_ = false; }

private:
    F f_;
    bool active_ = true;
};

template <class F>
scope_exit_t<F> scope_exit(F f) noexcept {
    return scope_exit_t<F>(std::move(f));
}

}  // namespace velk
