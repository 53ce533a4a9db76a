// The band's bitmaps and texts as the installation file may override them.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/handles.h"
#include "settings/settings_access.h"

namespace velk::toolbar {

// Magenta stays magenta, so the buttons can draw it as transparent.
const COLORMAP* TransparentKeyMap() noexcept;

// The installation key names a bitmap file in the module folder; when it is
// empty (or the file cannot be loaded) the language module's bitmap `id`.
win32::unique_hbitmap LoadBandBitmap(settings::Profile& profile, const std::wstring& module_folder,
                                     settings::Key key, int id);

// The first "<$CORP_NAME>" of `text` replaced by the company name:
// installation [General] "CorpName", else the localised IDS_CORP_NAME.
std::wstring SubstituteCompany(const std::wstring& text, settings::Profile& profile,
                               QzResourceStringLoader& strings);

}  // namespace velk::toolbar
