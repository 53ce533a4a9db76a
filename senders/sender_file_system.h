// The file operations the sender lists need, behind an interface so that
// tests can fail any step of a save (and the fuzz target can load from memory).
// Paths are UTF-16 on every platform.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velk::senders {

struct FileResult {
    enum Status { kOk, kNotFound, kFailed };
    Status status = kOk;
    unsigned long error = 0;  // errno or GetLastError(), for the log

    bool ok() const { return status == kOk; }
    static FileResult Ok() { return {}; }
    static FileResult NotFound(unsigned long e) { return {kNotFound, e}; }
    static FileResult Failed(unsigned long e) { return {kFailed, e}; }
};

class ISenderFileSystem {
public:
    virtual ~ISenderFileSystem() = default;

    // Reads at most `maxBytes` of the file into `bytes`; `truncated` tells
    // whether there was more. kNotFound when the file (or its folder) is absent.
    virtual FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                               bool& truncated) = 0;

    // Creates or truncates the file, writes `bytes` and has them on the disk
    // before returning. A failure may leave a partial file behind.
    virtual FileResult WriteAll(const std::u16string& path, std::string_view bytes) = 0;

    // Puts `from` in the place of `to` in one step; `to` need not exist.
    virtual FileResult Replace(const std::u16string& from, const std::u16string& to) = 0;

    // Deletes the file; a file that is not there counts as deleted.
    virtual FileResult Remove(const std::u16string& path) = 0;

    // Writes `bytes` over an existing file in place, sharing it with every
    // reader, and cuts it to their length; has them on the disk before
    // returning. For a file that another program holds open without letting
    // it be replaced. Fails when the file does not exist.
    virtual FileResult Overwrite(const std::u16string& path, std::string_view bytes) = 0;
};

// The real file system of the platform the code runs on.
ISenderFileSystem& PlatformFileSystem();

}  // namespace velk::senders
