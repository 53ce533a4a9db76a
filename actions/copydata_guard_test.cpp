// A WM_COPYDATA payload that ends right at a PAGE_NOACCESS page: a receipt
// that reads one byte past cbData faults at once. Every cbData from 0 to the
// record's size is sent for every kind of record.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "actions/actions_test_support.h"
#include "actions/record_decode.h"

namespace velk::actions {
namespace {

using namespace velk::actions::testing;

class CopyDataGuard : public ::testing::Test {
protected:
    void SetUp() override {
        base = static_cast<std::uint8_t*>(
            ::VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old = 0;
        ASSERT_TRUE(base && ::VirtualProtect(base + kPage, kPage, PAGE_NOACCESS, &old));
        window.set_queue(&queue);
    }
    void TearDown() override { ::VirtualFree(base, 0, MEM_RELEASE); }

    // Sends the first `size` bytes of `bytes` so that they end at the guard.
    void SendGuarded(ULONG_PTR dwData, const std::vector<std::uint8_t>& bytes, std::size_t size) {
        std::memcpy(base + kPage - size, bytes.data(), size);
        EXPECT_EQ(FALSE, window.Send(dwData, base + kPage - size, size));
    }
    // Sends every length of a record and checks what was queued: the bytes
    // sent, up to what a queued element keeps, then zeros.
    template <class Record, class Deque>
    void SendEveryLength(ULONG_PTR dwData, Deque& deque, const std::vector<std::uint8_t>& bytes) {
        for (std::size_t size = 0; size <= sizeof(Record); ++size) {
            SendGuarded(dwData, bytes, size);
            Record queued;
            ASSERT_TRUE(deque.PopFront(queued)) << size;
            const auto* raw = reinterpret_cast<const std::uint8_t*>(&queued);
            const std::size_t kept = std::min(size, KeptBytes<Record>());
            for (std::size_t i = 0; i < sizeof(Record); ++i)
                ASSERT_EQ(i < kept ? bytes[i] : 0, raw[i]) << "cbData " << size << ", byte " << i;
        }
    }
    // Non-zero everywhere, so a missing terminator or an unzeroed byte shows.
    static std::vector<std::uint8_t> Pattern() {
        std::vector<std::uint8_t> bytes(sizeof(MoveMsgRequest));
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = std::uint8_t(i % 251 + 1);
        return bytes;
    }

    static constexpr std::size_t kPage = 4096;
    std::uint8_t* base = nullptr;
    int storeOpened = 0;
    ReceiverWindow window;
    // Not started; the purge path ends at the store's creation.
    CMsgActionQueue queue{window.lock(), [this](IQzFolderMgr** out) {
                              ++storeOpened;
                              *out = nullptr;
                              return E_FAIL;
                          }};
};

TEST_F(CopyDataGuard, CloneAndMoveRecordsOfEveryLengthAreReadOnlyUpToCbData) {
    SendEveryLength<CloneMsgRequest>(COPYDATA_CLONE_MSG, queue.Queues().m_ovMsgCopyDataForClone,
                                     Pattern());
    SendEveryLength<MoveMsgRequest>(COPYDATA_MOVE_MSG, queue.Queues().m_ovMsgCopyDataForMove,
                                    Pattern());
}

TEST_F(CopyDataGuard, DeleteRecordsOfEveryLengthQueueOrPurgeWithoutReadingPastCbData) {
    auto bytes = Pattern();
    bytes[offsetof(DeleteMsgRequest, bDeleteAllSpam)] = 0;
    SendEveryLength<DeleteMsgRequest>(COPYDATA_DELETE_MSG, queue.Queues().m_ovMsgCopyDataForDelete,
                                      bytes);
    EXPECT_EQ(0, storeOpened);
    // With the flag: short records lack it and are queued; from 9 bytes on
    // they purge at once (here ending at the store's creation).
    bytes[offsetof(DeleteMsgRequest, bDeleteAllSpam)] = 1;
    for (std::size_t size = 0; size <= sizeof(DeleteMsgRequest); ++size)
        SendGuarded(COPYDATA_DELETE_MSG, bytes, size);
    EXPECT_EQ(4, storeOpened);
    EXPECT_EQ(9u, queue.Queues().m_ovMsgCopyDataForDelete.Size());
}

TEST_F(CopyDataGuard, OtherKindsAndMissingRecordsAreIgnoredWithoutReadingAByte) {
    // cbData claims a whole record, but not one byte of it is readable; the
    // full 64-bit dwData counts, not its low bits.
    for (ULONG_PTR dwData :
         {ULONG_PTR{0}, ULONG_PTR{1075}, ULONG_PTR{1079}, ULONG_PTR{0x100000434}})
        EXPECT_EQ(FALSE, window.Send(dwData, base + kPage, sizeof(MoveMsgRequest)));
    EXPECT_EQ(FALSE, ::SendMessageW(window.hwnd(), WM_COPYDATA, 0, 0));
    EXPECT_TRUE(queue.Queues().m_ovMsgCopyDataForClone.Empty());
    EXPECT_TRUE(queue.Queues().m_ovMsgCopyDataForMove.Empty());
    EXPECT_TRUE(queue.Queues().m_ovMsgCopyDataForDelete.Empty());
}

}  // namespace
}  // namespace velk::actions
