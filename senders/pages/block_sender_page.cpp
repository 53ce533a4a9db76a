#include "senders/pages/block_sender_page.h"

#include "senders/pages/sender_page_ids.h"

namespace velk::senders {

namespace {

const CSenderPage::Kind kBlockedPage = {
    IDD_BLOCK_SENDER_PAGE,
    SenderListKind::kBlocked,
    L"IDS_BLOCKSENDER_TAB",
    L"IDS_ADDBLOCKSENDER_CAPTION",
    L"IDS_EDITBLOCKSENDER_CAPTION",
    L"IDS_BLOCKLISTCONLICT_MSG",
    settings::Key::BlockSenderTitle,
    settings::Key::BlockSenderNote,
    L"IDS_BLOCKSENDER_TITLE",
    L"IDS_BLOCKSENDER_NOTE",
};

}  // namespace

CBlockSenderPage::CBlockSenderPage(const win32::UiContext& ui, SenderList* approved,
                                   SenderList* blocked)
    : CSenderPage(ui, approved, blocked, kBlockedPage) {}

}  // namespace velk::senders
