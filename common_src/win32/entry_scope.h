// How deep this module's code is on the current thread's stack.
//
// Every procedure the system calls into (window, dialog, page and subclass
// procedures, the add-in's exports) holds an EntryScope for its whole run,
// its default processing included. When the count is 0, no frame of this
// module is on the thread's stack: from there the thread can only re-enter
// it through one of those procedures. The add-in uses that to let its last
// module reference go only once the client's thread is out of its code, so
// the library is never unmapped under a frame of its own (a modal loop of
// the client, say, running under the hook on the client's window).
#pragma once

#include <functional>

namespace velk::win32 {

class EntryScope {
public:
    EntryScope() noexcept;
    // Leaving the outermost scope runs what WhenOutOfModule deferred.
    ~EntryScope();
    EntryScope(const EntryScope&) = delete;
    EntryScope& operator=(const EntryScope&) = delete;
};

// The current thread's depth.
int EntryDepth() noexcept;

// Runs `action` on this thread as soon as its depth is 0: at once when it is
// 0 now, else when the outermost EntryScope ends. The action must not need
// this module's objects that may be gone by then, and must not throw.
void WhenOutOfModule(std::function<void()> action);

}  // namespace velk::win32
