#include "senders/sender_codec.h"

#include <cstring>

#include "senders/sender_text.h"

namespace velk::senders {

namespace {

// string_view::find for the tags: memchr to each "<", and as most candidates
// are another tag that already differs in its second or third character, those
// are compared inline before the memcmp call.
std::size_t FindTag(std::string_view text, std::string_view tag, std::size_t from) {
    if (tag.size() < 3 || from > text.size() || tag.size() > text.size() - from) {
        return text.find(tag, from);
    }
    const char* const begin = text.data();
    const char* const lastStart = begin + (text.size() - tag.size());
    for (const char* p = begin + from; p <= lastStart; ++p) {
        p = static_cast<const char*>(
            std::memchr(p, tag[0], static_cast<std::size_t>(lastStart - p) + 1));
        if (p == nullptr)
            break;
        if (p[1] == tag[1] && p[2] == tag[2] &&
            std::memcmp(p + 3, tag.data() + 3, tag.size() - 3) == 0) {
            return static_cast<std::size_t>(p - begin);
        }
    }
    return std::string_view::npos;
}

bool HasAt(std::string_view text, std::size_t at, std::string_view part) {
    return text.size() - at >= part.size() &&
           std::memcmp(text.data() + at, part.data(), part.size()) == 0;
}

std::string Join(std::string_view a, std::string_view b) {
    return std::string(a).append(b);
}

}  // namespace

std::string_view ExtractTagged(std::string_view text, std::string_view open,
                               std::string_view close) {
    const std::size_t start = FindTag(text, open, 0);
    if (start == std::string_view::npos)
        return {};
    const std::size_t end = FindTag(text, close, start + 1);
    const std::size_t valueStart = start + open.size();
    // A closing tag that overlaps the opening one has nothing between them.
    if (end == std::string_view::npos || end < valueStart)
        return {};
    std::string_view value = text.substr(valueStart, end - valueStart);
    constexpr std::string_view kBlanks = " \t";
    const std::size_t first = value.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return value.substr(first, value.find_last_not_of(kBlanks) - first + 1);
}

void AppendFieldText(std::u16string_view field, std::string& out) {
    std::size_t from = 0;
    for (std::size_t lf; (lf = field.find(u'\n', from)) != std::u16string_view::npos;
         from = lf + 1) {
        AppendUtf16AsUtf8(field.substr(from, lf - from), out);
        out.push_back(' ');
    }
    AppendUtf16AsUtf8(field.substr(from), out);
}

namespace {

void Decode(std::string_view utf8, std::u16string& field) {
    field.clear();
    AppendUtf8AsUtf16(utf8, field);
}

void ParseName(std::string_view recordText, SenderRecord& record) {
    Decode(ExtractTagged(recordText, kNameOpenTag, kNameCloseTag), record.name);
}

void ParseAddress(std::string_view recordText, SenderRecord& record) {
    const std::string_view field = ExtractTagged(recordText, kAddressOpenTag, kAddressCloseTag);
    Decode(field, record.address);
    // "*" is ASCII: a run in the text is a run in the bytes.
    if (field.find("**") != std::string_view::npos)
        CollapseAsteriskRuns(record.address);
}

void Enclose(std::string_view open, std::u16string_view value, std::string_view close,
             std::string& out) {
    out.append(open);
    AppendFieldText(value, out);
    out.append(close);
}

}  // namespace

void CWListSenderName::Parse(std::string_view recordText, SenderRecord& record) const {
    ParseName(recordText, record);
}
void CWListSenderName::Format(SenderRecordRef record, std::string& out) const {
    Enclose(kNameOpenTag, record.name, kNameCloseTag, out);
}
void CWListSenderAddr::Parse(std::string_view recordText, SenderRecord& record) const {
    ParseAddress(recordText, record);
}
void CWListSenderAddr::Format(SenderRecordRef record, std::string& out) const {
    Enclose(kAddressOpenTag, record.address, kAddressCloseTag, out);
}
void CBListSenderName::Parse(std::string_view recordText, SenderRecord& record) const {
    ParseName(recordText, record);
}
void CBListSenderName::Format(SenderRecordRef record, std::string& out) const {
    Enclose(kNameOpenTag, record.name, kNameCloseTag, out);
}
void CBListSenderAddr::Parse(std::string_view recordText, SenderRecord& record) const {
    ParseAddress(recordText, record);
}
void CBListSenderAddr::Format(SenderRecordRef record, std::string& out) const {
    Enclose(kAddressOpenTag, record.address, kAddressCloseTag, out);
}

const SenderListFormat& FormatOf(SenderListKind kind) {
    static const CWListSenderName approvedName;
    static const CWListSenderAddr approvedAddress;
    static const CBListSenderName blockedName;
    static const CBListSenderAddr blockedAddress;
    // The file names are what the scanning process opens in the same folder.
    static const SenderListFormat approved{IWListPersist::kRecordOpenTag,
                                           IWListPersist::kRecordCloseTag,
                                           approvedName,
                                           approvedAddress,
                                           u"WhiteList.dat",
                                           kMaxApprovedSenders,
                                           Join(IWListPersist::kRecordOpenTag, kNameOpenTag),
                                           Join(kNameCloseTag, kAddressOpenTag),
                                           Join(kAddressCloseTag, IWListPersist::kRecordCloseTag)};
    static const SenderListFormat blocked{IBListPersist::kRecordOpenTag,
                                          IBListPersist::kRecordCloseTag,
                                          blockedName,
                                          blockedAddress,
                                          u"BlackList.dat",
                                          kMaxBlockedSenders,
                                          Join(IBListPersist::kRecordOpenTag, kNameOpenTag),
                                          Join(kNameCloseTag, kAddressOpenTag),
                                          Join(kAddressCloseTag, IBListPersist::kRecordCloseTag)};
    return kind == SenderListKind::kApproved ? approved : blocked;
}

void ParseRecordLine(const SenderListFormat& format, std::string_view line, SenderRecord& record) {
    // The lines this format's writers produce are exactly
    //   <REC><SN_ATTR>name<\SN_ATTR><SA_ATTR>address<\SA_ATTR><\REC>
    // with no "<" in the name or the address. For such a line every tag the
    // extraction rule looks for is the one at its canonical place, so each
    // codec can be handed just its own tagged field: the same result with a
    // fraction of the searching. Any other line takes the general path.
    const std::size_t nameStart = format.recordOpenTag.size();
    if (HasAt(line, 0, format.lineHead)) {
        const std::size_t join = line.find('<', format.lineHead.size());
        if (join != std::string_view::npos && HasAt(line, join, format.lineJoin)) {
            const std::size_t addressStart = join + kNameCloseTag.size();
            const std::size_t tail = line.find('<', join + format.lineJoin.size());
            if (tail != std::string_view::npos && line.size() - tail == format.lineTail.size() &&
                HasAt(line, tail, format.lineTail)) {
                format.nameCodec.Parse(line.substr(nameStart, addressStart - nameStart), record);
                format.addressCodec.Parse(
                    line.substr(addressStart, tail + kAddressCloseTag.size() - addressStart),
                    record);
                return;
            }
        }
    }

    const std::string_view recordText =
        ExtractTagged(line, format.recordOpenTag, format.recordCloseTag);
    format.nameCodec.Parse(recordText, record);
    format.addressCodec.Parse(recordText, record);
}

void AppendRecordLine(const SenderListFormat& format, SenderRecordRef record, std::string& out) {
    out.append(format.recordOpenTag);
    format.nameCodec.Format(record, out);
    format.addressCodec.Format(record, out);
    out.append(format.recordCloseTag);
}

}  // namespace velk::senders
