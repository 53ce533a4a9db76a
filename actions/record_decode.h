// Turning the bytes of a WM_COPYDATA payload into a request record.
//
// The scanning process sends fixed-size records, but nothing stops a sender
// (or a broken one) from passing fewer bytes than the record holds. We read
// only what was sent, take the rest as zeros, and never read bytes we will not
// keep: a queued element keeps only the first kQueuedHeaderBytes of the text,
// and the rest of its text field is zero, so the text is always terminated.
//
// Platform-free: tested natively and fuzzed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "actions/copydata_records.h"

namespace velk::actions {

// How many bytes of a record the add-in ever looks at: the fixed fields and
// the part of the text that a queued element keeps.
template <class Record>
constexpr std::size_t KeptBytes() noexcept {
    if constexpr (std::is_same_v<Record, DeleteMsgRequest>) {
        return sizeof(Record);
    } else {
        return offsetof(Record, szHeaders) + kQueuedHeaderBytes;
    }
}

// The record as a queued element holds it: fixed fields and the first
// kQueuedHeaderBytes of the text; the rest of the text field is zero.
template <class Record>
Record QueuedCopy(const Record& source) noexcept {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record out{};
    std::memcpy(&out, &source, KeptBytes<Record>());
    return out;
}

// Reads at most `size` bytes of `data` (a null `data` counts as no bytes) and
// returns the record as it would be queued.
template <class Record>
Record DecodeRecord(const void* data, std::size_t size) noexcept {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record out{};
    const std::size_t n = data ? std::min(size, KeptBytes<Record>()) : 0;
    if (n != 0)
        std::memcpy(&out, data, n);
    return out;
}

}  // namespace velk::actions
