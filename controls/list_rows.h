// What a virtual list shows: rows read from their owner when they are drawn
// or asked for, never copied into the control.
//
// Platform-free.
#pragma once

#include <cstddef>
#include <string>

namespace velk::controls {

class ListRows {
public:
    virtual ~ListRows() = default;

    virtual std::size_t RowCount() const = 0;
    // The text of one cell; empty past the end (the rows may have shrunk
    // since the control last counted them).
    virtual std::wstring CellText(std::size_t row, int column) const = 0;
    // Orders the rows by `column`; RowCount and CellText answer in the new
    // order afterwards.
    virtual void SortBy(int column, bool ascending) = 0;
};

}  // namespace velk::controls
