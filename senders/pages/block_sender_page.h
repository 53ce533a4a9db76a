// The blocked-senders page: the shared sender page with the blocked list.
#pragma once

#include "senders/pages/sender_page.h"

namespace velk::senders {

class CBlockSenderPage : public CSenderPage {
public:
    // The lists are the sheet's and outlive the page.
    CBlockSenderPage(const win32::UiContext& ui, SenderList* approved, SenderList* blocked);
};

}  // namespace velk::senders
