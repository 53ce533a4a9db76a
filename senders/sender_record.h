// One sender of the approved or blocked list.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velk::senders {

struct SenderRecord {
    std::u16string name;     // display name as typed or as the header gave it; may be empty
    std::u16string address;  // address or pattern, case as entered; may hold "*"
};

inline bool operator==(const SenderRecord& a, const SenderRecord& b) {
    return a.name == b.name && a.address == b.address;
}
inline bool operator!=(const SenderRecord& a, const SenderRecord& b) {
    return !(a == b);
}

// A record borrowed for writing, from a SenderRecord or from the list's own
// storage.
struct SenderRecordRef {
    std::u16string_view name;
    std::u16string_view address;

    SenderRecordRef(std::u16string_view n, std::u16string_view a) : name(n), address(a) {}
    // Implicit, so that a SenderRecord can be passed wherever a Ref is taken.
    SenderRecordRef(const SenderRecord& r) : name(r.name), address(r.address) {}
};

enum class SenderListKind { kApproved, kBlocked };

// Each list has its own limit; the pages quote their own list's in the
// list-full message.
inline constexpr std::size_t kMaxApprovedSenders = 8000;
inline constexpr std::size_t kMaxBlockedSenders = 8000;

}  // namespace velk::senders
