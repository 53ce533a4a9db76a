// Owners for Win32 handles: one template, the close function as a template
// parameter, copy deleted and move allowed, so a handle is closed exactly
// once. A borrowed handle stays a raw HWND/HBRUSH/...
#pragma once

#include <windows.h>
#include <objbase.h>

#include <utility>

namespace velk::win32 {

// Traits: `type`, `static type invalid()` and `static void close(type)`.
template <class Traits>
class unique_any_t {
    using T = typename Traits::type;

public:
    unique_any_t() noexcept = default;
    explicit unique_any_t(T value) noexcept : value_(value) {}
    ~unique_any_t() { reset(); }

    unique_any_t(const unique_any_t&) = delete;
    unique_any_t& operator=(const unique_any_t&) = delete;
    unique_any_t(unique_any_t&& other) noexcept : value_(other.release()) {}
    unique_any_t& operator=(unique_any_t&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }

    T get() const noexcept { return value_; }
    explicit operator bool() const noexcept { return value_ != Traits::invalid(); }

    void reset(T value = Traits::invalid()) noexcept {
        T old = value_;
        value_ = value;
        if (old != Traits::invalid()) Traits::close(old);
    }
    T release() noexcept { return std::exchange(value_, Traits::invalid()); }

    // For out-parameters: frees the current value, then exposes the slot.
    T* put() noexcept {
        reset();
        return &value_;
    }

private:
    T value_ = Traits::invalid();
};

template <class T, void (*Close)(T)>
struct null_is_invalid {
    using type = T;
    static T invalid() noexcept { return T(); }
    static void close(T v) noexcept { Close(v); }
};

// The common case: a null value means "no handle".
template <class T, void (*Close)(T)>
using unique_any = unique_any_t<null_is_invalid<T, Close>>;

namespace detail {
inline void CloseHandleOnly(HANDLE h) noexcept { ::CloseHandle(h); }
inline void CloseKey(HKEY h) noexcept { ::RegCloseKey(h); }
template <class T>
inline void DeleteGdi(T h) noexcept { ::DeleteObject(h); }
inline void DestroyMenuOnly(HMENU h) noexcept { ::DestroyMenu(h); }
inline void FreeLib(HMODULE h) noexcept { ::FreeLibrary(h); }
inline void DestroyWindowOnly(HWND h) noexcept { ::DestroyWindow(h); }
inline void FreeBstr(BSTR b) noexcept { ::SysFreeString(b); }
inline void FreeLocal(HLOCAL h) noexcept { ::LocalFree(h); }
}  // namespace detail

using unique_handle = unique_any<HANDLE, detail::CloseHandleOnly>;
using unique_event = unique_handle;
struct file_traits {
    using type = HANDLE;
    static HANDLE invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(HANDLE h) noexcept { ::CloseHandle(h); }
};
using unique_file = unique_any_t<file_traits>;
using unique_hkey = unique_any<HKEY, detail::CloseKey>;
using unique_hfont = unique_any<HFONT, detail::DeleteGdi<HFONT>>;
using unique_hbrush = unique_any<HBRUSH, detail::DeleteGdi<HBRUSH>>;
using unique_hbitmap = unique_any<HBITMAP, detail::DeleteGdi<HBITMAP>>;
using unique_hmenu = unique_any<HMENU, detail::DestroyMenuOnly>;
using unique_hmodule = unique_any<HMODULE, detail::FreeLib>;
using unique_hwnd = unique_any<HWND, detail::DestroyWindowOnly>;
using unique_bstr = unique_any<BSTR, detail::FreeBstr>;
using unique_hlocal = unique_any<HLOCAL, detail::FreeLocal>;

// Holds one reference to a COM interface.
template <class T>
class com_ptr {
public:
    com_ptr() noexcept = default;
    com_ptr(std::nullptr_t) noexcept {}
    ~com_ptr() { reset(); }
    com_ptr(const com_ptr& o) noexcept : p_(o.p_) {
        if (p_) p_->AddRef();
    }
    com_ptr& operator=(const com_ptr& o) noexcept {
        com_ptr(o).swap(*this);
        return *this;
    }
    com_ptr(com_ptr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    com_ptr& operator=(com_ptr&& o) noexcept {
        com_ptr(std::move(o)).swap(*this);
        return *this;
    }

    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }

    void reset() noexcept {
        if (T* p = std::exchange(p_, nullptr)) p->Release();
    }
    // For out-parameters that hand over an AddRef'd interface.
    T** put() noexcept {
        reset();
        return &p_;
    }
    void** put_void() noexcept { return reinterpret_cast<void**>(put()); }
    void swap(com_ptr& o) noexcept { std::swap(p_, o.p_); }

private:
    T* p_ = nullptr;
};

// CoInitialize for the lifetime of the object (the worker's apartment).
class com_apartment {
public:
    explicit com_apartment(DWORD model = COINIT_APARTMENTTHREADED) noexcept
        : hr_(::CoInitializeEx(nullptr, model)) {}
    ~com_apartment() {
        if (SUCCEEDED(hr_)) ::CoUninitialize();
    }
    com_apartment(const com_apartment&) = delete;
    com_apartment& operator=(const com_apartment&) = delete;
    HRESULT result() const noexcept { return hr_; }

private:
    HRESULT hr_;
};

// A critical section that owns its initialisation.
class critical_section {
public:
    critical_section() noexcept { ::InitializeCriticalSection(&cs_); }
    ~critical_section() { ::DeleteCriticalSection(&cs_); }
    critical_section(const critical_section&) = delete;
    critical_section& operator=(const critical_section&) = delete;
    void enter() noexcept { ::EnterCriticalSection(&cs_); }
    void leave() noexcept { ::LeaveCriticalSection(&cs_); }
    CRITICAL_SECTION* native() noexcept { return &cs_; }

private:
    CRITICAL_SECTION cs_;
};

class cs_guard {
public:
    explicit cs_guard(critical_section& cs) noexcept : cs_(cs.native()) {
        ::EnterCriticalSection(cs_);
    }
    explicit cs_guard(CRITICAL_SECTION* cs) noexcept : cs_(cs) { ::EnterCriticalSection(cs_); }
    ~cs_guard() { ::LeaveCriticalSection(cs_); }
    cs_guard(const cs_guard&) = delete;
    cs_guard& operator=(const cs_guard&) = delete;

private:
    CRITICAL_SECTION* cs_;
};

// GetDC/ReleaseDC.
class window_dc {
public:
    explicit window_dc(HWND hwnd) noexcept : hwnd_(hwnd), dc_(::GetDC(hwnd)) {}
    ~window_dc() {
        if (dc_) ::ReleaseDC(hwnd_, dc_);
    }
    window_dc(const window_dc&) = delete;
    window_dc& operator=(const window_dc&) = delete;
    HDC get() const noexcept { return dc_; }

private:
    HWND hwnd_;
    HDC dc_;
};

// BeginPaint/EndPaint.
class paint_dc {
public:
    explicit paint_dc(HWND hwnd) noexcept : hwnd_(hwnd) { dc_ = ::BeginPaint(hwnd, &ps_); }
    ~paint_dc() { ::EndPaint(hwnd_, &ps_); }
    paint_dc(const paint_dc&) = delete;
    paint_dc& operator=(const paint_dc&) = delete;
    HDC get() const noexcept { return dc_; }
    const PAINTSTRUCT& info() const noexcept { return ps_; }

private:
    HWND hwnd_;
    PAINTSTRUCT ps_{};
    HDC dc_;
};

// SelectObject that puts the previous object back.
class select_object {
public:
    select_object(HDC dc, HGDIOBJ obj) noexcept : dc_(dc), old_(::SelectObject(dc, obj)) {}
    ~select_object() {
        if (old_ && old_ != HGDI_ERROR) ::SelectObject(dc_, old_);
    }
    select_object(const select_object&) = delete;
    select_object& operator=(const select_object&) = delete;

private:
    HDC dc_;
    HGDIOBJ old_;
};

// CreateCompatibleDC/DeleteDC.
namespace detail {
inline void DeleteDcOnly(HDC dc) noexcept { ::DeleteDC(dc); }
}  // namespace detail
using unique_hdc = unique_any<HDC, detail::DeleteDcOnly>;

}  // namespace velk::win32
