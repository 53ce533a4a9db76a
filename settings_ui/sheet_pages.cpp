#include "settings_ui/sheet_pages.h"

#include <string>

#include "settings_ui/advanced_page.h"
#include "settings_ui/link_filter.h"
#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"
#include "settings_ui/spam_detection_page.h"

namespace velk::settings_ui {
namespace {

// A tab whose page this build does not have yet: its title, nothing on it,
// nothing saved.
class EmptyPage : public win32::PropertyPage {
public:
    EmptyPage(const win32::UiContext& ui, const wchar_t* title_key)
        : PropertyPage(ui.resources, IDD_EMPTY_PAGE), m_strTitle(SheetText(ui, title_key)) {
        description().dwFlags |= PSP_USETITLE;
        description().pszTitle = m_strTitle.c_str();
    }

private:
    std::wstring m_strTitle;
};

}  // namespace

std::vector<std::unique_ptr<win32::PropertyPage>> CreateSheetPages(const win32::UiContext& ui,
                                                                   senders::SenderList& approved,
                                                                   senders::SenderList& blocked) {
    (void)approved;  // for the sender pages (tabs 3 and 4)
    (void)blocked;
    std::vector<std::unique_ptr<win32::PropertyPage>> pages;
    pages.push_back(std::make_unique<CSpamDetectionPage>(ui));
    pages.push_back(std::make_unique<CLinkFilter>(ui));
    pages.push_back(std::make_unique<EmptyPage>(ui, L"IDS_SHEET_TAB_APPROVED"));
    pages.push_back(std::make_unique<EmptyPage>(ui, L"IDS_SHEET_TAB_BLOCKED"));
    pages.push_back(std::make_unique<EmptyPage>(ui, L"IDS_SHEET_TAB_LANGUAGES"));
    pages.push_back(std::make_unique<CAdvancedPage>(ui));
    return pages;
}

}  // namespace velk::settings_ui
