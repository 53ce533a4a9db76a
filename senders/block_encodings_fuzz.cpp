// Any bytes as a blocked-encodings file: the parser must not crash, and what
// it accepts must write and read back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "senders/block_encodings.h"
#include "senders/memory_file_system.h"

using namespace velk::senders;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::vector<BlockedEncoding> entries;
    std::string problem;
    if (ParseBlockedEncodings(bytes, entries, problem)) {
        std::vector<BlockedEncoding> again;
        if (!ParseBlockedEncodings(SerializeBlockedEncodings(entries), again, problem) ||
            again != entries)
            std::abort();
    } else if (problem.empty() || !entries.empty()) {
        std::abort();
    }
    MemoryFileSystem fs;
    fs.files[u"in"] = bytes;
    if (LoadBlockedEncodings(fs, u"in").size() != DefaultBlockedEncodings().size())
        std::abort();
    return 0;
}
