// A top-level window holding one VirtualListView over made-up rows, for the
// control's test and benchmark.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

#include "common_src/win32/reflection.h"
#include "common_src/win32/window.h"
#include "controls/virtual_list_view.h"

namespace velk::controls::testing {

// Row i shows "sender<i>@example.com" and "Sender <i>"; sorting reorders a
// permutation, and every cell read is counted.
class NumberedRows : public ListRows {
public:
    explicit NumberedRows(std::size_t count) { Resize(count); }
    std::size_t RowCount() const override { return order_.size(); }
    std::wstring CellText(std::size_t row, int column) const override;
    void SortBy(int column, bool ascending) override;

    void Resize(std::size_t count);
    mutable std::size_t reads = 0;
    int sorted_column = -1;
    bool sorted_ascending = true;

private:
    std::vector<std::size_t> order_;
};

// Shown without activation at (40, 40), 420 x 300, the list filling it.
class ListHost : public win32::Window {
public:
    // Without rows the host starts empty, for ShowList.
    explicit ListHost(ListRows* rows);
    ~ListHost() override { Destroy(); }
    VirtualListView& list() { return list_; }
    HWND list_hwnd() const { return list_.hwnd(); }

    // Creates the list over `rows` (destroying one shown before) and
    // paints it.
    void ShowList(ListRows& rows);
    void DestroyList() {
        if (HWND list = list_.hwnd())
            ::DestroyWindow(list);
    }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        return win32::ReflectToOwner(hwnd(), msg, wp, lp, result);
    }

private:
    VirtualListView list_;
};

// Dispatches what is queued for this thread.
void Pump();

}  // namespace velk::controls::testing
