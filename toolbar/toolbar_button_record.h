// One position of the band: what its button shows and which command it sends.
// The toolbar window fills eight of these; the band makes a button of each.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace velk::toolbar {

struct ToolBarButtonRecord {
    HBITMAP hBitmap = nullptr;          // normal bitmap, borrowed; may be null
    HBITMAP hBitmapDisabled = nullptr;  // disabled bitmap, borrowed; may be null
    std::wstring strCaption;
    std::wstring strTooltip;
    std::int32_t nKind = 0;     // ButtonKind: 1 push button, 2 separator
    std::int32_t nVariant = 0;  // ButtonVariant: 0 plain, 1 separator, 2 drop-down
    std::int32_t nStyle = 0;    // 9 for every position
    std::int32_t nId = 0;       // command id, -1 for separators
};

}  // namespace velk::toolbar
