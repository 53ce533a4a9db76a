// statistics_preview.exe: the statistics dialog on given counters, as a
// picture, for looking at its layout at the prefix's pixel density (the
// demo shows it on its own session's counters). Not shipped.
//
//   statistics_preview.exe OUT.bmp [PROCESSED DETECTED REPORTED FP [SINCE]]
#include <windows.h>
#include <shellapi.h>

#include <cstdio>
#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "demo/driver/screen_shot.h"
#include "statistics/statistics_dlg.h"
#include "statistics/statistics_ids.h"

int main() {
    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    if (argc < 2) {
        std::fprintf(stderr, "usage: statistics_preview OUT.bmp [A B C D [SINCE]]\n");
        return 2;
    }
    const wchar_t* values[5] = {L"4", L"2", L"1", L"0", L"1700000000"};
    for (int i = 2; i < argc && i < 7; ++i)
        values[i - 2] = argv[i];

    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    velk::win32::UiContext ui;
    ui.where.install_ini = std::wstring(temp) + L"velk_preview_install.ini";
    ui.where.user_ini = std::wstring(temp) + L"velk_preview_user.ini";
    const wchar_t* keys[5] = {L"ProcessedMsg", L"DetectedSpam", L"ReportedSpam", L"ReportedFP",
                              L"RunningSince"};
    for (int i = 0; i < 5; ++i)
        ::WritePrivateProfileStringW(L"Statistics", keys[i], values[i], ui.where.user_ini.c_str());

    const std::wstring dist = VELK_PREVIEW_DIST;
    QzLanguageEnvironment env;
    env.resourceRoot = dist + L"\\Resource\\";
    QzResourceStringLoader strings(env);
    strings.Initialize(L"VELK_OE_AGENT");
    ui.strings = &strings;
    ui.resources = ::LoadLibraryExW((dist + L"\\Resource\\en-US\\VELK_OEA.dll.mui").c_str(),
                                    nullptr, LOAD_LIBRARY_AS_DATAFILE);

    velk::statistics::CStatisticsDlg dialog(ui);
    HWND hwnd = dialog.CreateModeless(ui.resources, IDD_STATISTICS, nullptr);
    if (!hwnd) {
        std::fprintf(stderr, "no dialog (%lu)\n", ::GetLastError());
        return 1;
    }
    ::SetWindowPos(hwnd, HWND_TOPMOST, 10, 10, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    for (int i = 0; i < 40; ++i) {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
        ::Sleep(10);
    }
    RECT unit{4, 8, 0, 0};
    ::MapDialogRect(hwnd, &unit);
    HDC screen = ::GetDC(nullptr);
    std::printf("dpi %d, dialog base units %ld x %ld\n", ::GetDeviceCaps(screen, LOGPIXELSY),
                unit.left, unit.top);
    ::ReleaseDC(nullptr, screen);
    velk::demo::Picture picture;
    if (!velk::demo::CaptureWindow(hwnd, picture) || !velk::demo::SaveBmp(picture, argv[1]))
        return 1;
    std::printf("%dx%d\n", picture.width, picture.height);
    return 0;
}
