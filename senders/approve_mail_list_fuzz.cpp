// Any text as the installation file's ApproveMailList: the parse must not
// crash, and every sender it hands over has an address without separators or
// surrounding blanks.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "senders/approve_mail_list.h"

using namespace velk::senders;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::u16string value;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        value.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    const HandedOverSenders parsed = ParseApproveMailList(u"ApproveMailList", value);
    for (const SenderRecord& s : parsed.senders) {
        if (s.address.empty() || s.address.find(u';') != std::u16string::npos ||
            s.name.find(u',') != std::u16string::npos || s.address.front() == u' ' ||
            s.address.back() == u'\t')
            std::abort();
    }
    return 0;
}
