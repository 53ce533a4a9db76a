// A second add-in for the tests and benchmarks, loaded into the client
// stand-in beside the real one: when the client calls its SetOEBrowserWnd it
// prepares the message store inside the client's process and, if asked,
// holds a store call or times the real add-in's band builds. Steered through
// the environment the test gives the client:
//   VELK_PROBE_LOG            file for the probe's lines
//   VELK_PROBE_STORE_ROOT     mailbox root of the store stand-in (disk mode)
//   VELK_PROBE_HOLD           a store method to hold until ...
//   VELK_PROBE_RELEASE_EVENT  ... this named event is set
//   VELK_PROBE_BUILDS         time this many DestroyToolBar + ReBuildToolBar
#include <windows.h>
#include <psapi.h>

#include <cstdio>
#include <string>

#include "common_src/win32/handles.h"
#include "addin/addin_exports.h"
#include "tools/store_stub/store_stub_control.h"

namespace {

velk::tools::StoreStub* g_store = nullptr;
SIZE_T g_private_at_load = 0;  // before the real add-in, when loaded first

// PROCESS_MEMORY_COUNTERS_EX::PrivateUsage where the system fills it; Wine
// leaves it 0, so then the committed private pages are counted directly.
SIZE_T PrivateUsage() {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof(counters);
    ::GetProcessMemoryInfo(::GetCurrentProcess(),
                           reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof(counters));
    if (counters.PrivateUsage != 0)
        return counters.PrivateUsage;
    SIZE_T total = 0;
    MEMORY_BASIC_INFORMATION info{};
    for (const char* at = nullptr;
         ::VirtualQuery(at, &info, sizeof(info)) == sizeof(info) && info.RegionSize != 0;
         at = static_cast<const char*>(info.BaseAddress) + info.RegionSize) {
        if (info.State == MEM_COMMIT && info.Type == MEM_PRIVATE)
            total += info.RegionSize;
    }
    return total;
}

std::wstring Env(const wchar_t* name) {
    wchar_t value[1024] = L"";
    const DWORD n = ::GetEnvironmentVariableW(name, value, 1024);
    return n > 0 && n < 1024 ? std::wstring(value, n) : std::wstring();
}

void Line(const char* format, double value) {
    const std::wstring path = Env(L"VELK_PROBE_LOG");
    if (path.empty())
        return;
    FILE* f = nullptr;
    if (_wfopen_s(&f, path.c_str(), L"a") == 0 && f != nullptr) {
        std::fprintf(f, format, value);
        std::fputc('\n', f);
        std::fclose(f);
    }
}

DWORD WINAPI HoldThread(void*) {
    if (g_store->WaitUntilHeld(20000)) {
        Line("held %g", 0);
        velk::win32::unique_handle release(
            ::OpenEventW(SYNCHRONIZE, FALSE, Env(L"VELK_PROBE_RELEASE_EVENT").c_str()));
        if (release)
            ::WaitForSingleObject(release.get(), 30000);
    }
    g_store->ReleaseHold();
    Line("released %g", 0);
    return 0;
}

void TimeBuilds(int count) {
    HMODULE addin = ::GetModuleHandleW(L"VELK_OEA.dll");
    auto destroy = reinterpret_cast<DestroyToolBarFn>(
        addin ? ::GetProcAddress(addin, velk::addin::kExportDestroyToolBar) : nullptr);
    auto rebuild = reinterpret_cast<ReBuildToolBarFn>(
        addin ? ::GetProcAddress(addin, velk::addin::kExportReBuildToolBar) : nullptr);
    if (destroy == nullptr || rebuild == nullptr)
        return;
    LARGE_INTEGER freq, a, b;
    ::QueryPerformanceFrequency(&freq);
    for (int i = 0; i < count; ++i) {
        destroy();
        ::QueryPerformanceCounter(&a);
        rebuild();
        ::QueryPerformanceCounter(&b);
        Line("build_ms %.3f", 1000.0 * double(b.QuadPart - a.QuadPart) / double(freq.QuadPart));
    }
}

}  // namespace

// Loaded once before and once (as a copy) after the real add-in, the probe
// marks both ends of the add-in's unload at process exit: the loader detaches
// in the reverse order of loading.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH)
        g_private_at_load = PrivateUsage();
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        LARGE_INTEGER now, freq;
        ::QueryPerformanceCounter(&now);
        ::QueryPerformanceFrequency(&freq);
        Line("exit_ms %.3f", 1000.0 * double(now.QuadPart) / double(freq.QuadPart));
    }
    return TRUE;
}

extern "C" void WINAPI SetOEBrowserWnd(HWND) {
    // Threads of ours may outlive the client's FreeLibrary of the probe.
    HMODULE self = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                         reinterpret_cast<LPCWSTR>(&SetOEBrowserWnd), &self);
    Line("private_kb %.1f", (double(PrivateUsage()) - double(g_private_at_load)) / 1024.0);
    const std::wstring root = Env(L"VELK_PROBE_STORE_ROOT");
    if (!root.empty() && g_store == nullptr) {
        g_store = new velk::tools::StoreStub();
        if (g_store->Load() && SUCCEEDED(g_store->Register()) &&
            SUCCEEDED(g_store->SetMailboxRoot(root))) {
            Line("store %g", 1);
            const std::wstring hold = Env(L"VELK_PROBE_HOLD");
            if (!hold.empty() && SUCCEEDED(g_store->HoldCall(hold.c_str())))
                ::CloseHandle(::CreateThread(nullptr, 0, &HoldThread, nullptr, 0, nullptr));
        }
    }
    const std::wstring builds = Env(L"VELK_PROBE_BUILDS");
    if (!builds.empty())
        TimeBuilds(_wtoi(builds.c_str()));
}
