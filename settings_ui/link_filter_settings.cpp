#include "settings_ui/link_filter_settings.h"

#include <algorithm>

#include "log/diag_log.h"

namespace velk::settings_ui {
namespace {

using settings::Key;

constexpr std::size_t kMaxDomain = 253;
constexpr std::size_t kMaxLabel = 63;

bool IsBlank(wchar_t c) {
    return c == L' ' || c == L'\t';
}

std::wstring_view Trim(std::wstring_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool ValidLabel(std::wstring_view label) {
    if (label.empty() || label.size() > kMaxLabel || label.front() == L'-' || label.back() == L'-')
        return false;
    return std::all_of(label.begin(), label.end(), [](wchar_t c) {
        return (c >= L'a' && c <= L'z') || (c >= L'0' && c <= L'9') || c == L'-';
    });
}

bool Write(settings::Profile& profile, Key key, const std::wstring& value) {
    if (settings::WriteText(profile, key, value))
        return true;
    const settings::SettingKey& k = settings::Setting(key);
    VELK_LOG(L"@@@ Error : can't write [%ls] %ls to the user settings", k.section, k.name);
    return false;
}

}  // namespace

bool LinkFilterValues::operator==(const LinkFilterValues& other) const {
    return enabled == other.enabled && warn_mismatched == other.warn_mismatched &&
           flag_numeric == other.flag_numeric && trusted == other.trusted;
}

std::optional<std::wstring> NormalizeDomain(std::wstring_view text) {
    std::wstring_view rest = Trim(text);
    // A pasted address: keep only the host.
    const std::size_t scheme = rest.find(L"://");
    if (scheme != std::wstring_view::npos)
        rest.remove_prefix(scheme + 3);
    const std::size_t end = rest.find_first_of(L"/?#:");
    if (end != std::wstring_view::npos)
        rest = rest.substr(0, end);
    if (rest.size() >= 2 && rest[0] == L'*' && rest[1] == L'.')
        rest.remove_prefix(2);
    else if (!rest.empty() && rest.front() == L'.')
        rest.remove_prefix(1);
    if (!rest.empty() && rest.back() == L'.')
        rest.remove_suffix(1);
    if (rest.empty() || rest.size() > kMaxDomain)
        return std::nullopt;

    std::wstring domain(rest);
    for (wchar_t& c : domain) {
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    }
    std::size_t labels = 0;
    bool all_numeric = true;
    std::size_t start = 0;
    while (true) {
        const std::size_t dot = domain.find(L'.', start);
        const std::wstring_view label =
            std::wstring_view(domain).substr(start, dot == std::wstring::npos ? dot : dot - start);
        if (!ValidLabel(label))
            return std::nullopt;
        ++labels;
        all_numeric = all_numeric && std::all_of(label.begin(), label.end(),
                                                 [](wchar_t c) { return c >= L'0' && c <= L'9'; });
        if (dot == std::wstring::npos)
            break;
        start = dot + 1;
    }
    // A name, not an address: numeric hosts are what the filter warns about.
    if (labels < 2 || all_numeric)
        return std::nullopt;
    return domain;
}

std::vector<std::wstring> ParseTrustedDomains(std::wstring_view text) {
    std::vector<std::wstring> domains;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find_first_of(L";,", start);
        if (end == std::wstring_view::npos)
            end = text.size();
        if (auto domain = NormalizeDomain(text.substr(start, end - start))) {
            if (std::find(domains.begin(), domains.end(), *domain) == domains.end())
                domains.push_back(std::move(*domain));
        }
        start = end + 1;
    }
    return domains;
}

std::wstring JoinTrustedDomains(const std::vector<std::wstring>& domains) {
    std::wstring joined;
    for (const std::wstring& domain : domains) {
        if (!joined.empty())
            joined += L';';
        joined += domain;
    }
    return joined;
}

bool TrustedDomainsFit(const std::vector<std::wstring>& domains) {
    return JoinTrustedDomains(domains).size() < settings::kValueBufferChars;
}

LinkFilterValues LoadLinkFilter(settings::Profile& profile) {
    LinkFilterValues values;
    values.enabled = settings::ReadTrimmed(profile, Key::EnableLinkFilter) != L"0";
    values.warn_mismatched = settings::ReadTrimmed(profile, Key::WarnMismatchedLinks) != L"0";
    values.flag_numeric = settings::ReadTrimmed(profile, Key::FlagNumericLinks) != L"0";
    values.trusted = ParseTrustedDomains(settings::ReadText(profile, Key::TrustedDomains));
    return values;
}

bool SaveLinkFilter(settings::Profile& profile, const LinkFilterValues& values) {
    bool ok = Write(profile, Key::EnableLinkFilter, values.enabled ? L"1" : L"0");
    ok = Write(profile, Key::WarnMismatchedLinks, values.warn_mismatched ? L"1" : L"0") && ok;
    ok = Write(profile, Key::FlagNumericLinks, values.flag_numeric ? L"1" : L"0") && ok;
    return Write(profile, Key::TrustedDomains, JoinTrustedDomains(values.trusted)) && ok;
}

}  // namespace velk::settings_ui
