#include "settings_ui/category_level.h"

#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {
namespace {

const wchar_t* const kCategoryKeys[kCategoryCount] = {
    L"IDS_CATEGORY_SEXUAL", L"IDS_CATEGORY_COMMERCIAL", L"IDS_CATEGORY_FINANCIAL",
    L"IDS_CATEGORY_HEALTH", L"IDS_CATEGORY_RACIAL",     L"IDS_CATEGORY_SPIRITUAL",
    L"IDS_CATEGORY_OTHER"};

const win32::ControlText kTexts[] = {
    {0, L"IDS_CATEGORY_CAPTION"},           {IDC_CATEGORY_INTRO, L"IDS_CATEGORY_INTRO"},
    {IDC_CATEGORY_HIGH, L"IDS_LEVEL_HIGH"}, {IDC_CATEGORY_MEDIUM, L"IDS_LEVEL_MEDIUM"},
    {IDC_CATEGORY_LOW, L"IDS_LEVEL_LOW"},   {IDC_CATEGORY_DEFAULTS, L"IDS_CATEGORY_DEFAULTS"},
};

}  // namespace

const wchar_t* CategoryTextKey(Category category) {
    return kCategoryKeys[static_cast<int>(category)];
}

INT_PTR CCategoryLevel::Run(HWND owner) {
    return DoModal(m_ui.resources, IDD_CATEGORY_LEVEL, owner);
}

void CCategoryLevel::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    for (int i = 0; i < kCategoryCount; ++i) {
        const std::wstring name = SheetText(m_ui, kCategoryKeys[i]);
        if (!name.empty())
            ::SetDlgItemTextW(hwnd(), IDC_CATEGORY_LABEL_FIRST + i, name.c_str());
        SetUpLevelSlider(m_sliders[i], hwnd(), IDC_CATEGORY_SLIDER_FIRST + i, m_ui, m_thumbs,
                         false);
        m_sliders[i].SetPosition(m_stops[i]);
    }
    AlignLevelLabels();
    win32::CenterOnOwner(hwnd());
}

// The High, Medium and Low labels name the rows of stops: each is centred on
// its stop of the first slider, whatever the DPI makes of the template.
void CCategoryLevel::AlignLevelLabels() {
    HWND slider = m_sliders[0].hwnd();
    if (slider == nullptr)
        return;
    const controls::SliderGeometry g = m_sliders[0].geometry();
    const int labels[] = {IDC_CATEGORY_HIGH, IDC_CATEGORY_MEDIUM, IDC_CATEGORY_LOW};
    for (int stop = 0; stop < controls::BitmapSlider::kStops; ++stop) {
        HWND label = ::GetDlgItem(hwnd(), labels[stop]);
        if (label == nullptr)
            continue;
        POINT centre{0, g.StopCentre(stop)};
        ::MapWindowPoints(slider, hwnd(), &centre, 1);
        RECT r{};
        ::GetWindowRect(label, &r);
        ::MapWindowPoints(nullptr, hwnd(), reinterpret_cast<POINT*>(&r), 2);
        const int height = r.bottom - r.top;
        ::SetWindowPos(label, nullptr, r.left, centre.y - height / 2, 0, 0,
                       SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

bool CCategoryLevel::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            switch (LOWORD(wp)) {
                case IDOK:
                    for (int i = 0; i < kCategoryCount; ++i)
                        m_stops[i] = m_sliders[i].position();
                    Close(IDOK);
                    break;
                case IDCANCEL:
                    Close(IDCANCEL);
                    break;
                case IDC_CATEGORY_DEFAULTS:
                    for (controls::BitmapSlider& slider : m_sliders)
                        slider.SetPosition(kMediumStop);
                    break;
                default:
                    return false;
            }
            result = 0;
            return true;
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
