#include "actions/request_deque.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace velk::actions {
namespace {

struct MutexLock {
    void enter() { m.lock(); }
    void leave() { m.unlock(); }
    std::mutex m;
};
using CloneDeque = BoundedRequestDeque<CloneMsgRequest, MutexLock>;

CloneMsgRequest Clone(std::uint32_t folder, std::uint32_t id) {
    CloneMsgRequest r{};
    r.nFolderID = folder;
    r.nMsgID = id;
    return r;
}

TEST(BoundedRequestDeque, HoldsFiftyOneInOrderAndRefusesTheFiftySecond) {
    CloneDeque q;
    EXPECT_TRUE(q.Empty());
    for (std::uint32_t i = 0; i < 51; ++i)
        ASSERT_TRUE(q.Push(Clone(0, i))) << i;
    EXPECT_FALSE(q.Push(Clone(0, 51)));
    CloneMsgRequest out{};
    ASSERT_TRUE(q.PopFront(out));
    EXPECT_EQ(0u, out.nMsgID);
    EXPECT_TRUE(q.Push(Clone(0, 52)));  // one removed, room for exactly one
    EXPECT_FALSE(q.Push(Clone(0, 53)));
    q.Clear();
    EXPECT_TRUE(q.Empty());
    EXPECT_FALSE(q.PopFront(out));
}

TEST(BoundedRequestDeque, OneConsumerSeesEveryProducersRequestsInTheirOrder) {
    CloneDeque q;
    constexpr std::uint32_t kProducers = 3, kEach = 2000;
    std::vector<std::thread> producers;
    for (std::uint32_t p = 0; p < kProducers; ++p) {
        producers.emplace_back([&q, p] {
            for (std::uint32_t i = 0; i < kEach;) {
                if (q.Push(Clone(p, i))) {
                    ++i;
                } else {
                    std::this_thread::yield();
                }
            }
        });
    }
    std::vector<std::uint32_t> next(kProducers, 0);
    for (std::uint32_t seen = 0; seen < kProducers * kEach;) {
        CloneMsgRequest out{};
        if (q.Empty() || !q.PopFront(out)) {
            std::this_thread::yield();
            continue;
        }
        ASSERT_EQ(next.at(out.nFolderID)++, out.nMsgID);
        ASSERT_LE(q.Size(), kMaxQueued);
        ++seen;
    }
    for (auto& t : producers)
        t.join();
}

}  // namespace
}  // namespace velk::actions
