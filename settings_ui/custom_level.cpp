#include "settings_ui/custom_level.h"

#include "settings_ui/category_level.h"
#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {IDC_CUSTOM_GROUP, L"IDS_CUSTOM_GROUP"},
    {IDC_CUSTOM_INTRO, L"IDS_CUSTOM_INTRO"},
    {IDC_CUSTOM_CHANGE, L"IDS_CUSTOM_CHANGE_BUTTON"},
    {IDC_CUSTOM_DEFAULT_NOTE, L"IDS_CUSTOM_DEFAULT_NOTE"},
    {IDC_CUSTOM_USE_DEFAULT, L"IDS_CUSTOM_DEFAULT_BUTTON"},
    {IDC_CUSTOM_SERENEL_NOTE, L"IDS_DETECTION_SERENEL_NOTE"},
    {IDC_CUSTOM_SERENEL, L"IDS_DETECTION_SERENEL_BUTTON"},
    {IDC_CUSTOM_CLOUD, L"IDC_CHECK_ENABLE_IN_THE_CLOUD"},
};

}  // namespace

CCustomLevel::CCustomLevel(const win32::UiContext& ui, LevelPanelListener& listener)
    : m_ui(ui), m_listener(listener) {}

bool CCustomLevel::Create(HWND page, HBRUSH white) {
    m_hbrWhite = white;
    return CreateModeless(m_ui.resources, IDD_CUSTOM_LEVEL, page) != nullptr;
}

void CCustomLevel::ShowLevels(const std::array<int, kCategoryCount>& stops) {
    if (hwnd() == nullptr)
        return;
    const auto names = LevelNames(m_ui);
    for (int i = 0; i < kCategoryCount; ++i) {
        const int stop = stops[i] >= 0 && stops[i] < kLevelStops ? stops[i] : kMediumStop;
        ::SetDlgItemTextW(hwnd(), IDC_CUSTOM_LEVEL_FIRST + i, names[stop].c_str());
    }
}

bool CCustomLevel::cloud() const {
    return hwnd() != nullptr && IsChecked(hwnd(), IDC_CUSTOM_CLOUD);
}

void CCustomLevel::SetCloud(bool on) {
    if (hwnd() != nullptr)
        SetChecked(hwnd(), IDC_CUSTOM_CLOUD, on);
}

void CCustomLevel::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    m_levelFont.reset(win32::CreateDialogFont(hwnd(), L"", 0, FW_BOLD));
    for (int i = 0; i < kCategoryCount; ++i) {
        const std::wstring name = SheetText(m_ui, CategoryTextKey(static_cast<Category>(i)));
        if (!name.empty())
            ::SetDlgItemTextW(hwnd(), IDC_CUSTOM_NAME_FIRST + i, WithoutMnemonic(name).c_str());
        if (m_levelFont) {
            ::SendDlgItemMessageW(hwnd(), IDC_CUSTOM_LEVEL_FIRST + i, WM_SETFONT,
                                  reinterpret_cast<WPARAM>(m_levelFont.get()), FALSE);
        }
    }
}

bool CCustomLevel::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = FALSE;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            switch (LOWORD(wp)) {
                case IDC_CUSTOM_CHANGE:
                    m_listener.OnCustomLevelRequested();
                    break;
                case IDC_CUSTOM_USE_DEFAULT:
                    m_listener.OnDefaultLevelRequested();
                    break;
                case IDC_CUSTOM_SERENEL:
                    m_listener.OnSerenelRequested();
                    break;
                case IDC_CUSTOM_CLOUD:
                    m_listener.OnCloudClicked(cloud());
                    m_listener.OnPanelChanged();
                    break;
                default:
                    return false;
            }
            result = 0;
            return true;
        default:
            return PaintWhite(msg, wp, m_hbrWhite, result);
    }
}

}  // namespace velk::settings_ui
