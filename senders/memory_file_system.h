// A file system held in memory, for tests and the fuzz target: loads from
// given bytes without touching the disk, and can be told to fail.
#pragma once

#include <map>
#include <string>

#include "senders/sender_file_system.h"

namespace velk::senders {

class MemoryFileSystem final : public ISenderFileSystem {
public:
    std::map<std::u16string, std::string> files;
    bool failReads = false;  // every read fails as an unopenable file would
    bool failReplaces = false;  // the target is held open without delete sharing

    FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                       bool& truncated) override;
    FileResult WriteAll(const std::u16string& path, std::string_view bytes) override;
    FileResult Replace(const std::u16string& from, const std::u16string& to) override;
    FileResult Remove(const std::u16string& path) override;
    FileResult Overwrite(const std::u16string& path, std::string_view bytes) override;
};

}  // namespace velk::senders
