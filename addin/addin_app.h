// The application object: the add-in's start-up when the library loads and
// its shut-down when it unloads, both run from DllMain under the loader lock.
// Start-up therefore does only what decides whether the load succeeds (the
// language module, the refusal of a second copy, the data folder, the hidden
// toolbar window); everything else follows from the toolbar window's own
// message once the load has returned.
#pragma once

#include <windows.h>

#include <memory>

#include "common_src/win32/ResourceHandle.h"

namespace velk::addin {

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
    std::unique_ptr<ResourceHandle> m_pMUIResource;
};

CVELK_OEAgentApp& TheApp();

}  // namespace velk::addin
