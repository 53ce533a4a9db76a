#include "common_src/win32/entry_scope.h"

#include <utility>
#include <vector>

namespace velk::win32 {
namespace {

// Plain per-thread values: the list is made on the first deferral only.
thread_local int t_depth = 0;
thread_local std::vector<std::function<void()>>* t_deferred = nullptr;

void RunDeferred() noexcept {
    while (t_deferred != nullptr) {
        std::vector<std::function<void()>>* actions = t_deferred;
        t_deferred = nullptr;
        for (auto& action : *actions) {
            try {
                action();
            } catch (...) {
                // Deferred actions are promised not to throw; nothing to report to.
            }
        }
        delete actions;
    }
}

}  // namespace

EntryScope::EntryScope() noexcept {
    ++t_depth;
}

EntryScope::~EntryScope() {
    if (--t_depth == 0)
        RunDeferred();
}

int EntryDepth() noexcept {
    return t_depth;
}

void WhenOutOfModule(std::function<void()> action) {
    if (t_depth == 0) {
        action();
        return;
    }
    if (t_deferred == nullptr)
        t_deferred = new std::vector<std::function<void()>>();
    t_deferred->push_back(std::move(action));
}

}  // namespace velk::win32
