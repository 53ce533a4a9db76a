// The stand-in's COM objects: the folder manager, folders and messages.
#pragma once

#include <windows.h>

#include "actions/QzStoreInterfaces.h"

namespace velk::tools::store {

// A new folder manager with one reference, counted by the leak check.
// Journaled as "CreateInstance(<interface>)"; a fault armed for
// "CreateInstance" fails the creation (or, as a null out, makes
// CoCreateInstance succeed with a null pointer).
HRESULT CreateFolderMgr(REFIID riid, void** out) noexcept;

}  // namespace velk::tools::store
