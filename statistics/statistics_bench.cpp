// The statistics dialog's cost under Wine: from creation until it has been
// painted, with the scanning-process stand-in answering the flush; and its
// GDI objects after 50 open/close cycles.
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "common_src/bench/bench.h"
#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"
#include "statistics/statistics_dlg.h"
#include "statistics/statistics_ids.h"

namespace {

std::wstring Temp(const wchar_t* name) {
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    return std::wstring(temp) + name;
}

void Pump() {
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        ::DispatchMessageW(&msg);
}

// Opens the dialog and has it painted (returns how long that took, in
// microseconds), then closes it.
double OpenPaintClose(const velk::win32::UiContext& ui) {
    const auto start = std::chrono::steady_clock::now();
    velk::statistics::CStatisticsDlg dialog(ui);
    HWND hwnd = dialog.CreateModeless(ui.resources, IDD_STATISTICS, nullptr);
    ::ShowWindow(hwnd, SW_SHOWNOACTIVATE);
    ::UpdateWindow(hwnd);
    ::RedrawWindow(hwnd, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    const auto painted = std::chrono::steady_clock::now();
    ::DestroyWindow(hwnd);
    Pump();
    return std::chrono::duration<double, std::micro>(painted - start).count();
}

}  // namespace

int main() {
    velk::win32::UiContext ui;
    ui.where.install_ini = Temp(L"velk_statistics_bench_install.ini");
    ui.where.user_ini = Temp(L"velk_statistics_bench_user.ini");
    const std::wstring dist = VELK_BENCH_DIST;
    QzLanguageEnvironment env;
    env.resourceRoot = dist + L"\\Resource\\";
    QzResourceStringLoader strings(env);
    strings.Initialize(L"VELK_OE_AGENT");
    ui.strings = &strings;
    velk::win32::unique_hmodule module(
        ::LoadLibraryExW((dist + L"\\Resource\\en-US\\VELK_OEA.dll.mui").c_str(), nullptr,
                         LOAD_LIBRARY_AS_DATAFILE));
    ui.resources = module.get();
    ::WritePrivateProfileStringW(L"Statistics", L"ProcessedMsg", L"1200",
                                 ui.where.user_ini.c_str());
    ::WritePrivateProfileStringW(L"Statistics", L"DetectedSpam", L"300", ui.where.user_ini.c_str());
    ::WritePrivateProfileStringW(L"Statistics", L"ReportedSpam", L"12", ui.where.user_ini.c_str());

    // The scanning-process stand-in, so every opening includes its flush.
    SECURITY_ATTRIBUTES sa{sizeof sa, nullptr, TRUE};
    velk::win32::unique_file nul(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE, &sa,
                                               OPEN_EXISTING, 0, nullptr));
    velk::win32::unique_handle ready(
        ::CreateEventW(nullptr, TRUE, FALSE, L"VelkStatisticsBenchScanner"));
    std::wstring line = std::wstring(L"\"") + VELK_SCANNER_STUB_EXE + L"\" listen --settings \"" +
                        ui.where.user_ini + L"\" --ready-event VelkStatisticsBenchScanner";
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul.get();
    PROCESS_INFORMATION pi{};
    if (!::CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                          nullptr, &si, &pi) ||
        ::WaitForSingleObject(ready.get(), 20000) != WAIT_OBJECT_0) {
        std::printf("bench statistics: the scanning-process stand-in did not start\n");
        return 1;
    }
    velk::win32::unique_handle scanner(pi.hProcess);
    ::CloseHandle(pi.hThread);

    for (int i = 0; i < 3; ++i)
        OpenPaintClose(ui);
    std::vector<double> samples;
    for (int i = 0; i < 15; ++i)
        samples.push_back(OpenPaintClose(ui));
    velk::bench::Report("statistics_open_until_painted", velk::bench::Summarise(samples),
                        "median at most 30 ms under Wine");

    const DWORD before = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    for (int i = 0; i < 50; ++i)
        OpenPaintClose(ui);
    const DWORD after = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    if (before == 0 && after == 0) {
        std::printf("bench statistics_gdi_growth: not measurable here (GetGuiResources gives 0)\n");
    } else {
        velk::bench::ReportValue("statistics_gdi_growth_after_50_cycles",
                                 static_cast<double>(after) - static_cast<double>(before),
                                 "GDI objects", "no growth");
    }

    if (HWND window = ::FindWindowW(nullptr, L"{5B0E7C21-93D4-4A6F-8B12-C4E97A1D2F58}"))
        ::PostMessageW(window, WM_CLOSE, 0, 0);
    ::WaitForSingleObject(scanner.get(), 5000);
    ::DeleteFileW(ui.where.user_ini.c_str());
    return 0;
}
