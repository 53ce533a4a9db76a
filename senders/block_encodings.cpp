#include "senders/block_encodings.h"

#include <set>

#include "log/diag_log.h"
#include "senders/safe_file.h"
#include "senders/sender_list.h"
#include "senders/sender_text.h"

namespace velk::senders {

namespace {

struct Offered {
    const char* key;
    const char* textId;
    std::vector<int> codePages;
};

// Windows, ISO, DOS, Macintosh and mail (ISO-2022, EUC) code pages of each
// script: mail in a script arrives in any of them.
const std::vector<Offered>& OfferedTable() {
    static const std::vector<Offered> table = {
        {"Arabic", "IDS_ENCODING_ARABIC", {1256, 28596, 708, 720, 864, 10004}},
        {"Baltic", "IDS_ENCODING_BALTIC", {1257, 28594, 28603, 775}},
        {"CentralEuropean", "IDS_ENCODING_CENTRAL_EUROPEAN", {1250, 28592, 852, 10029}},
        {"ChineseSimplified",
         "IDS_ENCODING_CHINESE_SIMPLIFIED",
         {936, 54936, 52936, 20936, 50227, 10008}},
        {"ChineseTraditional", "IDS_ENCODING_CHINESE_TRADITIONAL", {950, 20000, 20002, 10002}},
        {"Cyrillic", "IDS_ENCODING_CYRILLIC", {1251, 28595, 20866, 21866, 866, 855, 10007}},
        {"Greek", "IDS_ENCODING_GREEK", {1253, 28597, 737, 869, 10006}},
        {"Hebrew", "IDS_ENCODING_HEBREW", {1255, 28598, 38598, 862, 10005}},
        {"Indic",
         "IDS_ENCODING_INDIC",
         {57002, 57003, 57004, 57005, 57006, 57007, 57008, 57009, 57010, 57011}},
        {"Japanese", "IDS_ENCODING_JAPANESE", {932, 50220, 50221, 50222, 51932, 20932, 10001}},
        {"Korean", "IDS_ENCODING_KOREAN", {949, 51949, 50225, 1361, 10003}},
        {"Thai", "IDS_ENCODING_THAI", {874, 10021}},
        {"Turkish", "IDS_ENCODING_TURKISH", {1254, 28599, 857, 10081}},
        {"Vietnamese", "IDS_ENCODING_VIETNAMESE", {1258}},
    };
    return table;
}

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";
constexpr std::u16string_view kFileName = u"BlockEncodings.dat";
// Far more than any table of scripts; a count beyond it is damage.
constexpr long kMaxEntries = 1000;
constexpr std::size_t kMaxFileBytes = 1u << 20;

// Lines split at LF with a CR before it dropped, as the list files are read.
std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t lf = text.find('\n');
        std::string_view line = text.substr(0, lf);
        text.remove_prefix(lf == std::string_view::npos ? text.size() : lf + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.push_back(line);
    }
    return lines;
}

// A decimal number of at most `maxDigits` digits, nothing else.
bool ParseNumber(std::string_view text, std::size_t maxDigits, long& value) {
    if (text.empty() || text.size() > maxDigits)
        return false;
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + (c - '0');
    }
    return true;
}

bool ParseEntry(std::string_view line, BlockedEncoding& entry, std::string& problem) {
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos)
            break;
        line.remove_prefix(tab + 1);
    }
    if (fields.size() < 2 || fields[0].empty()) {
        problem = "an entry without its key, tab and flag";
        return false;
    }
    for (char c : fields[0]) {
        if (static_cast<unsigned char>(c) <= ' ' || static_cast<unsigned char>(c) >= 0x7F) {
            problem = "a key that is not plain ASCII";
            return false;
        }
    }
    if (fields[1] != "0" && fields[1] != "1") {
        problem = "a flag other than 0 or 1";
        return false;
    }
    entry.key.assign(fields[0]);
    entry.blocked = fields[1] == "1";
    entry.codePages.clear();
    for (std::size_t i = 2; i < fields.size(); ++i) {
        long page = 0;
        if (!ParseNumber(fields[i], 5, page) || page < 1 || page > 65535) {
            problem = "a code page that is no number from 1 to 65535";
            return false;
        }
        entry.codePages.push_back(static_cast<int>(page));
    }
    return true;
}

}  // namespace

std::vector<BlockedEncoding> DefaultBlockedEncodings() {
    std::vector<BlockedEncoding> entries;
    for (const Offered& o : OfferedTable())
        entries.push_back({o.key, false, o.codePages});
    return entries;
}

std::string_view BlockedEncodingTextId(std::string_view key) {
    for (const Offered& o : OfferedTable()) {
        if (key == o.key)
            return o.textId;
    }
    return {};
}

std::u16string BlockedEncodingsPath(std::u16string_view folder) {
    std::u16string path(folder);
    path.append(kFileName);
    return path;
}

std::string SerializeBlockedEncodings(const std::vector<BlockedEncoding>& entries) {
    std::string out;
    out.append(kUtf8Bom).append(kListBanner).append("\r\n");
    out.append(std::to_string(entries.size())).append("\r\n");
    for (const BlockedEncoding& e : entries) {
        out.append(e.key).append(1, '\t').append(e.blocked ? "1" : "0");
        for (int page : e.codePages)
            out.append(1, '\t').append(std::to_string(page));
        out.append("\r\n");
    }
    return out;
}

bool ParseBlockedEncodings(std::string_view bytes, std::vector<BlockedEncoding>& entries,
                           std::string& problem) {
    entries.clear();
    if (bytes.substr(0, kUtf8Bom.size()) == kUtf8Bom)
        bytes.remove_prefix(kUtf8Bom.size());
    const std::vector<std::string_view> lines = SplitLines(bytes);
    if (lines.empty() || lines[0].find(kListBanner) == std::string_view::npos) {
        problem = "no banner";
        return false;
    }
    long count = 0;
    if (lines.size() < 2 || !ParseNumber(lines[1], 4, count) || count > kMaxEntries) {
        problem = "no count";
        return false;
    }
    // Blank lines may follow the entries (an editor's last line end), nothing else.
    std::size_t used = lines.size();
    while (used > 2 && lines[used - 1].empty())
        --used;
    if (used - 2 != static_cast<std::size_t>(count)) {
        problem = "the count does not match the entries";
        return false;
    }
    std::set<std::string_view> keys;
    for (std::size_t i = 2; i < used; ++i) {
        BlockedEncoding entry;
        if (!ParseEntry(lines[i], entry, problem)) {
            entries.clear();
            return false;
        }
        if (!keys.insert(lines[i].substr(0, lines[i].find('\t'))).second) {
            problem = "a key given twice";
            entries.clear();
            return false;
        }
        entries.push_back(std::move(entry));
    }
    return true;
}

namespace {

std::vector<BlockedEncoding> LoadFile(ISenderFileSystem& fs, const std::u16string& path) {
    std::vector<BlockedEncoding> result = DefaultBlockedEncodings();
    std::string bytes;
    bool truncated = false;
    const FileResult read = fs.ReadAll(path, kMaxFileBytes, bytes, truncated);
    if (read.status == FileResult::kNotFound)
        return result;
    std::vector<BlockedEncoding> saved;
    std::string problem;
    if (!read.ok()) {
        problem = "it cannot be read (error " + std::to_string(read.error) + ")";
    } else if (truncated) {
        problem = "it is too large";
    } else {
        ParseBlockedEncodings(bytes, saved, problem);
    }
    if (!problem.empty()) {
        VELK_LOG(L"!!! blocked encodings %ls: %ls; nothing is blocked", ToWide(path).c_str(),
                 ToWide(Utf8ToUtf16(problem)).c_str());
        return result;
    }
    for (const BlockedEncoding& s : saved) {
        bool offered = false;
        for (BlockedEncoding& r : result) {
            if (r.key == s.key) {
                r.blocked = s.blocked;
                offered = true;
            }
        }
        if (!offered) {
            VELK_LOG(L"!!! blocked encodings %ls: entry %ls is not offered here and is dropped",
                     ToWide(path).c_str(), ToWide(Utf8ToUtf16(s.key)).c_str());
        }
    }
    return result;
}

}  // namespace

std::vector<BlockedEncoding> LoadBlockedEncodings(ISenderFileSystem& fs,
                                                  const std::u16string& path) {
    try {
        return LoadFile(fs, path);
    } catch (...) {
        VELK_LOG(L"@@@ Error : loading the blocked encodings %ls failed with an exception",
                 ToWide(path).c_str());
        return DefaultBlockedEncodings();
    }
}

bool SaveBlockedEncodings(ISenderFileSystem& fs, const std::u16string& path,
                          const std::vector<BlockedEncoding>& entries) {
    try {
        return SaveFileSafely(fs, path, SerializeBlockedEncodings(entries), L"blocked encodings");
    } catch (...) {
        VELK_LOG(L"@@@ Error : saving the blocked encodings %ls failed with an exception",
                 ToWide(path).c_str());
        return false;
    }
}

}  // namespace velk::senders
