// The native build's file system (tests, benchmarks, fuzzing).
#include "senders/sender_file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "senders/sender_text.h"

namespace velk::senders {

namespace {

class PosixFileSystem final : public ISenderFileSystem {
public:
    FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                       bool& truncated) override {
        bytes.clear();
        truncated = false;
        const int fd = ::open(Utf16ToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            return errno == ENOENT || errno == ENOTDIR ? NotFound() : Failed();
        struct stat st {};
        if (::fstat(fd, &st) == 0 && st.st_size > 0) {
            const auto size = static_cast<unsigned long long>(st.st_size);
            bytes.reserve(size < maxBytes ? static_cast<std::size_t>(size) + 1 : maxBytes);
        }
        char chunk[64 * 1024];
        for (;;) {
            const ssize_t n = ::read(fd, chunk, sizeof chunk);
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                const FileResult r = Failed();
                ::close(fd);
                return r;
            }
            if (n == 0)
                break;
            const std::size_t room = maxBytes - bytes.size();
            if (static_cast<std::size_t>(n) > room) {
                bytes.append(chunk, room);
                truncated = true;
                break;
            }
            bytes.append(chunk, static_cast<std::size_t>(n));
        }
        ::close(fd);
        return FileResult::Ok();
    }

    FileResult WriteAll(const std::u16string& path, std::string_view bytes) override {
        const int fd =
            ::open(Utf16ToUtf8(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0)
            return Failed();
        return Finish(fd, WriteAllTo(fd, bytes) && ::fsync(fd) == 0);
    }

    FileResult Overwrite(const std::u16string& path, std::string_view bytes) override {
        const int fd = ::open(Utf16ToUtf8(path).c_str(), O_WRONLY | O_CLOEXEC);
        if (fd < 0)
            return Failed();
        return Finish(fd, WriteAllTo(fd, bytes) && ::ftruncate(fd, static_cast<off_t>(bytes.size())) == 0 &&
                              ::fsync(fd) == 0);
    }

    FileResult Replace(const std::u16string& from, const std::u16string& to) override {
        return ::rename(Utf16ToUtf8(from).c_str(), Utf16ToUtf8(to).c_str()) == 0 ? FileResult::Ok()
                                                                                 : Failed();
    }

    FileResult Remove(const std::u16string& path) override {
        if (::unlink(Utf16ToUtf8(path).c_str()) == 0 || errno == ENOENT)
            return FileResult::Ok();
        return Failed();
    }

private:
    static bool WriteAllTo(int fd, std::string_view bytes) {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                return false;
            }
            done += static_cast<std::size_t>(n);
        }
        return true;
    }
    // Closes `fd`; the first failure (of the steps or of the close) is the answer.
    static FileResult Finish(int fd, bool stepsOk) {
        const FileResult steps = stepsOk ? FileResult::Ok() : Failed();
        const bool closed = ::close(fd) == 0;
        if (!steps.ok())
            return steps;
        return closed ? FileResult::Ok() : Failed();
    }
    static FileResult Failed() { return FileResult::Failed(static_cast<unsigned long>(errno)); }
    static FileResult NotFound() { return FileResult::NotFound(static_cast<unsigned long>(errno)); }
};

}  // namespace

ISenderFileSystem& PlatformFileSystem() {
    static PosixFileSystem fs;
    return fs;
}

}  // namespace velk::senders
