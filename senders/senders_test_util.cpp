#include "senders/senders_test_util.h"

#include "senders/sender_text.h"

namespace velk::senders::testing {

std::u16string Folder(const TempFolder& dir) {
    return ToU16(dir.path());
}

std::u16string SampleAddress(std::uint32_t index) {
    static const char16_t* const kDomains[] = {u"example.com", u"Mail.Example.org",
                                               u"post.example.net", u"EXAMPLE.co.uk"};
    std::u16string local = index % 3 == 0 ? u"User" : u"sender";
    for (char c : std::to_string(index))
        local.push_back(static_cast<char16_t>(c));
    if (index % 17 == 0)
        return u"*@" + local + u"." + kDomains[index % 4];
    return local + u"@" + kDomains[index % 4];
}

std::u16string SampleName(std::uint32_t index) {
    static const char16_t* const kNames[] = {u"Jane Doe", u"J\u00F6rg M\u00FCller",
                                             u"\u5C71\u7530 \u592A\u90CE", u"Ann \U0001F600 Lee"};
    std::u16string name = kNames[index % 4];
    for (char c : std::to_string(index))
        name.push_back(static_cast<char16_t>(c));
    return name;
}

}  // namespace velk::senders::testing

namespace velk::senders {
void PrintTo(const SenderRecord& record, std::ostream* os) {
    *os << "{name \"" << Utf16ToUtf8(record.name) << "\", address \"" << Utf16ToUtf8(record.address)
        << "\"}";
}
}  // namespace velk::senders
