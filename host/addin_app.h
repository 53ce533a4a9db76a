// The application object: the add-in's start-up when the library loads and
// its shut-down when it unloads, both run from DllMain under the loader lock.
#pragma once

#include <windows.h>

#include <memory>

#include "common_src/win32/ResourceHandle.h"

namespace velk::toolbar {
class CToolBarWnd;
}

namespace velk::host {

class CVELK_OEAgentApp {
public:
    CVELK_OEAgentApp() = default;
    ~CVELK_OEAgentApp();
    CVELK_OEAgentApp(const CVELK_OEAgentApp&) = delete;
    CVELK_OEAgentApp& operator=(const CVELK_OEAgentApp&) = delete;

    // False makes the library load fail.
    bool InitInstance(HMODULE self);
    // `process_exit`: DllMain's lpReserved was non-null, the other threads
    // are gone already.
    int ExitInstance(bool process_exit);

private:
    toolbar::CToolBarWnd* m_pToolBarWnd = nullptr;
    std::unique_ptr<ResourceHandle> m_pMUIResource;
};

CVELK_OEAgentApp& TheApp();

}  // namespace velk::host
