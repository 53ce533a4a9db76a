#include "senders/approve_mail_list.h"

#include "log/diag_log.h"
#include "senders/sender_text.h"

namespace velk::senders {

namespace {

std::u16string_view Trimmed(std::u16string_view text) {
    const std::size_t first = text.find_first_not_of(u" \t");
    if (first == std::u16string_view::npos)
        return {};
    const std::size_t last = text.find_last_not_of(u" \t");
    return text.substr(first, last - first + 1);
}

}  // namespace

HandedOverSenders ParseApproveMailList(std::u16string_view key, std::u16string_view value) {
    HandedOverSenders result;
    VELK_LOG(L"[KMB] %ls = %ls", ToWide(key).c_str(), ToWide(value).c_str());
    std::u16string_view rest = value;
    bool first = true;
    while (!rest.empty()) {
        const std::size_t semicolon = rest.find(u';');
        std::u16string_view entry = rest.substr(0, semicolon);
        if (semicolon != std::u16string_view::npos) {
            VELK_LOG(L"[KMB] ';' found, extract approved mail...");
            rest.remove_prefix(semicolon + 1);
        } else {
            rest = {};
        }

        SenderRecord sender;
        const std::size_t comma = entry.find(u',');
        if (comma != std::u16string_view::npos) {
            VELK_LOG(L"[KMB] ',' found, extract mail address...");
            sender.name = Trimmed(entry.substr(0, comma));
            sender.address = Trimmed(entry.substr(comma + 1));
        } else {
            VELK_LOG(L"[KMB] no ',' found, assign whole string to be the mail address");
            VELK_LOG(L"[KMB] no sender found");
            sender.address = Trimmed(entry);
        }
        VELK_LOG(L"[KMB] So, addr=(%ls) \t sender=(%ls)", ToWide(sender.address).c_str(),
                 ToWide(sender.name).c_str());
        if (sender.address.empty()) {
            result.malformed = true;
            break;
        }
        VELK_LOG(first ? L"[KMB] (1)Insert addr (%ls) to list" : L"[KMB] (2)Insert addr (%ls) to list",
                 ToWide(sender.address).c_str());
        first = false;
        result.senders.push_back(std::move(sender));
    }
    return result;
}

}  // namespace velk::senders
