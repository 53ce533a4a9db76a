// The add-in's file system for the sender lists.
#include "senders/sender_file_system.h"

#include <windows.h>

#include "common_src/win32/handles.h"

namespace velk::senders {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows text is UTF-16");

const wchar_t* Wide(const std::u16string& path) {
    return reinterpret_cast<const wchar_t*>(path.c_str());
}

FileResult LastError() {
    return FileResult::Failed(::GetLastError());
}

// Writes from the file's current position and flushes: a file whose data is
// still in the cache must never take the place of the old list.
FileResult WriteAndFlush(HANDLE file, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::size_t left = bytes.size() - done;
        const DWORD want = left > (1u << 30) ? (1u << 30) : static_cast<DWORD>(left);
        DWORD wrote = 0;
        if (!::WriteFile(file, bytes.data() + done, want, &wrote, nullptr))
            return LastError();
        done += wrote;
    }
    if (!::FlushFileBuffers(file))
        return LastError();
    return FileResult::Ok();
}

class Win32FileSystem final : public ISenderFileSystem {
public:
    FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                       bool& truncated) override {
        bytes.clear();
        truncated = false;
        // Shared for delete too: our reading must never stop the scanning
        // process (or our own save) from replacing the file.
        win32::unique_file file(::CreateFileW(
            Wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
        if (!file) {
            const DWORD e = ::GetLastError();
            if (e == ERROR_FILE_NOT_FOUND || e == ERROR_PATH_NOT_FOUND)
                return FileResult::NotFound(e);
            return FileResult::Failed(e);
        }
        LARGE_INTEGER size{};
        if (::GetFileSizeEx(file.get(), &size) && size.QuadPart > 0) {
            const auto n = static_cast<unsigned long long>(size.QuadPart);
            bytes.reserve(n < maxBytes ? static_cast<std::size_t>(n) + 1 : maxBytes);
        }
        char chunk[64 * 1024];
        for (;;) {
            DWORD got = 0;
            if (!::ReadFile(file.get(), chunk, sizeof chunk, &got, nullptr))
                return LastError();
            if (got == 0)
                break;
            const std::size_t room = maxBytes - bytes.size();
            if (got > room) {
                bytes.append(chunk, room);
                truncated = true;
                break;
            }
            bytes.append(chunk, got);
        }
        return FileResult::Ok();
    }

    FileResult WriteAll(const std::u16string& path, std::string_view bytes) override {
        win32::unique_file file(::CreateFileW(Wide(path), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                              FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return LastError();
        return WriteAndFlush(file.get(), bytes);
    }

    FileResult Overwrite(const std::u16string& path, std::string_view bytes) override {
        // Every sharing mode: the reader that keeps us from replacing the
        // file shares it for writing, or we cannot get in at all.
        win32::unique_file file(
            ::CreateFileW(Wide(path), GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return LastError();
        const FileResult written = WriteAndFlush(file.get(), bytes);
        if (!written.ok())
            return written;
        if (!::SetEndOfFile(file.get()))
            return LastError();
        return FileResult::Ok();
    }

    FileResult Replace(const std::u16string& from, const std::u16string& to) override {
        if (::MoveFileExW(Wide(from), Wide(to), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return FileResult::Ok();
        return LastError();
    }

    FileResult Remove(const std::u16string& path) override {
        if (::DeleteFileW(Wide(path)))
            return FileResult::Ok();
        const DWORD e = ::GetLastError();
        if (e == ERROR_FILE_NOT_FOUND || e == ERROR_PATH_NOT_FOUND)
            return FileResult::Ok();
        return FileResult::Failed(e);
    }
};

}  // namespace

ISenderFileSystem& PlatformFileSystem() {
    static Win32FileSystem fs;
    return fs;
}

}  // namespace velk::senders
