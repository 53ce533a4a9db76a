// The pages of the filtering settings sheet, in tab order: the one place
// that knows which class fills which tab.
#pragma once

#include <memory>
#include <vector>

#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "senders/sender_list.h"

namespace velk::settings_ui {

constexpr int kSheetPageCount = 6;

// The six pages: spam detection, link filter, approved senders, blocked
// senders, blocked languages, advanced. The sender pages get both lists
// (each checks the other list for conflicts). The lists and `ui` outlive
// the pages.
std::vector<std::unique_ptr<win32::PropertyPage>> CreateSheetPages(const win32::UiContext& ui,
                                                                   senders::SenderList& approved,
                                                                   senders::SenderList& blocked);

}  // namespace velk::settings_ui
