// The library's entry point and its three exports.
//
// Unloading and the worker thread. DllMain runs under the loader lock, and a
// thread cannot finish exiting while another holds it, so DLL_PROCESS_DETACH
// can never wait for the worker to end (it would sit out the whole 3000 ms),
// and a worker still inside our code when the image is unmapped would crash
// the client. So the worker holds a reference on this module for its whole
// life and leaves through FreeLibraryAndExitThread: the image stays mapped
// for as long as any of its code can run. The price is that the client's
// FreeLibrary while the add-in runs only drops the client's reference; the
// add-in (band, hook, worker) stays until the process ends, which is also
// when the real client lets go of it. DLL_PROCESS_DETACH therefore only runs
// (a) at process exit, when the worker is gone already and the stop finds its
// handle signalled, or (b) after a failed start, with no worker at all;
// neither waits.
#include <windows.h>

#include "host/addin_app.h"
#include "host/addin_exports.h"
#include "host/addin_globals.h"
#include "log/diag_log.h"
#include "toolbar/toolbar_wnd.h"

namespace {

using velk::host::Globals;

// Every resource lookup of the add-in names the language module itself
// (host::ResourceModule()), so an export has no per-call resource state to
// switch; it only checks that the toolbar window exists and keeps exceptions
// away from the client.
template <class Body>
void RunExport(const wchar_t* name, Body body) noexcept {
    try {
        velk::toolbar::CToolBarWnd* wnd = Globals().toolbar;
        if (wnd == nullptr || wnd->hwnd() == nullptr)
            return;
        body(*wnd);
    } catch (...) {
        VELK_LOG(L"@@@ Error : exception in %s", name);
    }
}

}  // namespace

extern "C" {

void WINAPI SetOEBrowserWnd(HWND browser) {
    RunExport(L"SetOEBrowserWnd", [browser](velk::toolbar::CToolBarWnd& wnd) {
        Globals().browser_from_export = browser;
        wnd.SetHostWindow(browser);
    });
}

void WINAPI ReBuildToolBar(void) {
    RunExport(L"ReBuildToolBar",
              [](velk::toolbar::CToolBarWnd& wnd) { wnd.OnBuildUserInterface(0, 0); });
}

void WINAPI DestroyToolBar(void) {
    RunExport(L"DestroyToolBar", [](velk::toolbar::CToolBarWnd& wnd) { wnd.OnDestroyBand(); });
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    try {
        switch (reason) {
            case DLL_PROCESS_ATTACH:
                ::DisableThreadLibraryCalls(instance);
                return velk::host::TheApp().InitInstance(instance) ? TRUE : FALSE;
            case DLL_PROCESS_DETACH:
                velk::host::TheApp().ExitInstance(reserved != nullptr);
                return TRUE;
            default:
                return TRUE;
        }
    } catch (...) {
        ::OutputDebugStringW(L"VELK_OEA: exception in DllMain");
        return reason == DLL_PROCESS_ATTACH ? FALSE : TRUE;
    }
}

}  // extern "C"
