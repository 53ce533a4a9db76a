#include "settings_ui/dialog_rules.h"

namespace velk::settings_ui {

unsigned PurgeDaysOf(const std::wstring& stored) {
    unsigned long long days = 0;
    for (wchar_t c : stored) {
        if (c < L'0' || c > L'9')
            return kDefaultPurgeDays;
        if (days <= kMaxPurgeDays)  // stop growing once out of range
            days = days * 10 + static_cast<unsigned>(c - L'0');
    }
    return days == 0 || days > kMaxPurgeDays ? kDefaultPurgeDays : static_cast<unsigned>(days);
}

UpdateStatus StatusOf(long long last_update, long long now, int up_to_date) {
    if (last_update == 0)
        return UpdateStatus::NeverUpdated;
    if (now - last_update >= kOutOfDateSeconds)
        return UpdateStatus::OutOfDate;
    return up_to_date == 1 ? UpdateStatus::UpToDate : UpdateStatus::OutOfDate;
}

std::wstring PatternVersionText(const std::wstring& stored) {
    if (stored.size() <= 3)
        return stored;
    return stored.substr(0, stored.size() - 3) + L"." + stored.substr(stored.size() - 3);
}

bool IsRefusedEngineVersion(const std::wstring& version) {
    return version.compare(0, 3, L"17.") == 0;
}

std::wstring HelpArguments(const std::wstring& help_dir) {
    std::wstring dir = help_dir;
    // The registry's "Application Path" may come without its backslash.
    if (!dir.empty() && dir.back() != L'\\' && dir.back() != L'/')
        dir += L'\\';
    return L" -mapid 206 \"" + dir + L"qzhelp.chm\"";
}

bool IsPortInRange(int port) {
    return port >= 1 && port <= 65535;
}

bool IsAcceptedProxyHost(const std::wstring& host) {
    if (host.empty() || host.size() > 256)
        return false;
    for (wchar_t c : host) {
        if (static_cast<unsigned>(c) > 128)
            return false;
    }
    return true;
}

bool PassesPortCheck(const std::wstring& port) {
    if (port.size() > 255)
        return false;
    for (wchar_t c : port) {
        const unsigned unit = static_cast<unsigned>(c) & 0xFFFF;
        for (unsigned byte : {unit & 0xFF, unit >> 8}) {
            if (byte == 0)
                return true;
            if (byte < '0' || byte > '9')
                return false;
        }
    }
    return true;
}

}  // namespace velk::settings_ui
