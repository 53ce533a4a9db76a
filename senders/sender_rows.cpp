#include "senders/sender_rows.h"

#include <algorithm>
#include <string>

#include "senders/sender_text.h"

namespace velk::senders {

void SenderRows::SortBy(SenderColumn column, bool ascending) {
    column_ = column;
    ascending_ = ascending;
    Refresh();
}

void SenderRows::Refresh() {
    byName_.clear();
    if (column_ != SenderColumn::kName) {
        count_ = list_.Count();
        return;
    }
    // Names compare as the keys do (A-Z folded), then by key, so the order is
    // total and stable between refreshes; senders without a name go last.
    struct Named {
        std::u16string folded;
        std::uint32_t index;
    };
    std::vector<Named> named;
    const auto entries = list_.Entries();
    named.reserve(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i)
        named.push_back({FoldKey(entries[i].second.name), static_cast<std::uint32_t>(i)});
    std::sort(named.begin(), named.end(), [](const Named& a, const Named& b) {
        if (a.folded.empty() != b.folded.empty())
            return b.folded.empty();
        if (a.folded != b.folded)
            return a.folded < b.folded;
        return a.index < b.index;
    });
    byName_.reserve(named.size());
    for (const Named& n : named)
        byName_.push_back(n.index);
    count_ = byName_.size();
}

std::size_t SenderRows::EntryOf(std::size_t row) const {
    if (row >= count_)
        return npos;
    const std::size_t ordered = ascending_ ? row : count_ - 1 - row;
    return column_ == SenderColumn::kName ? byName_[ordered] : ordered;
}

bool SenderRows::At(std::size_t row, SenderRecord& record) const {
    const std::size_t entry = EntryOf(row);
    return entry != npos && list_.RecordAt(entry, record);
}

std::size_t SenderRows::RowOf(std::u16string_view address) const {
    const std::size_t entry = list_.IndexOf(address);
    if (entry == npos || entry >= count_)
        return npos;
    std::size_t ordered = entry;
    if (column_ == SenderColumn::kName) {
        const auto it = std::find(byName_.begin(), byName_.end(), entry);
        if (it == byName_.end())
            return npos;
        ordered = static_cast<std::size_t>(it - byName_.begin());
    }
    return ascending_ ? ordered : count_ - 1 - ordered;
}

}  // namespace velk::senders
