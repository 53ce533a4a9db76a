// A stock EDIT control that takes digits only: typed characters other than
// "0" to "9" are refused with a beep, and so is pasted text that holds
// anything but digits once the blanks and line ends around it are gone (a
// number copied from a web page or a mail often carries them). Text the
// program sets (WM_SETTEXT) is left alone: the window that owns the edit
// decides what to show.
//
// ES_NUMBER alone is not enough: it lets any text in through the clipboard.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/subclassed_window.h"

namespace velk::controls {

class DigitEdit : public win32::SubclassedWindow {
public:
    // The digits of `text` once leading and trailing blanks (spaces, tabs,
    // line ends) are removed; false when anything else is left in it.
    static bool DigitsOf(const std::wstring& text, std::wstring& digits);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    bool PasteFromClipboard();
};

}  // namespace velk::controls
