#include "common_src/win32/subclassed_window.h"

#include <commctrl.h>

#include "common_src/win32/entry_scope.h"
#include "common_src/win32/message_guard.h"

namespace velk::win32 {
namespace {

// One id for every subclass of this class: the procedure already tells ours
// apart from anyone else's, and one object per window is the rule.
constexpr UINT_PTR kSubclassId = 0x56454C4B;  // "VELK"

// GetWindowSubclass is exported by ordinal only on the systems the add-in
// serves (and missing from MinGW's import library); 411 is its ordinal in
// every comctl32 that has subclassing (5.8 and later).
using GetWindowSubclassFn = BOOL(WINAPI*)(HWND, SUBCLASSPROC, UINT_PTR, DWORD_PTR*);

GetWindowSubclassFn GetWindowSubclassEntry() noexcept {
    static const GetWindowSubclassFn entry = [] {
        HMODULE comctl = ::GetModuleHandleW(L"comctl32.dll");
        return comctl != nullptr ? reinterpret_cast<GetWindowSubclassFn>(reinterpret_cast<void*>(
                                       ::GetProcAddress(comctl, MAKEINTRESOURCEA(411))))
                                 : nullptr;
    }();
    return entry;
}

}  // namespace

SubclassedWindow::~SubclassedWindow() {
    Detach();
}

bool SubclassedWindow::Attach(HWND hwnd) noexcept {
    if (hwnd == nullptr || hwnd_ != nullptr || FromHandle(hwnd) != nullptr)
        return false;
    if (!::SetWindowSubclass(hwnd, &StaticProc, kSubclassId, reinterpret_cast<DWORD_PTR>(this)))
        return false;
    hwnd_ = hwnd;
    return true;
}

void SubclassedWindow::Detach() noexcept {
    if (hwnd_ == nullptr)
        return;
    HWND hwnd = hwnd_;
    hwnd_ = nullptr;
    if (::IsWindow(hwnd))
        ::RemoveWindowSubclass(hwnd, &StaticProc, kSubclassId);
}

SubclassedWindow* SubclassedWindow::FromHandle(HWND hwnd) noexcept {
    DWORD_PTR ref = 0;
    GetWindowSubclassFn get = GetWindowSubclassEntry();
    if (hwnd == nullptr || get == nullptr || !get(hwnd, &StaticProc, kSubclassId, &ref))
        return nullptr;
    return reinterpret_cast<SubclassedWindow*>(ref);
}

bool SubclassedWindow::ReceiveReflected(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    return ProcessMessage(kReflectedMessageBase + msg, wp, lp, result);
}

LRESULT SubclassedWindow::CallDefault(UINT msg, WPARAM wp, LPARAM lp) noexcept {
    return hwnd_ != nullptr ? ::DefSubclassProc(hwnd_, msg, wp, lp) : 0;
}

LRESULT CALLBACK SubclassedWindow::StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp,
                                              UINT_PTR id, DWORD_PTR ref) {
    EntryScope entry;
    auto* self = reinterpret_cast<SubclassedWindow*>(ref);
    if (msg == WM_NCDESTROY) {
        // Off first, so nothing the window does while dying reaches an object
        // that may be gone once OnFinalMessage has run.
        ::RemoveWindowSubclass(hwnd, &StaticProc, id);
        if (self != nullptr && self->hwnd_ == hwnd) {
            LRESULT ignored = 0;
            RunMessageHandlerGuarded(L"subclass", hwnd, msg,
                                     [&] { return self->ProcessMessage(msg, wp, lp, ignored); });
            self->hwnd_ = nullptr;
            const LRESULT def = ::DefSubclassProc(hwnd, msg, wp, lp);
            RunFinalMessageGuarded(L"subclass", hwnd, [&] { self->OnFinalMessage(hwnd); });
            return def;
        }
        return ::DefSubclassProc(hwnd, msg, wp, lp);
    }
    if (self == nullptr || self->hwnd_ != hwnd)
        return ::DefSubclassProc(hwnd, msg, wp, lp);
    LRESULT result = 0;
    const bool handled = RunMessageHandlerGuarded(
        L"subclass", hwnd, msg, [&] { return self->ProcessMessage(msg, wp, lp, result); });
    return handled ? result : ::DefSubclassProc(hwnd, msg, wp, lp);
}

}  // namespace velk::win32
