// The trusted-domain list comes from a file the user (or anyone) may edit:
// whatever it holds, parsing must end, keep only domains in their one form,
// and read back what it writes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "settings_ui/link_filter_settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::wstring text;
    for (size_t i = 0; i + 1 < size; i += 2)
        text.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
    const auto domains = velk::settings_ui::ParseTrustedDomains(text);
    for (const std::wstring& domain : domains) {
        auto again = velk::settings_ui::NormalizeDomain(domain);
        if (!again || *again != domain)
            std::abort();
    }
    if (velk::settings_ui::ParseTrustedDomains(velk::settings_ui::JoinTrustedDomains(domains)) !=
        domains)
        std::abort();
    return 0;
}
