// How a SenderList stores one entry: key, name and address in one buffer of
// the list's memory pool. A full list is 8000 entries, and loading one is
// mostly taking and returning their memory: one buffer per entry, in a sorted
// array rather than a tree of nodes, keeps that cheap.
#pragma once

#include <cstddef>
#include <memory_resource>
#include <string>
#include <string_view>

namespace velk::senders::detail {

class SenderEntry {
public:
    using allocator_type = std::pmr::polymorphic_allocator<char16_t>;

    // The key is `keyAddress` with A-Z lower-cased.
    SenderEntry(std::u16string_view keyAddress, std::u16string_view name,
                std::u16string_view address, const allocator_type& alloc);
    SenderEntry(const SenderEntry& other, const allocator_type& alloc);
    SenderEntry(SenderEntry&& other, const allocator_type& alloc);

    std::u16string_view Key() const { return {text_.data(), keyLength_}; }
    std::u16string_view Name() const { return {text_.data() + keyLength_, nameLength_}; }
    std::u16string_view Address() const {
        const std::size_t start = keyLength_ + nameLength_;
        return {text_.data() + start, text_.size() - start};
    }

    SenderEntry(SenderEntry&&) = default;
    SenderEntry& operator=(SenderEntry&&) = default;

    // New name and address under the same key; either may point into this
    // entry.
    void Reset(std::u16string_view name, std::u16string_view address);

private:
    std::pmr::u16string text_;
    std::size_t keyLength_;
    std::size_t nameLength_;
};

// Orders entries by key, and finds them by a key given as text.
struct SenderEntryOrder {
    bool operator()(const SenderEntry& a, std::u16string_view b) const { return a.Key() < b; }
};

}  // namespace velk::senders::detail
