// A sender list as a list control shows it: one row per entry, sorted by the
// address (the list's own order) or by the sender name, either way up. The
// rows are read from the list when they are drawn, never copied: only the
// order of the names is kept, as positions in the list.
//
// Platform-free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "senders/sender_list.h"

namespace velk::senders {

enum class SenderColumn { kAddress = 0, kName = 1 };

class SenderRows {
public:
    static constexpr std::size_t npos = SenderList::npos;

    explicit SenderRows(const SenderList& list) : list_(list) { Refresh(); }

    void SortBy(SenderColumn column, bool ascending);
    SenderColumn column() const { return column_; }
    bool ascending() const { return ascending_; }

    // Takes in the list's changes; called after every change of the list.
    void Refresh();

    // The rows as of the last Refresh.
    std::size_t Count() const { return count_; }
    // False past the end (the list shrank since the last Refresh).
    bool At(std::size_t row, SenderRecord& record) const;
    // The row showing `address` (any case), or npos.
    std::size_t RowOf(std::u16string_view address) const;

private:
    std::size_t EntryOf(std::size_t row) const;

    const SenderList& list_;
    SenderColumn column_ = SenderColumn::kAddress;
    bool ascending_ = true;
    std::size_t count_ = 0;
    // Positions in the list in ascending name order; only while sorted by name.
    std::vector<std::uint32_t> byName_;
};

}  // namespace velk::senders
