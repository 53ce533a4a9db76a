// The senders the scanning process hands over for approval through the
// installation file's [General] "ApproveMailList": entries separated by ";",
// each "name,address" or a bare address. Each step of the parse writes its
// debug line ("[KMB] ..."), which support reads to see why a sender did or
// did not arrive.
//
// Platform-free.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "senders/sender_record.h"

namespace velk::senders {

struct HandedOverSenders {
    std::vector<SenderRecord> senders;  // in the order given, names and addresses trimmed
    // An entry gave no address: parsing stopped there, the senders before it
    // are kept.
    bool malformed = false;
};

// `key` is the key's name, for the first debug line. A ";" at the very end
// ends the list rather than starting an empty entry.
HandedOverSenders ParseApproveMailList(std::u16string_view key, std::u16string_view value);

}  // namespace velk::senders
