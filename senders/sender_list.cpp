#include "senders/sender_list.h"

#include <algorithm>
#include <functional>
#include <unordered_set>
#include <vector>

#include "log/diag_log.h"
#include "senders/safe_file.h"
#include "senders/sender_text.h"

namespace velk::senders {

namespace {

// Older versions of the product wrote the first two; their files still load.
// All three are ASCII, so they are looked for in the line's bytes.
constexpr std::string_view kAcceptedBanners[] = {
    "; Written by QZFlenmarrow v1.0 (c) 2003 Nuvexa",
    "; Written by QZAnti-Spam v1.0 (c) 2003 Nuvexa",
    kListBanner,
};

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

bool HasAcceptedBanner(std::string_view line) {
    for (std::string_view banner : kAcceptedBanners) {
        if (line.find(banner) != std::string_view::npos)
            return true;
    }
    return false;
}

bool HoldsWildcard(std::u16string_view key) {
    return key.find(u'*') != std::u16string_view::npos;
}

// Splits the file's bytes into lines the way the scanning process reads them:
// at LF, with a CR directly before the LF dropped; the text after the last LF
// is a line when it is not empty. LF, CR and NUL never occur inside a UTF-8
// sequence, so splitting the bytes splits the text.
class LineReader {
public:
    explicit LineReader(std::string_view bytes)
        : rest_(bytes), mayHoldNul_(bytes.find('\0') != std::string_view::npos) {}

    bool Next(std::string_view& line) {
        if (rest_.empty())
            return false;
        const std::size_t lf = rest_.find('\n');
        if (lf == std::string_view::npos) {
            line = rest_;
            rest_ = {};
        } else {
            line = rest_.substr(0, lf);
            rest_.remove_prefix(lf + 1);
            if (!line.empty() && line.back() == '\r')
                line.remove_suffix(1);
        }
        // The other readers of the file handle a line as a C string: whatever
        // follows a NUL is invisible to them, so it is to us.
        if (mayHoldNul_)
            line = line.substr(0, line.find('\0'));
        return true;
    }

private:
    std::string_view rest_;
    const bool mayHoldNul_;  // one search of the file spares one per line
};

// The records kept from a file while it is read, their texts laid end to end
// as an entry holds them (key, name, address): reading allocates nothing per
// record, and only what survives reaches the list.
class LoadedRecords {
public:
    std::size_t Size() const { return spans_.size(); }
    std::u16string_view Key(std::size_t i) const { return Part(i, 0, spans_[i].key); }
    std::u16string_view Name(std::size_t i) const { return Part(i, spans_[i].key, spans_[i].name); }
    std::u16string_view Address(std::size_t i) const {
        return Part(i, spans_[i].key + spans_[i].name, spans_[i].address);
    }

    // The texts of a file's records take fewer UTF-16 units than the file has
    // bytes, but for very short names; one reservation spares the regrowth.
    void Reserve(std::size_t fileBytes) {
        text_.reserve(std::min<std::size_t>(fileBytes, 4u << 20));
    }

    void Append(const SenderRecord& record) {
        spans_.push_back(
            {text_.size(), record.address.size(), record.name.size(), record.address.size()});
        const std::size_t keyAt = text_.size();
        text_.append(record.address).append(record.name).append(record.address);
        char16_t* const key = &text_[keyAt];
        for (std::size_t i = 0; i < record.address.size(); ++i)
            key[i] = FoldKeyChar(key[i]);
    }
    void DropLast() {
        text_.resize(spans_.back().offset);
        spans_.pop_back();
    }
    void SortByKey() {
        std::sort(spans_.begin(), spans_.end(), [this](const Span& a, const Span& b) {
            return std::u16string_view(text_).substr(a.offset, a.key) <
                   std::u16string_view(text_).substr(b.offset, b.key);
        });
    }

    // Hashing and comparing records by key, for a set of indices.
    struct KeyHash {
        const LoadedRecords* records;
        std::size_t operator()(std::size_t i) const {
            return std::hash<std::u16string_view>()(records->Key(i));
        }
    };
    struct KeyEqual {
        const LoadedRecords* records;
        bool operator()(std::size_t a, std::size_t b) const {
            return records->Key(a) == records->Key(b);
        }
    };

private:
    struct Span {
        std::size_t offset, key, name, address;
    };
    std::u16string_view Part(std::size_t i, std::size_t from, std::size_t length) const {
        return std::u16string_view(text_).substr(spans_[i].offset + from, length);
    }

    std::u16string text_;
    std::vector<Span> spans_;
};

}  // namespace

std::u16string SenderListPath(std::u16string_view folder, SenderListKind kind) {
    std::u16string path(folder);
    path.append(FormatOf(kind).fileName);
    return path;
}

SenderList::SenderList(SenderListKind kind, ISenderFileSystem& fs)
    : format_(FormatOf(kind)), fs_(fs) {}

// Load and Save run on the pages' behalf inside the mail client: nothing may
// escape them, not even running out of memory on a monstrous file.
bool SenderList::Load(const std::u16string& path) {
    try {
        return LoadFile(path);
    } catch (...) {
        // Whatever was added before the failure stays.
        VELK_LOG(L"@@@ Error : loading the sender list %ls failed with an exception",
                 ToWide(path).c_str());
        return true;
    }
}

bool SenderList::Save(const std::u16string& path) {
    try {
        return SaveFile(path);
    } catch (...) {
        VELK_LOG(
            L"@@@ Error : saving the sender list %ls failed with an exception; the old "
            L"list is kept",
            ToWide(path).c_str());
        return false;
    }
}

bool SenderList::Modified() const {
    std::lock_guard<std::mutex> guard(lock_);
    return modified_;
}

bool SenderList::LoadFile(const std::u16string& path) {
    {
        std::lock_guard<std::mutex> guard(lock_);
        entries_.clear();
        wildcards_.clear();
        modified_ = false;
    }

    std::string bytes;
    bool truncated = false;
    const FileResult read = fs_.ReadAll(path, kMaxListFileBytes, bytes, truncated);
    if (read.status == FileResult::kNotFound)
        return true;
    if (!read.ok()) {
        VELK_LOG(L"!!! sender list %ls cannot be read (error %lu); the list starts empty",
                 ToWide(path).c_str(), read.error);
        return true;
    }
    if (truncated) {
        VELK_LOG(L"!!! sender list %ls is larger than %lu bytes; the rest is not read",
                 ToWide(path).c_str(), static_cast<unsigned long>(kMaxListFileBytes));
    }

    std::string_view content(bytes);
    if (content.substr(0, kUtf8Bom.size()) == kUtf8Bom)
        content.remove_prefix(kUtf8Bom.size());

    LineReader lines(content);
    std::string_view line;
    if (!lines.Next(line))
        return true;  // an empty file is an empty list
    if (!HasAcceptedBanner(line)) {
        VELK_LOG(L"@@@ Error : sender list %ls has no known banner; not loaded",
                 ToWide(path).c_str());
        return false;
    }

    // The records that survive are the first `capacity` distinct keys in file
    // order (the first of a key wins). They are gathered first and added in
    // key order: adding a file's records one by one in file order would cost
    // a move of half the list for every record out of order.
    LoadedRecords kept;
    kept.Reserve(content.size());
    // Only needed once the file turns out not to be in key order.
    std::unordered_set<std::size_t, LoadedRecords::KeyHash, LoadedRecords::KeyEqual> keys(
        0, LoadedRecords::KeyHash{&kept}, LoadedRecords::KeyEqual{&kept});
    bool inOrder = true;
    SenderRecord record;
    unsigned long unusable = 0;
    unsigned long dropped = 0;
    while (lines.Next(line)) {
        ParseRecordLine(format_, line, record);
        if (record.address.empty()) {
            unusable += line.empty() ? 0 : 1;
            continue;
        }
        // With `capacity` distinct keys kept, any later record is a duplicate
        // or one too many.
        if (kept.Size() >= format_.capacity) {
            ++dropped;
            continue;
        }
        kept.Append(record);
        const std::size_t last = kept.Size() - 1;
        if (inOrder) {
            if (last == 0 || kept.Key(last - 1) < kept.Key(last))
                continue;
            inOrder = false;
            for (std::size_t i = 0; i < last; ++i)
                keys.insert(i);
        }
        if (!keys.insert(last).second) {
            kept.DropLast();
            ++dropped;
        }
    }
    if (!inOrder) {
        keys.clear();
        kept.SortByKey();
    }
    for (std::size_t i = 0; i < kept.Size(); ++i)
        dropped += AddLoaded(kept.Key(i), kept.Name(i), kept.Address(i)) ? 0 : 1;

    if (unusable != 0 || dropped != 0) {
        VELK_LOG(
            L"!!! sender list %ls: %lu lines hold no usable record, %lu duplicates or "
            L"entries past %lu were dropped",
            ToWide(path).c_str(), unusable, dropped, static_cast<unsigned long>(format_.capacity));
    }
    return true;
}

std::string SenderList::SerializeLocked() const {
    std::string out;
    // Lines average well under 128 bytes; one reservation avoids most regrowth.
    out.reserve(kUtf8Bom.size() + 64 + entries_.size() * 128);
    // The writer of this format wrote "\n" in text mode, hence CR LF.
    out.append(kUtf8Bom).append(kListBanner).append("\r\n");
    for (const auto& entry : entries_) {
        AppendRecordLine(format_, {entry.Name(), entry.Address()}, out);
        out.append("\r\n");
    }
    return out;
}

bool SenderList::SaveFile(const std::u16string& path) {
    // Held for the whole write: the file and the flag describe one state.
    std::lock_guard<std::mutex> guard(lock_);
    if (!SaveFileSafely(fs_, path, SerializeLocked(), L"sender list"))
        return false;
    modified_ = false;
    return true;
}

void SenderList::IndexIfWildcard(std::u16string_view key) {
    if (HoldsWildcard(key))
        wildcards_.emplace(key, 0);
}

SenderList::EntryVector::iterator SenderList::LowerBound(std::u16string_view key) {
    return std::lower_bound(entries_.begin(), entries_.end(), key, detail::SenderEntryOrder());
}

SenderList::EntryVector::const_iterator SenderList::Find(std::u16string_view key) const {
    const auto it =
        std::lower_bound(entries_.begin(), entries_.end(), key, detail::SenderEntryOrder());
    return it != entries_.end() && it->Key() == key ? it : entries_.end();
}

bool SenderList::Insert(detail::SenderEntry&& entry) {
    // Files are written in key order, so a loaded entry usually goes last.
    auto it = entries_.end();
    if (!entries_.empty() && !(entries_.back().Key() < entry.Key())) {
        it = LowerBound(entry.Key());
        if (it->Key() == entry.Key())
            return false;
    }
    it = entries_.insert(it, std::move(entry));
    IndexIfWildcard(it->Key());
    return true;
}

bool SenderList::AddLoaded(std::u16string_view key, std::u16string_view name,
                           std::u16string_view address) {
    std::lock_guard<std::mutex> guard(lock_);
    if (entries_.size() >= format_.capacity)
        return false;
    return Insert(detail::SenderEntry(key, name, address, &pool_));
}

int SenderList::Add(std::u16string_view address, const SenderRecord& record) {
    std::lock_guard<std::mutex> guard(lock_);
    if (entries_.size() >= format_.capacity)
        return kSenderListFull;
    if (!Insert(detail::SenderEntry(address, record.name, record.address, &pool_)))
        return kSenderExists;
    modified_ = true;
    return kSenderAdded;
}

bool SenderList::Exists(std::u16string_view address) const {
    const std::u16string key = FoldKey(address);
    std::lock_guard<std::mutex> guard(lock_);
    return Find(key) != entries_.end();
}

bool SenderList::IsSameRecord(std::u16string_view address, std::u16string_view name) const {
    const std::u16string key = FoldKey(address);
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = Find(key);
    return it != entries_.end() && it->Name() == name;
}

bool SenderList::Modify(std::u16string_view oldAddress, std::u16string_view newName,
                        std::u16string_view newAddress) {
    const std::u16string oldKey = FoldKey(oldAddress);
    const std::u16string newKey = FoldKey(newAddress);
    std::lock_guard<std::mutex> guard(lock_);
    auto it = LowerBound(oldKey);
    if (it == entries_.end() || it->Key() != oldKey)
        return false;
    modified_ = true;
    if (newKey == oldKey) {
        // A change of case only: the stored address keeps the case it had.
        it->Reset(newName, it->Address());
        return true;
    }
    entries_.erase(it);
    const auto oldIndexed = wildcards_.find(std::u16string_view(oldKey));
    if (oldIndexed != wildcards_.end())
        wildcards_.erase(oldIndexed);

    // The new address is stored lower-cased, and overwrites an entry already
    // under the new key.
    it = LowerBound(newKey);
    if (it != entries_.end() && it->Key() == newKey) {
        it->Reset(newName, newKey);
    } else {
        entries_.insert(it, detail::SenderEntry(newKey, newName, newKey, &pool_));
    }
    IndexIfWildcard(newKey);
    return true;
}

void SenderList::Remove(std::u16string_view address) {
    const std::u16string key = FoldKey(address);
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = LowerBound(key);
    if (it == entries_.end() || it->Key() != key)
        return;
    modified_ = true;
    entries_.erase(it);
    const auto indexed = wildcards_.find(std::u16string_view(key));
    if (indexed != wildcards_.end())
        wildcards_.erase(indexed);
}

std::size_t SenderList::Count() const {
    std::lock_guard<std::mutex> guard(lock_);
    return entries_.size();
}

bool SenderList::RecordAt(std::size_t index, SenderRecord& record) const {
    std::lock_guard<std::mutex> guard(lock_);
    if (index >= entries_.size())
        return false;
    const auto& entry = entries_[index];
    record.name.assign(entry.Name());
    record.address.assign(entry.Address());
    return true;
}

std::size_t SenderList::IndexOf(std::u16string_view address) const {
    const std::u16string key = FoldKey(address);
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = Find(key);
    return it == entries_.end() ? npos : static_cast<std::size_t>(it - entries_.begin());
}

std::vector<std::pair<std::u16string, SenderRecord>> SenderList::Entries() const {
    std::lock_guard<std::mutex> guard(lock_);
    std::vector<std::pair<std::u16string, SenderRecord>> out;
    out.reserve(entries_.size());
    for (const auto& e : entries_) {
        out.emplace_back(std::u16string(e.Key()),
                         SenderRecord{std::u16string(e.Name()), std::u16string(e.Address())});
    }
    return out;
}

std::vector<std::u16string> SenderList::WildcardKeys() const {
    std::lock_guard<std::mutex> guard(lock_);
    std::vector<std::u16string> keys;
    keys.reserve(wildcards_.size());
    for (const auto& w : wildcards_)
        keys.emplace_back(w.first);
    return keys;
}

}  // namespace velk::senders
