#include "senders/senders_test_util.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "senders/sender_text.h"

namespace velk::senders::testing {

std::u16string Folder(const TempFolder& dir) {
    return ToU16(dir.path());
}

std::string ReadFileBytes(const std::u16string& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read a test file");
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::u16string& path, const std::string& bytes) {
    std::ofstream out(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write a test file");
}

bool FileExists(const std::u16string& path) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::path(path), ignored);
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
