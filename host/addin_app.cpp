#include "host/addin_app.h"

#include "actions/head_makers.h"
#include "host/addin_globals.h"
#include "host/host_hook.h"
#include "host/window_identifiers.h"
#include "log/diag_log.h"
#include "settings/settings_locations.h"
#include "toolbar/toolbar_button.h"
#include "toolbar/toolbar_wnd.h"

namespace velk::host {

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
    if (::FindWindowW(kToolBarWindowClass, nullptr) != nullptr) {
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

    m_pToolBarWnd = toolbar::CToolBarWnd::CreateToolBarWindow();
    if (m_pToolBarWnd == nullptr) {
        actions::FreeHeadMakerMap();
        Globals().resources = nullptr;
        m_pMUIResource.reset();
        return false;
    }
    return true;
}

int CVELK_OEAgentApp::ExitInstance(bool process_exit) {
    // The client's window must not keep calling a procedure of ours once the
    // library is gone.
    CHostHook::Instance().RestoreBeforeUnload();
    if (toolbar::CToolBarWnd* wnd = Globals().toolbar) {
        if (HWND window = wnd->hwnd()) {
            if (::IsWindow(window))
                ::SendMessageW(window, WM_CLOSE, 0, 0);
        }
    }
    m_pToolBarWnd = nullptr;
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

}  // namespace velk::host
