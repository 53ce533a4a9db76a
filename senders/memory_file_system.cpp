#include "senders/memory_file_system.h"

namespace velk::senders {

namespace {
constexpr unsigned long kNoSuchFile = 2;
constexpr unsigned long kAccessDenied = 5;
constexpr unsigned long kSharingViolation = 32;
}  // namespace

FileResult MemoryFileSystem::ReadAll(const std::u16string& path, std::size_t maxBytes,
                                     std::string& bytes, bool& truncated) {
    bytes.clear();
    truncated = false;
    if (failReads)
        return FileResult::Failed(kAccessDenied);
    const auto it = files.find(path);
    if (it == files.end())
        return FileResult::NotFound(kNoSuchFile);
    truncated = it->second.size() > maxBytes;
    bytes.assign(it->second, 0, maxBytes);
    return FileResult::Ok();
}

FileResult MemoryFileSystem::WriteAll(const std::u16string& path, std::string_view bytes) {
    files[path].assign(bytes);
    return FileResult::Ok();
}

FileResult MemoryFileSystem::Replace(const std::u16string& from, const std::u16string& to) {
    if (failReplaces)
        return FileResult::Failed(kSharingViolation);
    const auto it = files.find(from);
    if (it == files.end())
        return FileResult::Failed(kNoSuchFile);
    files[to] = std::move(it->second);
    files.erase(from);
    return FileResult::Ok();
}

FileResult MemoryFileSystem::Remove(const std::u16string& path) {
    files.erase(path);
    return FileResult::Ok();
}

FileResult MemoryFileSystem::Overwrite(const std::u16string& path, std::string_view bytes) {
    const auto it = files.find(path);
    if (it == files.end())
        return FileResult::Failed(kNoSuchFile);
    it->second.assign(bytes);
    return FileResult::Ok();
}

}  // namespace velk::senders
