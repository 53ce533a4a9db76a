#include "settings_ui/sheet_pages.h"

#include <string>

#include "senders/pages/approve_sender_page.h"
#include "senders/pages/block_encoding_page.h"
#include "senders/pages/block_sender_page.h"
#include "settings_ui/advanced_page.h"
#include "settings_ui/link_filter.h"
#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"
#include "settings_ui/spam_detection_page.h"

namespace velk::settings_ui {

std::vector<std::unique_ptr<win32::PropertyPage>> CreateSheetPages(const win32::UiContext& ui,
                                                                   senders::SenderList& approved,
                                                                   senders::SenderList& blocked) {
    std::vector<std::unique_ptr<win32::PropertyPage>> pages;
    pages.push_back(std::make_unique<CSpamDetectionPage>(ui));
    pages.push_back(std::make_unique<CLinkFilter>(ui));
    pages.push_back(std::make_unique<senders::CApproveSenderPage>(ui, &approved, &blocked));
    pages.push_back(std::make_unique<senders::CBlockSenderPage>(ui, &approved, &blocked));
    pages.push_back(std::make_unique<senders::CBlockEncodingPage>(ui));
    pages.push_back(std::make_unique<CAdvancedPage>(ui));
    return pages;
}

}  // namespace velk::settings_ui
