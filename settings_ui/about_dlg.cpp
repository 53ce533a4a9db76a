#include "settings_ui/about_dlg.h"

#include <vector>

#include "common_src/win32/window.h"
#include "log/diag_log.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialog_rules.h"
#include "settings_ui/dialog_util.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {IDC_ABOUT_VERSION_LABEL, L"IDS_ABOUT_VERSION_LABEL"},
    {IDC_ABOUT_ENGINE_LABEL, L"IDS_ABOUT_ENGINE_LABEL"},
    {IDC_ABOUT_PATTERN_LABEL, L"IDS_ABOUT_PATTERN_LABEL"},
    {IDC_ABOUT_COPYRIGHT, L"IDC_STATIC_COPYRIGHT"},
    {IDC_ABOUT_WARNING, L"IDS_ABOUT_WARNING"},
    {IDOK, L"IDS_DLG_OK"},
};

bool IsAbsolutePath(const std::wstring& path) {
    return (path.size() >= 2 && path[1] == L':') || (!path.empty() && (path[0] == L'\\' || path[0] == L'/'));
}

std::wstring VersionString(const std::vector<BYTE>& block, const wchar_t* language, const wchar_t* name) {
    const std::wstring query = std::wstring(L"\\StringFileInfo\\") + language + L"\\" + name;
    wchar_t* value = nullptr;
    UINT chars = 0;
    if (!::VerQueryValueW(block.data(), query.c_str(), reinterpret_cast<void**>(&value), &chars) ||
        value == nullptr) {
        return std::wstring();
    }
    return std::wstring(value, chars > 0 && value[chars - 1] == L'\0' ? chars - 1 : chars);
}

}  // namespace

CAboutDlg::CAboutDlg(const win32::UiContext& ui) : m_ui(ui) {}

INT_PTR CAboutDlg::Run() {
    return DoModal(m_ui.resources, IDD_ABOUT, OwnerOf(m_ui));
}

bool CAboutDlg::ReadModuleVersion(HMODULE module, std::wstring& file_version,
                                  std::wstring& private_build) {
    file_version.clear();
    private_build.clear();
    wchar_t path[MAX_PATH] = L"";
    if (::GetModuleFileNameW(module, path, MAX_PATH) == 0)
        return false;
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path, &ignored);
    if (size == 0)
        return false;
    std::vector<BYTE> block(size);
    if (!::GetFileVersionInfoW(path, 0, size, block.data()))
        return false;
    struct Translation {
        WORD language;
        WORD code_page;
    };
    Translation* translations = nullptr;
    UINT bytes = 0;
    wchar_t language[16] = L"040904b0";  // US English, Unicode: what our resource says
    if (::VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation",
                         reinterpret_cast<void**>(&translations), &bytes) &&
        bytes >= sizeof(Translation)) {
        swprintf_s(language, L"%04x%04x", translations[0].language, translations[0].code_page);
    }
    file_version = VersionString(block, language, L"FileVersion");
    private_build = VersionString(block, language, L"PrivateBuild");
    return !file_version.empty();
}

void CAboutDlg::LoadBanner() {
    settings::IniProfile profile(m_ui.where);
    const std::wstring named = settings::ReadText(profile, settings::Key::AboutBannerPath);
    if (named.empty()) {
        m_bmpBanner.reset(static_cast<HBITMAP>(::LoadImageW(
            m_ui.resources, MAKEINTRESOURCEW(IDB_ABOUT_BANNER), IMAGE_BITMAP, 0, 0, 0)));
    } else {
        const std::wstring path = IsAbsolutePath(named) ? named : m_ui.where.install_dir + named;
        m_bmpBanner.reset(static_cast<HBITMAP>(::LoadImageW(
            nullptr, path.c_str(), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION)));
        // A missing or damaged file leaves the banner's strip empty.
        if (!m_bmpBanner)
            VELK_LOG(L"!!! the About banner %s can't be loaded (%lu)", path.c_str(), ::GetLastError());
    }
    if (m_bmpBanner) {
        ::SendDlgItemMessageW(hwnd(), IDC_ABOUT_BANNER, STM_SETIMAGE, IMAGE_BITMAP,
                              reinterpret_cast<LPARAM>(m_bmpBanner.get()));
    }
}

void CAboutDlg::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    const win32::Placeholders names = m_ui.placeholders();
    ::SetWindowTextW(hwnd(), win32::Prefer(settings::ReadText(profile, Key::AboutTitle),
                                           m_ui.Text(L"IDD_ABOUT_IDC_STATIC_TITLE"))
                                 .c_str());
    // The product name falls back to the localised one; the company to the
    // name the installation brands the texts with, then the localised one.
    SetItemText(hwnd(), IDC_ABOUT_PRODUCT, names.product_name);
    SetItemText(hwnd(), IDC_ABOUT_COMPANY,
                win32::Prefer(settings::ReadText(profile, Key::AboutCompanyName), names.corp_name));

    std::wstring file_version, private_build;
    if (ReadModuleVersion(win32::ThisModule(), file_version, private_build)) {
        if (!private_build.empty())
            file_version += L" (" + m_ui.Text(L"IDS_ABOUT_BUILD") + L" " + private_build + L")";
    } else {
        VELK_LOG(L"!!! the add-in has no readable version resource (%lu)", ::GetLastError());
    }
    SetItemText(hwnd(), IDC_ABOUT_VERSION, file_version);
    SetItemText(hwnd(), IDC_ABOUT_ENGINE, settings::ReadText(profile, Key::EngineVer));
    SetItemText(hwnd(), IDC_ABOUT_PATTERN, PatternVersionText(settings::ReadText(profile, Key::PatchVer)));

    m_fontProduct.reset(
        CreateTextFont(hwnd(), m_ui, L"IDS_VELK_SYSTEM_FONT", L"IDS_INTERMEDIATE_FONT_SIZE", FW_BOLD));
    if (m_fontProduct)
        ::SendDlgItemMessageW(hwnd(), IDC_ABOUT_PRODUCT, WM_SETFONT,
                              reinterpret_cast<WPARAM>(m_fontProduct.get()), FALSE);
    LoadBanner();
    win32::CenterOnOwner(hwnd());
}

bool CAboutDlg::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            if (LOWORD(wp) == IDOK || LOWORD(wp) == IDCANCEL) {
                Close(LOWORD(wp));
                return true;
            }
            return false;
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
