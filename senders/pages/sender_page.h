// What the approved-senders and blocked-senders pages share: the list of one
// sender list drawn from the list itself, Add, Edit and Remove with the
// questions about the other list, and Apply, which saves both lists.
//
// Both pages are given the sheet's two lists. Changes go into the lists at
// once; a list remembers that it changed (SenderList::Modified) until it is
// saved, so whichever page applies first saves both files when either list
// changed, and a save that fails keeps the sheet open with the changes.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "controls/list_rows.h"
#include "controls/virtual_list_view.h"
#include "senders/pages/page_texts.h"
#include "senders/sender_list.h"
#include "senders/sender_rows.h"
#include "settings/setting_keys.h"

namespace velk::senders {

// The rows of one sender list for the list control: address, then name.
class SenderListRows : public controls::ListRows {
public:
    explicit SenderListRows(const SenderList& list) : rows_(list) {}
    std::size_t RowCount() const override { return rows_.Count(); }
    std::wstring CellText(std::size_t row, int column) const override;
    void SortBy(int column, bool ascending) override;

    SenderRows& rows() { return rows_; }

private:
    SenderRows rows_;
};

// The sheet's pages tell each other through PSM_QUERYSIBLINGS with this
// wParam that the sender lists changed under them (an import ended).
constexpr WPARAM kSenderListsChanged = 0x5E4D;

class CSenderPage : public win32::PropertyPage {
public:
    // What tells the two pages apart.
    struct Kind {
        int template_id;
        SenderListKind list;
        const wchar_t* tab_text;       // the tab's caption
        const wchar_t* add_caption;    // the edit dialog's captions
        const wchar_t* edit_caption;
        const wchar_t* conflict_text;  // the address is on the other list
        settings::Key title_key;       // installation texts above the list
        settings::Key note_key;
        const wchar_t* title_text;  // shown when the installation gives none
        const wchar_t* note_text;
    };

    CSenderPage(const win32::UiContext& ui, SenderList* approved, SenderList* blocked,
                const Kind& kind);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    bool OnApply() override;
    void OnSetActive() override;

    // The page's own initialisation after the shared one.
    virtual void OnInitPage() {}
    virtual bool OnPageCommand(int id) { return false; }

    // Saves BlackList.dat then WhiteList.dat when either list changed and
    // tells the scanning process (1033). False after a failed save, which the
    // user has been told of; both lists keep their changed mark then.
    bool SaveListsIfChanged();

    // The rows after a change of the lists: recounted and redrawn, `address`
    // (when given) selected.
    void RefreshRows(const std::wstring& address = std::wstring());
    // The other page shows the other list: tells it the lists changed.
    void TellSiblings();
    int Ask(const wchar_t* text_key, const wchar_t* caption_key, UINT type);
    // While the page initialises: the control's text from the string table,
    // unless the table lacks it.
    void SetItemText(int id, const wchar_t* key);

    SenderList& own() { return kind_.list == SenderListKind::kApproved ? *approved_ : *blocked_; }
    SenderList& other() { return kind_.list == SenderListKind::kApproved ? *blocked_ : *approved_; }
    const win32::UiContext& ui() const { return ui_; }
    std::wstring ListPath(SenderListKind kind) const;

    SenderList* approved_;
    SenderList* blocked_;

private:
    void OnInitDialog();
    bool OnListNotify(const NMHDR& header, LRESULT& result);
    void AddSender();
    void EditSender();
    void RemoveSender();
    void UpdateButtons();

    const win32::UiContext& ui_;
    const Kind& kind_;
    std::wstring tab_text_;
    SenderListRows rows_;
    controls::VirtualListView list_;
    win32::unique_hfont title_font_;
    std::optional<PageTexts> texts_;  // while initialising
};

}  // namespace velk::senders
