// An in-memory dialog template for tests, so that a test needs no resource
// script: the dialog in 8 pt "MS Shell Dlg" and its controls by class name.
#pragma once

#include <windows.h>

#include <vector>

namespace velk::win32::testing {

class DialogTemplate {
public:
    DialogTemplate(DWORD style, short cx, short cy, const wchar_t* title = L"") {
        Dword(style | DS_SETFONT);
        Dword(0);
        words_.push_back(0);  // control count, raised by Control()
        words_.insert(words_.end(), {0, 0, static_cast<WORD>(cx), static_cast<WORD>(cy), 0, 0});
        Text(title);
        words_.push_back(8);
        Text(L"MS Shell Dlg");
    }
    DialogTemplate& Control(const wchar_t* cls, WORD id, DWORD style, short x, short y, short cx,
                            short cy) {
        if (words_.size() % 2 != 0)
            words_.push_back(0);  // DWORD-aligned items
        Dword(WS_CHILD | WS_VISIBLE | style);
        Dword(0);
        words_.insert(words_.end(), {static_cast<WORD>(x), static_cast<WORD>(y),
                                     static_cast<WORD>(cx), static_cast<WORD>(cy), id});
        Text(cls);
        words_.insert(words_.end(), {0, 0});  // no title, no creation data
        ++words_[4];
        return *this;
    }
    const DLGTEMPLATE* get() const { return reinterpret_cast<const DLGTEMPLATE*>(words_.data()); }

private:
    void Dword(DWORD v) {
        words_.push_back(LOWORD(v));
        words_.push_back(HIWORD(v));
    }
    void Text(const wchar_t* s) {
        do
            words_.push_back(*s);
        while (*s++);
    }
    std::vector<WORD> words_;
};

}  // namespace velk::win32::testing
