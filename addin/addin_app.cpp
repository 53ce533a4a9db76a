#include "addin/addin_app.h"

#include "actions/head_makers.h"
#include "host/addin_globals.h"
#include "host/host_hook.h"
#include "host/window_identifiers.h"
#include "log/diag_log.h"
#include "settings/settings_locations.h"
#include "toolbar/toolbar_button.h"
#include "toolbar/toolbar_wnd.h"

namespace velk::addin {

using host::Globals;

CVELK_OEAgentApp& TheApp() {
    static CVELK_OEAgentApp app;
    return app;
}

CVELK_OEAgentApp::~CVELK_OEAgentApp() = default;

bool CVELK_OEAgentApp::InitInstance(HMODULE self) {
    // The log opens later, with the per-user start: only the debugger hears
    // about these failures.
    m_pMUIResource.reset(new ResourceHandle());
    const std::wstring folder = m_pMUIResource->GetResourceFolder();
    if (folder.empty()) {
        ::OutputDebugStringW(L"Failed to get mui resource folder path!!");
        m_pMUIResource.reset();
        return false;
    }
    if (!m_pMUIResource->Load(folder)) {
        ::OutputDebugStringW(L"Failed to load MUI resource");
        m_pMUIResource.reset();
        return false;
    }
    Globals().resources = reinterpret_cast<HINSTANCE>(m_pMUIResource->Get());

    // One add-in per desktop: a second copy (another file name, another
    // folder) would put a second band into the same client.
    if (::FindWindowW(host::kToolBarWindowClass, nullptr) != nullptr) {
        Globals().resources = nullptr;
        m_pMUIResource.reset();
        return false;
    }

    settings::SettingsLocations& where = Globals().where;
    if (settings::ResolveLocations(self, where) != ERROR_SUCCESS) {
        Globals().resources = nullptr;
        m_pMUIResource.reset();
        return false;
    }
    actions::BuildHeadMakerMap();

    if (toolbar::CToolBarWnd::CreateToolBarWindow() == nullptr) {
        actions::FreeHeadMakerMap();
        Globals().resources = nullptr;
        m_pMUIResource.reset();
        return false;
    }
    return true;
}

int CVELK_OEAgentApp::ExitInstance(bool process_exit) {
    // Reached on the client's thread (its FreeLibrary with no worker left, or
    // the process's end) or on the worker's, whose reference was the last:
    // that happens only once the add-in has left the client's thread, so
    // there is nothing of ours left there to take down.
    toolbar::CToolBarWnd* wnd = toolbar::CToolBarWnd::Instance();
    HWND window = wnd != nullptr ? wnd->hwnd() : nullptr;
    if (window != nullptr && ::IsWindow(window)) {
        if (::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId())
            ::SendMessageW(window, WM_CLOSE, 0, 0);
        else
            VELK_LOG(L"!!! the add-in unloads on another thread than its window's");
    }
    // The client's window must not keep calling a procedure of ours once the
    // library is gone.
    host::CHostHook::Instance().Unhook();
    if (!process_exit) {
        // Classes of a DLL outlive it; a later copy must not find ours
        // pointing into unmapped code.
        toolbar::CToolBarButton::UnregisterButtonClass();
        toolbar::CToolBarWnd::UnregisterToolBarClass();
    }
    actions::FreeHeadMakerMap();
    log::Close();
    Globals().resources = nullptr;
    m_pMUIResource.reset();
    return 0;
}

}  // namespace velk::addin
