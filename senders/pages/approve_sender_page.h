// The approved-senders page: the shared sender page with the approved list,
// plus the senders the scanning process hands over for approval
// ([General] "ApproveMailList" of the installation file), the automatic
// approval switch ([General] "AutoApprove" of the user's file) and the
// import of the user's contacts.
#pragma once

#include <string>
#include <vector>

#include "senders/pages/sender_page.h"

namespace velk::senders {

class CApproveSenderPage : public CSenderPage {
public:
    // The lists are the sheet's and outlive the page.
    CApproveSenderPage(const win32::UiContext& ui, SenderList* approved, SenderList* blocked);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    void OnInitPage() override;
    bool OnPageCommand(int id) override;
    bool OnApply() override;

private:
    void TakeHandedOverSenders();
    void ImportContacts();
    void OnImportDone(bool ran);
    // Takes in what the tool added to `list`'s file.
    void TakeImported(SenderList& list, const std::vector<std::u16string>& keys_before);

    bool importing_ = false;
    bool handed_over_malformed_ = false;
    // The files' keys when the import started, to tell the tool's additions
    // from senders the user removed but has not saved yet.
    std::vector<std::u16string> approved_before_;
    std::vector<std::u16string> blocked_before_;
};

}  // namespace velk::senders
