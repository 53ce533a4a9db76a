// A settings world for the benchmark of this folder's
// windows: an installation and a user folder under %TEMP% filled with the
// values a working installation has, the language module and the string
// table of the build tree.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/ui_context.h"

namespace velk::settings_ui::showcase {

class World {
public:
    // False (with a line on stderr) when the language module or the string
    // table cannot be loaded.
    bool Open(const std::wstring& language_module, const std::wstring& resource_root);
    ~World();

    const win32::UiContext& ui() const { return ui_; }

private:
    HMODULE module_ = nullptr;
    std::unique_ptr<QzResourceStringLoader> strings_;
    win32::UiContext ui_;
};

// Runs the advanced page in a bare sheet titled `caption`; `shown` is called
// once the sheet and the page have painted, then the sheet is cancelled.
void RunAdvancedPageSheet(const win32::UiContext& ui, const std::wstring& caption,
                          const std::function<void(HWND sheet)>& shown);

}  // namespace velk::settings_ui::showcase
