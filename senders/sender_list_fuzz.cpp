// Any bytes as a list file: Load must not crash, must keep its invariants,
// and what it kept must save and load again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "senders/address_check.h"
#include "senders/memory_file_system.h"
#include "senders/sender_list.h"

using namespace velk::senders;

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

void Exercise(SenderListKind kind, const std::string& bytes) {
    MemoryFileSystem fs;
    fs.files[u"in"] = bytes;
    SenderList list(kind, fs);
    list.Load(u"in");
    Require(list.Count() <= list.Capacity());

    const auto entries = list.Entries();
    std::size_t wildcards = 0;
    for (const auto& entry : entries) {
        Require(!entry.first.empty());
        if (entry.first.find(u'*') != std::u16string::npos)
            ++wildcards;
        Require(entry.second.address.find(u"**") == std::u16string::npos);
        IsValidSenderAddress(entry.second.address);
    }
    Require(list.WildcardKeys().size() == wildcards);

    Require(list.Save(u"out"));
    SenderList again(kind, fs);
    Require(again.Load(u"out"));
    // One line per entry: reading back can merge colliding keys, never add.
    Require(again.Count() <= list.Count());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    Exercise(SenderListKind::kApproved, bytes);
    Exercise(SenderListKind::kBlocked, bytes);
    return 0;
}
