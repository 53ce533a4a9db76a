// The field codecs of the list files: each one finds its field's tags in a
// record's text, decodes the field between them, and writes the field back
// between the same tags.
//
// The codecs work on the file's own bytes (UTF-8), which gives exactly what
// working on the decoded text would: every tag is ASCII, and UTF-8 never uses
// a byte below 0x80 inside a multi-byte sequence nor lets an ill-formed
// sequence swallow one, so an ASCII tag is found in the bytes exactly where it
// stands in the text. Only the fields are decoded, which keeps loading a full
// list close to the cost of reading it.
//
// The scanning process parses these files with the same tags, so every tag
// text below is part of the file format. The closing tags really do use a
// backslash.
#pragma once

#include <string>
#include <string_view>

#include "senders/sender_record.h"

namespace velk::senders {

inline constexpr std::string_view kNameOpenTag = "<SN_ATTR>";
inline constexpr std::string_view kNameCloseTag = "<\\SN_ATTR>";
inline constexpr std::string_view kAddressOpenTag = "<SA_ATTR>";
inline constexpr std::string_view kAddressCloseTag = "<\\SA_ATTR>";

// The text between the first `open` tag and the first `close` tag found from
// one character after the start of `open`, trimmed of " \t". Empty when either
// tag is missing.
std::string_view ExtractTagged(std::string_view text, std::string_view open,
                               std::string_view close);

// What the list needs of a field codec. The approved and blocked lists each
// have their own interface below, so that one list's codec cannot be handed to
// the other list by mistake.
class ISenderFieldCodec {
public:
    virtual ~ISenderFieldCodec() = default;
    // Stores this field, found in `recordText` (the UTF-8 text between the
    // record tags), into its member of `record`; empty when its tags are
    // missing. The member's buffer is reused.
    virtual void Parse(std::string_view recordText, SenderRecord& record) const = 0;
    // Appends the opening tag, the field value as UTF-8, the closing tag.
    virtual void Format(SenderRecordRef record, std::string& out) const = 0;
};

class IWListPersist : public ISenderFieldCodec {
public:
    static constexpr std::string_view kRecordOpenTag = "<WL_REC>";
    static constexpr std::string_view kRecordCloseTag = "<\\WL_REC>";
};

class IBListPersist : public ISenderFieldCodec {
public:
    static constexpr std::string_view kRecordOpenTag = "<BL_REC>";
    static constexpr std::string_view kRecordCloseTag = "<\\BL_REC>";
};

class CWListSenderName final : public IWListPersist {
public:
    void Parse(std::string_view recordText, SenderRecord& record) const override;
    void Format(SenderRecordRef record, std::string& out) const override;
};

// Parsing also collapses runs of "*" in the address.
class CWListSenderAddr final : public IWListPersist {
public:
    void Parse(std::string_view recordText, SenderRecord& record) const override;
    void Format(SenderRecordRef record, std::string& out) const override;
};

class CBListSenderName final : public IBListPersist {
public:
    void Parse(std::string_view recordText, SenderRecord& record) const override;
    void Format(SenderRecordRef record, std::string& out) const override;
};

class CBListSenderAddr final : public IBListPersist {
public:
    void Parse(std::string_view recordText, SenderRecord& record) const override;
    void Format(SenderRecordRef record, std::string& out) const override;
};

// Everything that differs between the two list files.
struct SenderListFormat {
    std::string_view recordOpenTag;
    std::string_view recordCloseTag;
    const ISenderFieldCodec& nameCodec;
    const ISenderFieldCodec& addressCodec;
    std::u16string_view fileName;
    std::size_t capacity;
    // The tags of a line as written, in the three runs they form around the
    // name and the address: the loader's short cut for such lines.
    std::string lineHead;  // record open, name open
    std::string lineJoin;  // name close, address open
    std::string lineTail;  // address close, record close
};

// The one codec set of each list, alive for the whole process.
const SenderListFormat& FormatOf(SenderListKind kind);

// Fills both fields of `record` from one line of a list file (UTF-8, without
// its line end); a line that is not a record of this list leaves the address
// empty.
void ParseRecordLine(const SenderListFormat& format, std::string_view line, SenderRecord& record);

// Appends the line of `record`, without the line end.
void AppendRecordLine(const SenderListFormat& format, SenderRecordRef record, std::string& out);

// Appends `field` as UTF-8 the way the list files hold it. A line feed inside
// a field would split its record in two and lose it at the next load, so it is
// written as a blank; everything else is written unchanged (no escaping).
void AppendFieldText(std::u16string_view field, std::string& out);

}  // namespace velk::senders
