#include "senders/sender_entry.h"

#include "senders/sender_text.h"

namespace velk::senders::detail {

SenderEntry::SenderEntry(std::u16string_view keyAddress, std::u16string_view name,
                         std::u16string_view address, const allocator_type& alloc)
    : text_(alloc), keyLength_(keyAddress.size()), nameLength_(name.size()) {
    text_.reserve(keyAddress.size() + name.size() + address.size());
    text_.append(keyAddress).append(name).append(address);
    for (std::size_t i = 0; i < keyLength_; ++i)
        text_[i] = FoldKeyChar(text_[i]);
}

SenderEntry::SenderEntry(const SenderEntry& other, const allocator_type& alloc)
    : text_(other.text_, alloc), keyLength_(other.keyLength_), nameLength_(other.nameLength_) {}

SenderEntry::SenderEntry(SenderEntry&& other, const allocator_type& alloc)
    : text_(std::move(other.text_), alloc),
      keyLength_(other.keyLength_),
      nameLength_(other.nameLength_) {}

void SenderEntry::Reset(std::u16string_view name, std::u16string_view address) {
    // `name` or `address` may point into the current buffer: build the new
    // one first.
    std::pmr::u16string text(text_.get_allocator());
    text.reserve(keyLength_ + name.size() + address.size());
    text.append(Key()).append(name).append(address);
    text_.swap(text);
    nameLength_ = name.size();
}

}  // namespace velk::senders::detail
