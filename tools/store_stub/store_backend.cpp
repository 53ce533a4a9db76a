#include "tools/store_stub/store_backend.h"

#include "common_src/win32/handles.h"

#include <algorithm>

namespace velk::tools::store {

using velk::win32::unique_file;

namespace {

HRESULT LastError() {
    DWORD error = ::GetLastError();
    return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

bool IsDirectory(const std::wstring& path) {
    DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsFile(const std::wstring& path) {
    DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

bool ParseId(std::wstring_view text, ULONG& id) {
    if (text.empty() || text.size() > 10 || (text.size() > 1 && text[0] == L'0'))
        return false;
    unsigned long long value = 0;
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9')
            return false;
        value = value * 10 + static_cast<unsigned>(c - L'0');
    }
    if (value > 0xFFFFFFFFull)
        return false;
    id = static_cast<ULONG>(value);
    return true;
}

HRESULT CreateDirectories(const std::wstring& path) {
    if (path.empty() || IsDirectory(path))
        return S_OK;
    size_t cut = path.find_last_of(L"\\/");
    if (cut != std::wstring::npos && cut > 0 && path[cut - 1] != L':') {
        HRESULT hr = CreateDirectories(path.substr(0, cut));
        if (FAILED(hr))
            return hr;
    }
    if (::CreateDirectoryW(path.c_str(), nullptr) || ::GetLastError() == ERROR_ALREADY_EXISTS)
        return S_OK;
    return LastError();
}

HRESULT Backend::Move(ULONG src, ULONG dst, ULONG msg, ULONG& new_id) {
    new_id = 0;
    if (src == dst)
        return E_INVALIDARG;
    if (!FolderExists(src) || !FolderExists(dst))
        return kNoFolder;
    ULONG candidate = HighestId(dst) + 1;
    if (candidate == 0)
        return HRESULT_FROM_WIN32(ERROR_FILE_EXISTS);  // ids exhausted
    HRESULT hr = MoveTo(src, msg, dst, candidate);
    if (SUCCEEDED(hr))
        new_id = candidate;
    return hr;
}

// ---- memory ----

bool MemoryBackend::FolderExists(ULONG folder) {
    return folders_.count(folder) != 0;
}

HRESULT MemoryBackend::CreateFolder(ULONG folder) {
    folders_[folder];
    return S_OK;
}

std::vector<ULONG> MemoryBackend::List(ULONG folder) {
    std::vector<ULONG> ids;
    auto it = folders_.find(folder);
    if (it == folders_.end())
        return ids;
    ids.reserve(it->second.size());
    for (const auto& entry : it->second)
        ids.push_back(entry.first);
    return ids;
}

HRESULT MemoryBackend::Read(ULONG folder, ULONG msg, std::string& bytes) {
    auto it = folders_.find(folder);
    if (it == folders_.end())
        return kNoFolder;
    auto m = it->second.find(msg);
    if (m == it->second.end())
        return kNoMessage;
    bytes = m->second;
    return S_OK;
}

HRESULT MemoryBackend::Rewrite(ULONG folder, ULONG msg, std::string_view bytes) {
    auto it = folders_.find(folder);
    if (it == folders_.end())
        return kNoFolder;
    auto m = it->second.find(msg);
    if (m == it->second.end())
        return kNoMessage;
    m->second.assign(bytes);
    return S_OK;
}

HRESULT MemoryBackend::Put(ULONG folder, ULONG msg, std::string_view bytes) {
    folders_[folder][msg].assign(bytes);
    return S_OK;
}

HRESULT MemoryBackend::Remove(ULONG folder, ULONG msg) {
    auto it = folders_.find(folder);
    if (it == folders_.end())
        return kNoFolder;
    return it->second.erase(msg) ? S_OK : kNoMessage;
}

ULONG MemoryBackend::HighestId(ULONG folder) {
    auto it = folders_.find(folder);
    return it == folders_.end() || it->second.empty() ? 0 : it->second.rbegin()->first;
}

HRESULT MemoryBackend::MoveTo(ULONG src, ULONG msg, ULONG dst, ULONG new_id) {
    auto& from = folders_[src];
    auto m = from.find(msg);
    if (m == from.end())
        return kNoMessage;
    folders_[dst][new_id] = std::move(m->second);
    from.erase(m);
    return S_OK;
}

// ---- disk ----

std::wstring DiskBackend::FolderPath(ULONG folder) const {
    return root_ + L"\\" + std::to_wstring(folder);
}

std::wstring DiskBackend::MessagePath(ULONG folder, ULONG msg) const {
    return FolderPath(folder) + L"\\" + std::to_wstring(msg) + L".eml";
}

bool DiskBackend::FolderExists(ULONG folder) {
    return IsDirectory(FolderPath(folder));
}

HRESULT DiskBackend::CreateFolder(ULONG folder) {
    return CreateDirectories(FolderPath(folder));
}

std::vector<ULONG> DiskBackend::List(ULONG folder) {
    std::vector<ULONG> ids;
    WIN32_FIND_DATAW data;
    HANDLE find = ::FindFirstFileW((FolderPath(folder) + L"\\*").c_str(), &data);
    if (find == INVALID_HANDLE_VALUE)
        return ids;
    do {
        if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            continue;
        std::wstring_view name(data.cFileName);
        constexpr std::wstring_view kExt = L".eml";
        if (name.size() <= kExt.size() || name.substr(name.size() - kExt.size()) != kExt)
            continue;
        ULONG id = 0;
        if (ParseId(name.substr(0, name.size() - kExt.size()), id))
            ids.push_back(id);
    } while (::FindNextFileW(find, &data));
    ::FindClose(find);
    std::sort(ids.begin(), ids.end());
    return ids;
}

HRESULT DiskBackend::Read(ULONG folder, ULONG msg, std::string& bytes) {
    if (!FolderExists(folder))
        return kNoFolder;
    std::wstring path = MessagePath(folder, msg);
    unique_file file(::CreateFileW(path.c_str(), GENERIC_READ,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        DWORD error = ::GetLastError();
        return (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
                   ? kNoMessage
                   : HRESULT_FROM_WIN32(error);
    }
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file.get(), &size))
        return LastError();
    if (size.QuadPart > 0x7FFFFFFF)
        return HRESULT_FROM_WIN32(ERROR_FILE_TOO_LARGE);
    bytes.assign(static_cast<size_t>(size.QuadPart), '\0');
    DWORD done = 0;
    if (!bytes.empty() &&
        (!::ReadFile(file.get(), &bytes[0], static_cast<DWORD>(bytes.size()), &done, nullptr) ||
         done != bytes.size()))
        return LastError();
    return S_OK;
}

// Written beside the target and moved over it, so a reader (the test, or a
// second store object) never sees half a message.
HRESULT DiskBackend::WriteReplacing(const std::wstring& path, std::string_view bytes) {
    std::wstring temp = path + L".tmp";
    {
        unique_file file(::CreateFileW(temp.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return LastError();
        DWORD done = 0;
        if (!bytes.empty() && (!::WriteFile(file.get(), bytes.data(),
                                            static_cast<DWORD>(bytes.size()), &done, nullptr) ||
                               done != bytes.size())) {
            HRESULT hr = LastError();
            file.reset();
            ::DeleteFileW(temp.c_str());
            return hr;
        }
    }
    if (!::MoveFileExW(temp.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        HRESULT hr = LastError();
        ::DeleteFileW(temp.c_str());
        return hr;
    }
    return S_OK;
}

HRESULT DiskBackend::Rewrite(ULONG folder, ULONG msg, std::string_view bytes) {
    if (!FolderExists(folder))
        return kNoFolder;
    std::wstring path = MessagePath(folder, msg);
    if (!IsFile(path))
        return kNoMessage;
    return WriteReplacing(path, bytes);
}

HRESULT DiskBackend::Put(ULONG folder, ULONG msg, std::string_view bytes) {
    HRESULT hr = CreateFolder(folder);
    return FAILED(hr) ? hr : WriteReplacing(MessagePath(folder, msg), bytes);
}

HRESULT DiskBackend::Remove(ULONG folder, ULONG msg) {
    if (!FolderExists(folder))
        return kNoFolder;
    if (::DeleteFileW(MessagePath(folder, msg).c_str()))
        return S_OK;
    DWORD error = ::GetLastError();
    return error == ERROR_FILE_NOT_FOUND ? kNoMessage : HRESULT_FROM_WIN32(error);
}

ULONG DiskBackend::HighestId(ULONG folder) {
    std::vector<ULONG> ids = List(folder);
    return ids.empty() ? 0 : ids.back();
}

HRESULT DiskBackend::MoveTo(ULONG src, ULONG msg, ULONG dst, ULONG new_id) {
    std::wstring from = MessagePath(src, msg);
    if (!IsFile(from))
        return kNoMessage;
    // No replacing: the new id was free a moment ago, and a message that
    // appeared there meanwhile must not be lost.
    if (::MoveFileExW(from.c_str(), MessagePath(dst, new_id).c_str(), 0))
        return S_OK;
    return LastError();
}

}  // namespace velk::tools::store
