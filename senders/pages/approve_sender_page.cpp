#include "senders/pages/approve_sender_page.h"

#include <algorithm>

#include "log/diag_log.h"
#include "senders/approve_mail_list.h"
#include "senders/pages/contact_import.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_list_wide.h"
#include "senders/sender_text.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"

namespace velk::senders {

namespace {

const CSenderPage::Kind kApprovedPage = {
    IDD_APPROVE_SENDER_PAGE,
    SenderListKind::kApproved,
    L"IDS_APPROVESENDER_TAB",
    L"IDS_ADDAPPROVESENDER_CAPTION",
    L"IDS_EDITAPPROVESENDER_CAPTION",
    L"IDS_APPROVELISTCONLICT_MSG",
    settings::Key::ApproveSenderTitle,
    settings::Key::ApproveSenderNote,
    L"IDS_APPROVESENDER_TITLE",
    L"IDS_APPROVESENDER_NOTE",
};

// Posted by the import thread when the tool has ended (wParam 1) or could
// not be started (0).
constexpr UINT kImportDone = WM_APP + 0x51;
// Shows the handed-over senders' format error once the sheet is on screen.
constexpr UINT kShowFormatError = WM_APP + 0x52;

std::vector<std::u16string> KeysOfFile(SenderListKind kind, const std::wstring& path) {
    SenderList file(kind);
    LoadSenders(file, path);
    std::vector<std::u16string> keys;
    for (auto& entry : file.Entries())
        keys.push_back(std::move(entry.first));
    return keys;  // in key order
}

}  // namespace

CApproveSenderPage::CApproveSenderPage(const win32::UiContext& ui, SenderList* approved,
                                       SenderList* blocked)
    : CSenderPage(ui, approved, blocked, kApprovedPage) {}

bool CApproveSenderPage::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case kImportDone:
            OnImportDone(wp != 0);
            result = 0;
            return true;
        case kShowFormatError:
            win32::ShowMessage(win32::TopLevelOwner(hwnd()), ui(), L"IDS_FORMAT_ERROR_MSG",
                               L"IDS_FORMAT_ERROR_CAPTION", MB_OK | MB_ICONWARNING);
            result = 0;
            return true;
        default:
            return CSenderPage::ProcessMessage(msg, wp, lp, result);
    }
}

void CApproveSenderPage::OnInitPage() {
    SetItemText(IDC_SENDER_IMPORT, L"IDC_SENDER_IMPORT");
    SetItemText(IDC_AUTO_APPROVE, L"IDC_AUTO_APPROVE");
    TakeHandedOverSenders();
    settings::IniProfile profile(ui().where);
    const bool automatic = settings::ReadTrimmed(profile, settings::Key::AutoApprove) != L"0";
    ::CheckDlgButton(hwnd(), IDC_AUTO_APPROVE, automatic ? BST_CHECKED : BST_UNCHECKED);
}

void CApproveSenderPage::TakeHandedOverSenders() {
    settings::IniProfile profile(ui().where);
    const std::wstring value = settings::ReadText(profile, settings::Key::ApproveMailList);
    const HandedOverSenders handed = ParseApproveMailList(u"ApproveMailList", ToU16(value));
    bool added = false;
    for (const SenderRecord& sender : handed.senders) {
        const std::wstring address = ToWide(sender.address);
        if (senders::AddSender(*approved_, address.c_str(), ToWide(sender.name).c_str()) == kSenderAdded) {
            senders::RemoveSender(*blocked_, address.c_str());
            added = true;
        }
    }
    if (added) {
        RefreshRows();
        SetModified(true);
    }
    if (handed.malformed)
        ::PostMessageW(hwnd(), kShowFormatError, 0, 0);
}

bool CApproveSenderPage::OnPageCommand(int id) {
    if (id != IDC_SENDER_IMPORT)
        return false;
    ImportContacts();
    return true;
}

void CApproveSenderPage::ImportContacts() {
    if (importing_)
        return;
    // The tool edits the files: what the user changed goes there first, if
    // they agree; if not, it is kept in the page and merged with the tool's
    // additions afterwards.
    if ((approved_->Modified() || blocked_->Modified()) &&
        Ask(L"IDS_MSG_APPLYFIRST", L"IDS_CAP_CONFIMATION", MB_YESNO | MB_ICONQUESTION) == IDYES &&
        !SaveListsIfChanged()) {
        return;
    }
    approved_before_ = KeysOfFile(SenderListKind::kApproved, ListPath(SenderListKind::kApproved));
    blocked_before_ = KeysOfFile(SenderListKind::kBlocked, ListPath(SenderListKind::kBlocked));
    if (!StartContactImport(ui().where.install_dir, ui().where.user_dir, hwnd(), kImportDone))
        return;
    importing_ = true;
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_SENDER_IMPORT), FALSE);
}

void CApproveSenderPage::TakeImported(SenderList& list, const std::vector<std::u16string>& before) {
    const SenderListKind kind = &list == approved_ ? SenderListKind::kApproved
                                                   : SenderListKind::kBlocked;
    if (!list.Modified()) {
        // Nothing of the user's is waiting: the file is the list.
        LoadSenders(list, ListPath(kind));
        return;
    }
    SenderList after(kind);
    LoadSenders(after, ListPath(kind));
    std::size_t taken = 0;
    for (const auto& [key, record] : after.Entries()) {
        if (!std::binary_search(before.begin(), before.end(), key) &&
            list.Add(record.address, record) == kSenderAdded)
            ++taken;
    }
    VELK_LOG(L"!!! %lu imported senders merged into the unsaved %ls list",
             static_cast<unsigned long>(taken), kind == SenderListKind::kApproved ? L"approved" : L"blocked");
}

void CApproveSenderPage::OnImportDone(bool ran) {
    importing_ = false;
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_SENDER_IMPORT), TRUE);
    if (!ran)
        return;
    TakeImported(*approved_, approved_before_);
    TakeImported(*blocked_, blocked_before_);
    RefreshRows();
    TellSiblings();
}

bool CApproveSenderPage::OnApply() {
    if (importing_) {
        // Saving now would overwrite what the tool is writing.
        Ask(L"IDS_IMPORT_RUNNING_MSG", L"IDS_WARNING_CAPTION", MB_OK | MB_ICONINFORMATION);
        return false;
    }
    const bool saved = CSenderPage::OnApply();
    settings::IniProfile profile(ui().where);
    settings::WriteFlag(profile, settings::Key::AutoApprove,
                        ::IsDlgButtonChecked(hwnd(), IDC_AUTO_APPROVE) == BST_CHECKED);
    return saved;
}

}  // namespace velk::senders
