// The approved-senders and blocked-senders lists: one SenderList each, keyed
// by the address with A-Z lower-cased, ordered by UTF-16 code units, stored in
// the list files that the scanning process reads and writes too.
#pragma once

#include <cstdint>
#include <map>
#include <memory_resource>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "senders/sender_codec.h"
#include "senders/sender_entry.h"
#include "senders/sender_file_system.h"
#include "senders/sender_record.h"

namespace velk::senders {

// Results of SenderList::Add.
inline constexpr int kSenderExists = 0;
inline constexpr int kSenderAdded = 1;
inline constexpr int kSenderListFull = 2;

// The banner written at the top of every list file; the scanning process
// checks for it (and for the two older ones it accepts, see the .cpp).
inline constexpr std::string_view kListBanner = "; Written by VELK v3.5 (c) 2005 Nuvexa";

// A list file holds at most 8000 lines of a few hundred bytes; anything past
// this is not read (a huge file must not exhaust the mail client's memory).
inline constexpr std::size_t kMaxListFileBytes = 64u << 20;

// The list file of `kind` in `folder`. The folder string ends with its
// separator: the name is appended directly.
std::u16string SenderListPath(std::u16string_view folder, SenderListKind kind);

class SenderList {
public:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    explicit SenderList(SenderListKind kind, ISenderFileSystem& fs = PlatformFileSystem());
    SenderList(const SenderList&) = delete;
    SenderList& operator=(const SenderList&) = delete;

    std::size_t Capacity() const { return format_.capacity; }

    // Replaces the contents with the file's. A missing or unreadable file is an
    // empty list (true); a file without a known banner leaves the list empty and
    // answers false. Malformed lines, duplicates and lines past the capacity
    // are dropped.
    bool Load(const std::u16string& path);

    // Writes the whole list through a temporary file beside `path`, so the old
    // list survives any failure (see safe_file.h). False when the file does
    // not hold the list afterwards; the failure is logged.
    bool Save(const std::u16string& path);

    // The list was changed (added to, modified, removed from) since it was
    // last loaded or saved.
    bool Modified() const;

    // kSenderAdded; kSenderExists when the key is taken (the first entry
    // wins); kSenderListFull at the capacity (checked first).
    int Add(std::u16string_view address, const SenderRecord& record);

    bool Exists(std::u16string_view address) const;

    // The key exists and its stored name equals `name` exactly.
    bool IsSameRecord(std::u16string_view address, std::u16string_view name) const;

    // False when the old address is no key. A new address that differs from
    // the old one only in case changes the name alone. Otherwise the entry
    // moves to the new key, stored with the new address lower-cased,
    // overwriting an entry already there; capacity is not checked.
    bool Modify(std::u16string_view oldAddress, std::u16string_view newName,
                std::u16string_view newAddress);

    void Remove(std::u16string_view address);

    std::size_t Count() const;

    // The entry at `index` in key order; false past the end.
    bool RecordAt(std::size_t index, SenderRecord& record) const;
    // The position of the address's key in key order, or npos.
    std::size_t IndexOf(std::u16string_view address) const;

    // (key, record) in key order, copied under the lock so the caller may
    // walk it while other threads change the list.
    std::vector<std::pair<std::u16string, SenderRecord>> Entries() const;

    // The keys that hold "*", in key order.
    std::vector<std::u16string> WildcardKeys() const;

private:
    bool LoadFile(const std::u16string& path);
    bool SaveFile(const std::u16string& path);
    void IndexIfWildcard(std::u16string_view key);
    using EntryVector = std::pmr::vector<detail::SenderEntry>;
    // Under the lock: where `key` is or would go.
    EntryVector::iterator LowerBound(std::u16string_view key);
    EntryVector::const_iterator Find(std::u16string_view key) const;
    // Under the lock: puts `entry` in its place unless its key is taken.
    bool Insert(detail::SenderEntry&& entry);
    // Add for Load: the same rules without the answer; false when the entry
    // was dropped (another thread may have filled the list meanwhile).
    bool AddLoaded(std::u16string_view key, std::u16string_view name, std::u16string_view address);
    std::string SerializeLocked() const;

    const SenderListFormat& format_;
    ISenderFileSystem& fs_;

    mutable std::mutex lock_;  // guards the pool, both maps and the flag
    bool modified_ = false;
    std::pmr::unsynchronized_pool_resource pool_;
    // The entries in key order (the address with A-Z lower-cased). Lists are
    // read far more than changed, and loaded mostly in order: a sorted array
    // appends as fast as it gets and binary-searches without chasing nodes.
    EntryVector entries_{&pool_};
    // Exactly the keys of entries_ that hold "*" (the patterns among the
    // senders); the value is always 0.
    std::pmr::map<std::pmr::u16string, std::int32_t, std::less<>> wildcards_{&pool_};
};

}  // namespace velk::senders
