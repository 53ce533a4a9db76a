#include "controls/digit_edit.h"

#include <string>

#include "log/diag_log.h"

namespace velk::controls {
namespace {

bool IsBlank(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n';
}

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

// The clipboard's Unicode text; false when there is none.
bool ClipboardText(HWND owner, std::wstring& text) {
    if (!::OpenClipboard(owner))
        return false;
    bool found = false;
    if (HANDLE data = ::GetClipboardData(CF_UNICODETEXT)) {
        if (const auto* chars = static_cast<const wchar_t*>(::GlobalLock(data))) {
            const SIZE_T max_chars = ::GlobalSize(data) / sizeof(wchar_t);
            SIZE_T length = 0;
            while (length < max_chars && chars[length] != L'\0')
                ++length;
            text.assign(chars, length);
            found = true;
            ::GlobalUnlock(data);
        }
    }
    ::CloseClipboard();
    return found;
}

}  // namespace

bool DigitEdit::DigitsOf(const std::wstring& text, std::wstring& digits) {
    std::size_t first = 0;
    std::size_t last = text.size();
    while (first < last && IsBlank(text[first]))
        ++first;
    while (last > first && IsBlank(text[last - 1]))
        --last;
    for (std::size_t i = first; i < last; ++i) {
        if (!IsDigit(text[i]))
            return false;
    }
    digits.assign(text, first, last - first);
    return true;
}

bool DigitEdit::PasteFromClipboard() {
    std::wstring text;
    if (!ClipboardText(hwnd(), text))
        return true;  // nothing to paste: nothing happens, as in a plain edit
    std::wstring digits;
    if (!DigitsOf(text, digits)) {
        ::MessageBeep(MB_OK);
        return true;
    }
    // Through the edit's own replacement, so the undo buffer and the text
    // limit work as for typing.
    CallDefault(EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(digits.c_str()));
    return true;
}

bool DigitEdit::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_CHAR: {
            const auto c = static_cast<wchar_t>(wp);
            // Control characters (backspace, Ctrl+C/V/X/Z/A) keep their
            // meaning; the paste they cause comes back as WM_PASTE.
            if (c < L' ' || IsDigit(c))
                return false;
            ::MessageBeep(MB_OK);
            result = 0;
            return true;
        }
        case WM_PASTE:
            if ((::GetWindowLongPtrW(hwnd(), GWL_STYLE) & ES_READONLY) != 0)
                return false;
            PasteFromClipboard();
            result = 0;
            return true;
        case EM_REPLACESEL: {
            // Other programs (and the shell's paste helpers) insert text
            // this way; the same rule as for the clipboard.
            const auto* text = reinterpret_cast<const wchar_t*>(lp);
            std::wstring digits;
            if (text == nullptr || !DigitsOf(text, digits)) {
                ::MessageBeep(MB_OK);
                result = 0;
                return true;
            }
            result = CallDefault(EM_REPLACESEL, wp, reinterpret_cast<LPARAM>(digits.c_str()));
            return true;
        }
        default:
            return false;
    }
}

}  // namespace velk::controls
