// The localised texts of one window. The placeholders' values come from the
// installation file and the string table; they are read once per window
// instead of once per text, which a page with a dozen texts would notice.
#pragma once

#include <string>

#include "common_src/win32/placeholders.h"
#include "common_src/win32/ui_context.h"

namespace velk::senders {

class PageTexts {
public:
    explicit PageTexts(const win32::UiContext& ui) : ui_(ui), values_(ui.placeholders()) {}

    std::wstring operator()(const wchar_t* key) const {
        return win32::ReplacePlaceholders(ui_.RawText(key), values_);
    }

private:
    const win32::UiContext& ui_;
    win32::Placeholders values_;
};

}  // namespace velk::senders
