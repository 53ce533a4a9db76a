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
//   VELK_PROBE_STORE_MEMORY   the store in memory with this many messages in
//                             folder 1 (and an empty folder 2)
//   VELK_PROBE_FAULTS         a seed: keeps one random store fault armed
//   VELK_PROBE_COUNT          count the process's GDI and USER objects when
//                             the probe loads, when it goes and when the
//                             client's window gets WM_APP+0x77, and the
//                             store's requests and live objects when it goes
#include <windows.h>
#include <commctrl.h>
#include <psapi.h>

#include <cstdio>
#include <string>

#include "common_src/win32/handles.h"
#include "addin/addin_exports.h"
#include "tools/store_stub/store_stub_control.h"

namespace {

velk::tools::StoreStub* g_store = nullptr;
SIZE_T g_private_at_load = 0;  // before the real add-in, when loaded first
volatile LONG g_stop_faults = 0;

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

// GetGuiResources answers 0 under Wine, which accepts a handle's index
// alone: the live objects are counted by asking every index.
int GdiObjects() {
    int n = 0;
    for (ULONG_PTR index = 1; index < 0x10000; ++index)
        n += ::GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0;
    return n;
}
int UserObjects() {
    int n = 0;
    for (ULONG_PTR index = 0; index < 0x8000; ++index) {
        const ULONG_PTR handle = (index << 1) + 0x20;
        n +=
            ::IsWindow(reinterpret_cast<HWND>(handle)) || ::IsMenu(reinterpret_cast<HMENU>(handle));
    }
    return n;
}
void CountObjects(const char* when) {
    if (Env(L"VELK_PROBE_COUNT").empty())
        return;
    const DWORD gdi = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    const DWORD user = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    Line((std::string("gdi_") + when + " %g").c_str(), gdi != 0 ? gdi : GdiObjects());
    // Display DCs and their regions are the system's DC cache, which keeps
    // as many as were once in use together: counted apart.
    int cache = 0;
    for (ULONG_PTR index = 1; index < 0x10000; ++index) {
        const DWORD type = ::GetObjectType(reinterpret_cast<HGDIOBJ>(index));
        cache += type == OBJ_DC || type == OBJ_REGION;
    }
    Line((std::string("gdi_dc_cache_") + when + " %g").c_str(), cache);
    Line((std::string("user_") + when + " %g").c_str(), user != 0 ? user : UserObjects());
}

DWORD WINAPI FaultThread(void*) {
    unsigned seed = static_cast<unsigned>(_wtoi(Env(L"VELK_PROBE_FAULTS").c_str()));
    while (g_stop_faults == 0) {
        if (g_store->PendingFaults() == 0) {
            seed = seed * 1103515245u + 12345u;
            g_store->InjectFault(L"*", 1 + (seed >> 16) % 40, E_FAIL);
        }
        ::Sleep(5);
    }
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
    if (reason == DLL_PROCESS_ATTACH) {
        g_private_at_load = PrivateUsage();
        CountObjects("at_load");
    }
    // Counted at the client's FreeLibrary of the probe, after the add-in's
    // (freed in the reverse order of loading), never at the process's end,
    // when the store's module may have gone first.
    if (reason == DLL_PROCESS_DETACH && reserved == nullptr && g_store != nullptr) {
        g_store->ClearFaults();
        CountObjects("at_end");
        int requests = 0;
        for (const std::wstring& line : g_store->JournalLines())
            requests += line.rfind(L"CreateInstance", 0) == 0;
        Line("store_requests %g", requests);
        Line("store_live_objects %g", g_store->LiveObjects());
        Line("store_outstanding_refs %g", g_store->OutstandingRefs());
    } else if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
        CountObjects("at_end");
    }
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        LARGE_INTEGER now, freq;
        ::QueryPerformanceCounter(&now);
        ::QueryPerformanceFrequency(&freq);
        Line("exit_ms %.3f", 1000.0 * double(now.QuadPart) / double(freq.QuadPart));
    }
    return TRUE;
}

// The fault thread ends with the client's window, before anything is freed.
HANDLE g_fault_thread = nullptr;
constexpr UINT kMsgCheckpoint = WM_APP + 0x77;
LRESULT CALLBACK WatchClient(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR id, DWORD_PTR) {
    if (msg == kMsgCheckpoint) {
        CountObjects("checkpoint");
        return 1;
    }
    if (msg == WM_DESTROY && g_fault_thread != nullptr) {
        g_stop_faults = 1;
        ::WaitForSingleObject(g_fault_thread, INFINITE);
        ::CloseHandle(g_fault_thread);
        g_fault_thread = nullptr;
    }
    if (msg == WM_NCDESTROY)
        ::RemoveWindowSubclass(hwnd, &WatchClient, id);
    return ::DefSubclassProc(hwnd, msg, wp, lp);
}

extern "C" void WINAPI SetOEBrowserWnd(HWND client) {
    // The hold's thread may outlive the client's FreeLibrary of the probe.
    if (!Env(L"VELK_PROBE_HOLD").empty()) {
        HMODULE self = nullptr;
        ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                             reinterpret_cast<LPCWSTR>(&SetOEBrowserWnd), &self);
    }
    Line("private_kb %.1f", (double(PrivateUsage()) - double(g_private_at_load)) / 1024.0);
    const std::wstring memory = Env(L"VELK_PROBE_STORE_MEMORY");
    if (!memory.empty() && g_store == nullptr) {
        g_store = new velk::tools::StoreStub();
        if (g_store->Load() && SUCCEEDED(g_store->Register()) &&
            SUCCEEDED(g_store->UseMemoryStore())) {
            g_store->Reset();
            g_store->CreateFolder(2);
            for (int id = 1; id <= _wtoi(memory.c_str()); ++id)
                g_store->PutMessage(1, id, "Subject: offer\r\nFrom: a@b.example\r\n\r\nbody\r\n");
            Line("store %g", 1);
            if (!Env(L"VELK_PROBE_FAULTS").empty() &&
                ::SetWindowSubclass(client, &WatchClient, 1, 0)) {
                g_fault_thread = ::CreateThread(nullptr, 0, &FaultThread, nullptr, 0, nullptr);
            }
        }
    }
    if (!Env(L"VELK_PROBE_COUNT").empty())
        ::SetWindowSubclass(client, &WatchClient, 1, 0);  // once: the same id replaces
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
