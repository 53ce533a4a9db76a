// A bounded deque of requests of one kind, with its own lock.
//
// More than kRefuseAbove queued requests refuses a push, so a deque holds at
// most kRefuseAbove + 1 (51): the scanning process was tuned against that
// figure, so the odd bound stays.
//
// One consumer (the worker) removes from the front; any thread may push at
// the back. Empty() is lock-free so the worker's drain loop never waits for
// a receiver that is pushing; the copy of the front element and its removal
// happen together under the lock, which costs a 2 KB copy and removes any
// question of reading an element while the deque's bookkeeping is changing.
//
// Platform-free: the lock type only needs enter() and leave().
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>

#include "actions/record_decode.h"

namespace velk::actions {

constexpr std::size_t kRefuseAbove = 50;
constexpr std::size_t kMaxQueued = kRefuseAbove + 1;

template <class Record, class Lock>
class BoundedRequestDeque {
public:
    BoundedRequestDeque() = default;
    BoundedRequestDeque(const BoundedRequestDeque&) = delete;
    BoundedRequestDeque& operator=(const BoundedRequestDeque&) = delete;

    // Queues the fixed fields and the kept part of the text; false when full.
    bool Push(const Record& record) {
        Guard guard(lock_);
        if (items_.size() > kRefuseAbove)
            return false;
        items_.push_back(QueuedCopy(record));
        count_.store(items_.size(), std::memory_order_release);
        return true;
    }

    // Copies the front element into `out` and removes it; false when empty.
    bool PopFront(Record& out) {
        Guard guard(lock_);
        if (items_.empty())
            return false;
        out = items_.front();
        items_.pop_front();
        count_.store(items_.size(), std::memory_order_release);
        return true;
    }

    bool Empty() const noexcept { return count_.load(std::memory_order_acquire) == 0; }
    std::size_t Size() const noexcept { return count_.load(std::memory_order_acquire); }

    // Drops every element and gives the storage back.
    void Clear() {
        std::deque<Record> gone;
        {
            Guard guard(lock_);
            items_.swap(gone);
            count_.store(0, std::memory_order_release);
        }
    }

private:
    class Guard {
    public:
        explicit Guard(Lock& lock) : lock_(lock) { lock_.enter(); }
        ~Guard() { lock_.leave(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        Lock& lock_;
    };

    Lock lock_;
    std::deque<Record> items_;
    std::atomic<std::size_t> count_{0};
};

}  // namespace velk::actions
