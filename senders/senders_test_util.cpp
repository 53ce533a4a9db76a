#include "senders/senders_test_util.h"

#include <atomic>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "log/diag_log.h"
#include "senders/sender_text.h"

namespace velk::senders::testing {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    static std::atomic<unsigned> counter{0};
    std::random_device seed;
    const fs::path base = fs::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path candidate =
            base / ("velk_senders_" + std::to_string(seed()) + "_" + std::to_string(counter++));
        if (fs::create_directory(candidate)) {
            dir_ = candidate;
            return;
        }
    }
    throw std::runtime_error("no temporary folder");
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(dir_, ignored);
}

std::u16string TempFolder::Folder() const {
    std::u16string folder = dir_.u16string();
    folder.push_back(static_cast<char16_t>(fs::path::preferred_separator));
    return folder;
}

std::u16string TempFolder::File(std::u16string_view name) const {
    return Folder() + std::u16string(name);
}

std::string CaptureLog(const TempFolder& folder, const std::function<void()>& fn) {
    log::Open(ToWide(folder.File(u"senders.log")));
    fn();
    const std::wstring path = log::CurrentPath();
    log::Close();
    return ReadFileBytes(ToU16(path));
}

std::string ReadFileBytes(const std::u16string& path) {
    std::ifstream in(fs::path(path), std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read a test file");
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::u16string& path, std::string_view bytes) {
    std::ofstream out(fs::path(path), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write a test file");
}

bool FileExists(const std::u16string& path) {
    std::error_code ignored;
    return fs::exists(fs::path(path), ignored);
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
    std::u16string name;
    switch (index % 4) {
        case 0:
            name = u"Jane Doe";
            break;
        case 1:
            name = u"J\u00F6rg M\u00FCller";
            break;
        case 2:
            name = u"\u5C71\u7530 \u592A\u90CE";
            break;
        default:
            name = u"Ann \U0001F600 Lee";
            break;
    }
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
