#include "settings_ui/updates_dlg.h"

#include <commctrl.h>
#include <shellapi.h>

#include <ctime>
#include <cwchar>
#include <string>

#include "common_src/win32/companion.h"
#include "common_src/win32/handles.h"
#include "log/diag_log.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialog_rules.h"
#include "settings_ui/dialog_util.h"
#include "settings_ui/proxy_dlg.h"

namespace velk::settings_ui {
namespace {

constexpr UINT kMsgUpdateNow = WM_USER + 6;  // 1030, posted to the scanning process
constexpr int kMaxIntervalDigits = 5;

const win32::ControlText kTexts[] = {
    {0, L"IDS_UPD_CAPTION"},
    {IDC_UPD_ADDIN_LABEL, L"IDS_UPD_ADDIN_LABEL"},
    {IDC_UPD_ENGINE_LABEL, L"IDS_UPD_ENGINE_LABEL"},
    {IDC_UPD_PATTERN_LABEL, L"IDS_UPD_PATTERN_LABEL"},
    {IDC_UPD_LAST_LABEL, L"IDS_UPD_LAST_LABEL"},
    {IDC_UPD_UPDATE_NOW, L"IDS_UPD_UPDATE_NOW"},
    {IDC_UPD_SCHEDULE_GROUP, L"IDS_UPD_SCHEDULE_GROUP"},
    {IDC_UPD_ENABLE_SCHEDULE, L"IDS_UPD_ENABLE_SCHEDULE"},
    {IDC_UPD_INTERVAL_BEFORE, L"IDS_UPD_INTERVAL_BEFORE"},
    {IDC_UPD_INTERVAL_AFTER, L"IDS_UPD_INTERVAL_AFTER"},
    {IDC_UPD_SHOW_PROGRESS, L"IDS_UPD_SHOW_PROGRESS"},
    {IDC_UPD_PROXY, L"IDS_UPD_PROXY"},
    {IDHELP, L"IDS_UPD_HELP"},
    {IDOK, L"IDS_DLG_OK"},
    {IDCANCEL, L"IDS_DLG_CANCEL"},
};

enum class RegistryRead { Done, NotOpened, NotRead };

// A string value of the engine installation's key (64-bit view), at most
// 1024 bytes with its terminator.
RegistryRead ReadInstallationValue(const wchar_t* name, std::wstring& value) {
    value.clear();
    win32::unique_hkey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, settings::kAppPathRegistryKey, 0,
                        KEY_QUERY_VALUE | KEY_WOW64_64KEY, key.put()) != ERROR_SUCCESS) {
        return RegistryRead::NotOpened;
    }
    wchar_t buffer[512] = L"";
    DWORD type = 0;
    DWORD bytes = sizeof(buffer);
    if (::RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(buffer),
                           &bytes) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return RegistryRead::NotRead;
    }
    // A value stored without its terminator still ends inside the buffer.
    const std::size_t chars = bytes / sizeof(wchar_t);
    value.assign(buffer, chars < 512 ? chars : 511);
    value.resize(std::wcslen(value.c_str()));
    return RegistryRead::Done;
}

long long SystemNow() {
    return static_cast<long long>(std::time(nullptr));
}

// The local date and time of `seconds` since 1970 (UTC); false when it is
// not a time the system can show.
bool LocalDateTimeText(long long seconds, std::wstring& text) {
    if (seconds < 0)
        return false;
    const unsigned long long ticks =
        (static_cast<unsigned long long>(seconds) + 11644473600ULL) * 10000000ULL;
    FILETIME utc_file{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME utc{}, local{};
    if (!::FileTimeToSystemTime(&utc_file, &utc) ||
        !::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) {
        return false;
    }
    wchar_t date[128] = L"", time[128] = L"";
    if (::GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, date, 128) == 0 ||
        ::GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &local, nullptr, time, 128) == 0) {
        return false;
    }
    text = std::wstring(date) + L" " + time;
    return true;
}

}  // namespace

CUpdatesDlg::CUpdatesDlg(const win32::UiContext& ui, Clock now)
    : m_ui(ui), m_now(now ? std::move(now) : Clock(&SystemNow)) {}

INT_PTR CUpdatesDlg::Run() {
    return DoModal(m_ui.resources, IDD_UPDATES, OwnerOf(m_ui));
}

void CUpdatesDlg::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    SetItemText(hwnd(), IDC_UPD_GROUP,
                win32::Prefer(settings::ReadText(profile, Key::ASGroupTitle), m_ui.Text(L"IDS_UPD_GROUP")));
    SetItemText(hwnd(), IDC_UPD_ADDIN_VERSION, settings::ReadText(profile, Key::VELKOEVer));
    SetItemText(hwnd(), IDC_UPD_ENGINE_VERSION, settings::ReadText(profile, Key::EngineVer));
    SetItemText(hwnd(), IDC_UPD_PATTERN_VERSION,
                PatternVersionText(settings::ReadText(profile, Key::PatchVer)));
    ShowStatus();

    SetChecked(hwnd(), IDC_UPD_ENABLE_SCHEDULE, settings::ReadInt(profile, Key::EnableSchedule) != 0);
    SetChecked(hwnd(), IDC_UPD_SHOW_PROGRESS, settings::ReadInt(profile, Key::UpdateUI) != 0);
    m_edtInterval.Attach(::GetDlgItem(hwnd(), IDC_UPD_INTERVAL));
    ::SendDlgItemMessageW(hwnd(), IDC_UPD_INTERVAL, EM_LIMITTEXT, kMaxIntervalDigits, 0);
    ::SendDlgItemMessageW(hwnd(), IDC_UPD_INTERVAL_SPIN, UDM_SETRANGE32, 1, 99999);
    SetItemText(hwnd(), IDC_UPD_INTERVAL, std::to_wstring(settings::ReadInt(profile, Key::Interval)));
    EnableItems(hwnd(), {IDC_UPD_INTERVAL_BEFORE, IDC_UPD_INTERVAL, IDC_UPD_INTERVAL_SPIN, IDC_UPD_INTERVAL_AFTER},
                IsChecked(hwnd(), IDC_UPD_ENABLE_SCHEDULE));
    win32::CenterOnOwner(hwnd());
}

void CUpdatesDlg::ShowStatus() {
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    const long long last = settings::ReadInt(profile, Key::LastUpdateTime);
    std::wstring when;
    if (last == 0)
        when = m_ui.Text(L"IDS_UPD_NEVER");
    else if (!LocalDateTimeText(last, when))
        when = m_ui.Text(L"IDS_UPD_INVALID_DATE");
    SetItemText(hwnd(), IDC_UPD_LAST_UPDATE, when);

    const wchar_t* status = L"IDS_OUT_OF_DATE";
    switch (StatusOf(last, m_now(), settings::ReadInt(profile, Key::UpToDate))) {
        case UpdateStatus::NeverUpdated:
            status = L"IDS_STR_NOT_UPDATE_YET";
            break;
        case UpdateStatus::UpToDate:
            status = L"IDS_UP_TO_DATE";
            break;
        case UpdateStatus::OutOfDate:
            break;
    }
    SetItemText(hwnd(), IDC_UPD_STATUS, m_ui.Text(status));
}

void CUpdatesDlg::UpdateNow() {
    std::wstring version;
    switch (ReadInstallationValue(L"version", version)) {
        case RegistryRead::NotOpened:
            VELK_LOG(L"@@@ Error:open HKEY_LOCAL_MACHINE\\SOFTWARE\\Nuvexa\\Tessaveli failed");
            break;
        case RegistryRead::NotRead:
            VELK_LOG(L"@@@ Error:get HVN version  failed");
            break;
        case RegistryRead::Done:
            break;
    }
    VELK_LOG(L"@@@ HVN version is %s", version.c_str());
    if (IsRefusedEngineVersion(version)) {
        VELK_LOG(L"@@@ Error:HVN version is 17");
        return;
    }
    win32::companion::Post(kMsgUpdateNow);
}

void CUpdatesDlg::ShowHelp() {
    std::wstring help_dir = m_ui.where.install_dir;
    std::wstring app_path;
    if (ReadInstallationValue(settings::kAppPathRegistryValue, app_path) == RegistryRead::Done &&
        !app_path.empty()) {
        help_dir = app_path;
    }
    const std::wstring arguments = HelpArguments(help_dir);
    const auto answer = reinterpret_cast<INT_PTR>(
        ::ShellExecuteW(hwnd(), L"open", L"hh.exe", arguments.c_str(), nullptr, SW_SHOWNORMAL));
    if (answer <= 32)
        VELK_LOG(L"@@@ Error : can't start hh.exe%s (%d)", arguments.c_str(), static_cast<int>(answer));
}

bool CUpdatesDlg::OnOK() {
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    const bool scheduled = IsChecked(hwnd(), IDC_UPD_ENABLE_SCHEDULE);
    const std::wstring interval_text = ItemText(hwnd(), IDC_UPD_INTERVAL);
    long interval = std::wcstol(interval_text.c_str(), nullptr, 10);
    if (interval <= 0) {
        if (scheduled) {
            win32::ShowMessage(hwnd(), m_ui, L"IDS_UPD_INTERVAL_RANGE", L"IDS_WARNING_CAPTION",
                               MB_OK | MB_ICONWARNING);
            FocusItem(hwnd(), IDC_UPD_INTERVAL);
            return false;
        }
        interval = settings::ReadInt(profile, Key::Interval);  // not in use: left as stored
    }
    settings::WriteInt(profile, Key::EnableSchedule, scheduled ? 1 : 0);
    settings::WriteInt(profile, Key::UpdateUI, IsChecked(hwnd(), IDC_UPD_SHOW_PROGRESS) ? 1 : 0);
    settings::WriteInt(profile, Key::Interval, static_cast<int>(interval));
    return true;
}

bool CUpdatesDlg::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_HELP:
            ShowHelp();
            result = TRUE;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            switch (LOWORD(wp)) {
                case IDOK:
                    if (OnOK())
                        Close(IDOK);
                    return true;
                case IDCANCEL:
                    Close(IDCANCEL);
                    return true;
                case IDC_UPD_UPDATE_NOW:
                    UpdateNow();
                    return true;
                case IDC_UPD_PROXY: {
                    CProxySettingDlg proxy(m_ui);
                    proxy.Run(hwnd());
                    return true;
                }
                case IDHELP:
                    ShowHelp();
                    return true;
                case IDC_UPD_ENABLE_SCHEDULE:
                    EnableItems(hwnd(),
                                {IDC_UPD_INTERVAL_BEFORE, IDC_UPD_INTERVAL, IDC_UPD_INTERVAL_SPIN,
                                 IDC_UPD_INTERVAL_AFTER},
                                IsChecked(hwnd(), IDC_UPD_ENABLE_SCHEDULE));
                    return true;
                default:
                    return false;
            }
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
