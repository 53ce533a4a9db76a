#include "tools/scanner_stub/listener.h"

#include <cstdio>

namespace velk::tools::scanner {

namespace {

constexpr wchar_t kClassName[] = L"VelkScannerStubWindow";
constexpr UINT_PTR kStartTimer = 1;

// WM_USER up to the end of the WM_APP range: what other programs use for
// their own messages.
bool IsPrivate(UINT msg) {
    return msg >= WM_USER && msg <= 0xBFFF;
}

constexpr UINT kFlushStatistics = WM_USER + 21;
constexpr UINT kResetStatistics = WM_USER + 26;

std::int64_t UnixNow() {
    FILETIME ft;
    ::GetSystemTimeAsFileTime(&ft);
    ULARGE_INTEGER t;
    t.LowPart = ft.dwLowDateTime;
    t.HighPart = ft.dwHighDateTime;
    return static_cast<std::int64_t>((t.QuadPart - 116444736000000000ull) / 10000000ull);
}

}  // namespace

Listener::Listener(const Command& command, std::function<void(HWND)> after_start)
    : command_(command), after_start_(std::move(after_start)) {}

Listener::~Listener() {
    if (hwnd_)
        ::DestroyWindow(hwnd_);
}

int Listener::Run() {
    if (!command_.log.empty() && !log_.Open(command_.log)) {
        std::fprintf(stderr, "error: cannot open %s\n", command_.log.c_str());
        return 1;
    }
    LoadCounters();
    HINSTANCE instance = ::GetModuleHandleW(nullptr);
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof wc;
    wc.lpfnWndProc = &Listener::WindowProc;
    wc.hInstance = instance;
    wc.lpszClassName = kClassName;
    if (!::RegisterClassExW(&wc) && ::GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
        return 1;
    // Hidden top-level: found by FindWindow with its title, never shown.
    if (!::CreateWindowExW(0, kClassName, Widen(command_.title).c_str(), WS_OVERLAPPEDWINDOW, 0, 0,
                           100, 100, nullptr, nullptr, instance, this))
        return 1;
    if (!command_.ready_event.empty()) {
        velk::win32::unique_event ready(
            ::CreateEventW(nullptr, TRUE, FALSE, Widen(command_.ready_event).c_str()));
        if (ready)
            ::SetEvent(ready.get());
    }
    ::SetTimer(hwnd_, kStartTimer, 0, nullptr);

    MSG msg;
    while (::GetMessageW(&msg, nullptr, 0, 0) > 0) {
        dispatching_posted_ = msg.hwnd && msg.hwnd == hwnd_ && IsPrivate(msg.message);
        ::DispatchMessageW(&msg);
        dispatching_posted_ = false;
    }
    return 0;
}

LRESULT CALLBACK Listener::WindowProc(HWND hwnd, UINT msg, WPARAM wparam, LPARAM lparam) {
    try {
        if (msg == WM_NCCREATE) {
            auto* self =
                static_cast<Listener*>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams);
            self->hwnd_ = hwnd;
            ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        }
        auto* self = reinterpret_cast<Listener*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA));
        if (msg == WM_NCDESTROY) {
            ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
            if (self)
                self->hwnd_ = nullptr;
            ::PostQuitMessage(0);
        } else if (self) {
            return self->ProcessMessage(msg, wparam, lparam);
        }
    } catch (...) {
        std::fputs("error: exception in the window procedure\n", stderr);
    }
    return ::DefWindowProcW(hwnd, msg, wparam, lparam);
}

LRESULT Listener::ProcessMessage(UINT msg, WPARAM wparam, LPARAM lparam) {
    if (IsPrivate(msg)) {
        bool sent = !dispatching_posted_;
        dispatching_posted_ = false;
        OnPrivateMessage(sent, msg, wparam, lparam);
        return 0;
    }
    switch (msg) {
        case WM_COPYDATA: {
            const auto* cds = reinterpret_cast<const COPYDATASTRUCT*>(lparam);
            log_.Write(FormatCopyDataLine(cds ? cds->dwData : 0, cds ? cds->cbData : 0));
            return TRUE;
        }
        case WM_TIMER:
            if (wparam == kStartTimer) {
                ::KillTimer(hwnd_, kStartTimer);
                if (after_start_)
                    after_start_(hwnd_);
                return 0;
            }
            break;
        case WM_CLOSE:
            ::DestroyWindow(hwnd_);
            return 0;
    }
    return ::DefWindowProcW(hwnd_, msg, wparam, lparam);
}

void Listener::OnPrivateMessage(bool sent, UINT msg, WPARAM wparam, LPARAM lparam) {
    log_.Write(FormatMessageLine(sent, msg, static_cast<std::uint64_t>(wparam),
                                 static_cast<std::uint64_t>(lparam)));
    counters_.CountMessage(msg - WM_USER);
    if (msg == kResetStatistics) {
        counters_.Reset(UnixNow());
        WriteCounters();
    } else if (msg == kFlushStatistics) {
        WriteCounters();
    }
}

void Listener::LoadCounters() {
    if (command_.settings.empty())
        return;
    const std::wstring path = Widen(command_.settings);
    const std::wstring section = Widen(kStatisticsSection);
    auto read = [&](const wchar_t* key) {
        return static_cast<std::int32_t>(
            ::GetPrivateProfileIntW(section.c_str(), key, 0, path.c_str()));
    };
    counters_.processed = read(L"ProcessedMsg");
    counters_.detected = read(L"DetectedSpam");
    counters_.reported_spam = read(L"ReportedSpam");
    counters_.reported_fp = read(L"ReportedFP");
    counters_.running_since = read(L"RunningSince");
    // A first start: counting begins now, and the file says so at once (the
    // add-in reads the date before it asks for a flush).
    if (counters_.running_since == 0) {
        counters_.running_since = UnixNow();
        WriteCounters();
    }
}

void Listener::WriteCounters() {
    if (command_.settings.empty())
        return;
    const std::wstring path = Widen(command_.settings);
    const std::wstring section = Widen(kStatisticsSection);
    for (const auto& [key, value] : counters_.Entries()) {
        if (!::WritePrivateProfileStringW(section.c_str(), Widen(key).c_str(), Widen(value).c_str(),
                                          path.c_str())) {
            std::fprintf(stderr, "error: cannot write [%s] %s to %s\n", kStatisticsSection,
                         key.c_str(), command_.settings.c_str());
        }
    }
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, path.c_str());  // flush
}

}  // namespace velk::tools::scanner
