// The languages and scripts a user may block: the file "BlockEncodings.dat"
// in the list folder, which the scanning process reads to refuse mail written
// in the code pages of the blocked entries.
//
// The file, written like the sender lists (UTF-8 with a byte-order mark,
// CR LF line ends):
//     ; Written by VELK v3.5 (c) 2005 Nuvexa
//     <count>
//     <key>\t<0|1>[\t<code page>]...      one line per entry, <count> lines
//
// Platform-free.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "senders/sender_file_system.h"

namespace velk::senders {

struct BlockedEncoding {
    std::string key;  // ASCII, the same in every language of the user interface
    bool blocked = false;
    std::vector<int> codePages;
};

inline bool operator==(const BlockedEncoding& a, const BlockedEncoding& b) {
    return a.key == b.key && a.blocked == b.blocked && a.codePages == b.codePages;
}

// What the user is offered, in the order shown, nothing blocked: the scripts
// of mail that are not Latin, and the Latin-script code pages of the regions
// that have their own.
std::vector<BlockedEncoding> DefaultBlockedEncodings();

// The string-table key of an offered entry's name ("IDS_ENCODING_..."), empty
// for a key that is not offered.
std::string_view BlockedEncodingTextId(std::string_view key);

std::u16string BlockedEncodingsPath(std::u16string_view folder);

std::string SerializeBlockedEncodings(const std::vector<BlockedEncoding>& entries);

// The file's entries exactly as written. False, with `problem` saying what is
// wrong, for anything but a well-formed file: no banner, a count that is no
// number or does not match the lines, a line without its tab and 0/1 flag, a
// code page that is no number from 1 to 65535, a key given twice.
bool ParseBlockedEncodings(std::string_view bytes, std::vector<BlockedEncoding>& entries,
                           std::string& problem);

// The offered entries with the flags the file gives them. A missing file
// gives the defaults; a broken one the defaults and a log line. Entries the
// file has but we do not offer are dropped (logged); the code pages are
// always ours, so a newer table reaches the scanning process at the next save.
std::vector<BlockedEncoding> LoadBlockedEncodings(ISenderFileSystem& fs,
                                                  const std::u16string& path);

// Through a temporary file, as the sender lists (safe_file.h).
bool SaveBlockedEncodings(ISenderFileSystem& fs, const std::u16string& path,
                          const std::vector<BlockedEncoding>& entries);

}  // namespace velk::senders
