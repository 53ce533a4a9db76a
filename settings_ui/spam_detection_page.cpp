#include "settings_ui/spam_detection_page.h"

#include "common_src/win32/companion.h"
#include "settings/ini_profile.h"
#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {
namespace {

bool Shows(const win32::Dialog& panel) {
    // The panel the page shows for its mode, whichever tab is open now: a
    // change made on this page must not be lost because OK was pressed on
    // another tab.
    return panel.hwnd() != nullptr && (::GetWindowLongW(panel.hwnd(), GWL_STYLE) & WS_VISIBLE);
}

}  // namespace

CSpamDetectionPage::CSpamDetectionPage(const win32::UiContext& ui)
    : PropertyPage(ui.resources, IDD_SPAM_DETECTION_PAGE),
      m_ui(ui),
      m_strTitle(SheetText(ui, L"IDS_SHEET_TAB_DETECTION")),
      m_pDefaultLevel(std::make_unique<CDefaultLevel>(ui, static_cast<LevelPanelListener&>(*this))),
      m_pCustomLevel(std::make_unique<CCustomLevel>(ui, static_cast<LevelPanelListener&>(*this))),
      m_categoryLevel(ui),
      m_serenelLevel(ui) {
    if (!m_strTitle.empty()) {
        description().dwFlags |= PSP_USETITLE;
        description().pszTitle = m_strTitle.c_str();
    }
}

// The panels are children of the page and go with it; the brush and the
// thumbs they borrow are released only after them.
CSpamDetectionPage::~CSpamDetectionPage() {
    m_pDefaultLevel.reset();
    m_pCustomLevel.reset();
}

void CSpamDetectionPage::OnInitDialog() {
    m_hbrWhite.reset(::CreateSolidBrush(RGB(255, 255, 255)));
    m_thumbs = LoadLevelThumbs(m_ui);
    m_pDefaultLevel->Create(hwnd(), m_hbrWhite.get(), m_thumbs.get());
    m_pCustomLevel->Create(hwnd(), m_hbrWhite.get());
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    for (win32::Dialog* panel : {static_cast<win32::Dialog*>(m_pDefaultLevel.get()),
                                 static_cast<win32::Dialog*>(m_pCustomLevel.get())}) {
        if (panel->hwnd() != nullptr) {
            ::SetWindowPos(panel->hwnd(), nullptr, 5, 0, client.right - 5, client.bottom - 5,
                           SWP_NOZORDER | SWP_NOACTIVATE);
        }
    }

    settings::IniProfile profile(m_ui.where);
    const DetectionValues values = LoadDetection(profile);
    m_bDefaultMode = values.default_mode;
    m_categoryLevel.SetStops(values.category_stops);
    m_categoryLevel.SetThumbs(m_thumbs.get());
    m_serenelLevel.SetValues(LoadSerenel(profile));
    m_serenelLevel.SetThumbs(m_thumbs.get());
    const bool cloud = values.in_the_cloud.value_or(true);
    m_pDefaultLevel->SetValues(values.protect_stop, cloud);
    m_pCustomLevel->ShowLevels(values.category_stops);
    m_pCustomLevel->SetCloud(cloud);
    m_bDirty = false;
    m_bSerenelChanged = false;
    ShowMode();
}

void CSpamDetectionPage::ShowMode() {
    HWND show = m_bDefaultMode ? m_pDefaultLevel->hwnd() : m_pCustomLevel->hwnd();
    HWND hide = m_bDefaultMode ? m_pCustomLevel->hwnd() : m_pDefaultLevel->hwnd();
    if (hide != nullptr) {
        // The keyboard must not stay on a control that disappears.
        if (::IsChild(hide, ::GetFocus()) && show != nullptr)
            ::SetFocus(::GetNextDlgTabItem(show, nullptr, FALSE));
        ::ShowWindow(hide, SW_HIDE);
    }
    if (show != nullptr)
        ::ShowWindow(show, SW_SHOW);
}

void CSpamDetectionPage::MarkChanged() {
    m_bDirty = true;
    SetModified(true);
}

void CSpamDetectionPage::OnPanelChanged() {
    MarkChanged();
}

void CSpamDetectionPage::OnCloudClicked(bool on) {
    m_pDefaultLevel->SetCloud(on);
    m_pCustomLevel->SetCloud(on);
}

void CSpamDetectionPage::OnCustomLevelRequested() {
    if (m_categoryLevel.Run(sheet()) != IDOK)
        return;  // cancelled: nothing changes, the mode stays
    m_pCustomLevel->ShowLevels(m_categoryLevel.stops());
    m_bDefaultMode = false;
    ShowMode();
    MarkChanged();
}

void CSpamDetectionPage::OnDefaultLevelRequested() {
    m_bDefaultMode = true;
    ShowMode();
    MarkChanged();
}

void CSpamDetectionPage::OnSerenelRequested() {
    const SerenelValues before = m_serenelLevel.values();
    if (m_serenelLevel.Run(sheet()) != IDOK)
        return;
    const SerenelValues& after = m_serenelLevel.values();
    if (after.enabled != before.enabled || after.stop != before.stop) {
        m_bSerenelChanged = true;
        MarkChanged();
    }
}

bool CSpamDetectionPage::OnApply() {
    if (!m_bDirty)
        return true;
    DetectionValues values;
    values.default_mode = m_bDefaultMode;
    values.protect_stop = m_pDefaultLevel->stop();
    values.category_stops = m_categoryLevel.stops();
    if (Shows(*m_pDefaultLevel))
        values.in_the_cloud = m_pDefaultLevel->cloud();
    else if (Shows(*m_pCustomLevel))
        values.in_the_cloud = m_pCustomLevel->cloud();
    else
        values.in_the_cloud.reset();

    // A failed write is logged where it happens; the sheet still closes, as
    // the user asked, and what could be written is written.
    settings::IniProfile profile(m_ui.where);
    SaveDetection(profile, values);
    if (m_bSerenelChanged)
        SaveSerenel(profile, m_serenelLevel.values());
    m_bDirty = false;
    m_bSerenelChanged = false;
    win32::companion::Post(kMsgDetectionSettingsSaved);
    return true;
}

bool CSpamDetectionPage::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    if (msg == WM_INITDIALOG) {
        OnInitDialog();
        result = TRUE;
        return true;
    }
    return PaintWhite(msg, wp, m_hbrWhite.get(), result);
}

}  // namespace velk::settings_ui
