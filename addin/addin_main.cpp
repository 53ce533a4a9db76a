// The library's entry point and its three exports.
//
// Loading and unloading. DllMain runs under the loader lock, so it does the
// least it can (see CVELK_OEAgentApp). The worker thread holds a reference
// on this module and leaves through FreeLibraryAndExitThread, so the image
// stays mapped for as long as any of its code can run; when the client's
// window closes the add-in leaves (band, hook, worker, toolbar window), the
// worker's reference goes, and the client's FreeLibrary unloads the library
// at once. A FreeLibrary while the add-in still runs only drops the client's
// reference: the add-in works on until the client's window closes, and the
// worker's reference, the last, goes once the client's thread is out of our
// code for good (see CMsgActionQueue::StopForUnload). DLL_PROCESS_DETACH
// therefore never waits: by then the worker is gone, or the process is
// ending and has ended it.
#include <windows.h>

#include "addin/addin_app.h"
#include "addin/addin_exports.h"
#include "common_src/win32/entry_scope.h"
#include "log/diag_log.h"
#include "toolbar/toolbar_wnd.h"

namespace {

// Every resource lookup of the add-in names the language module itself
// (host::ResourceModule()), so an export has no per-call resource state to
// switch; it only checks that the toolbar window exists and keeps exceptions
// away from the client. An export is an entry into our code like a window
// procedure (see EntryScope).
template <class Body>
void RunExport(const wchar_t* name, Body body) noexcept {
    velk::win32::EntryScope entry;
    try {
        velk::toolbar::CToolBarWnd* wnd = velk::toolbar::CToolBarWnd::Instance();
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
    RunExport(L"SetOEBrowserWnd",
              [browser](velk::toolbar::CToolBarWnd& wnd) { wnd.SetHostWindow(browser); });
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
                return velk::addin::TheApp().InitInstance(instance) ? TRUE : FALSE;
            case DLL_PROCESS_DETACH:
                velk::addin::TheApp().ExitInstance(reserved != nullptr);
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
