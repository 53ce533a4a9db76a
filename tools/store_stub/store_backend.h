// Where the stand-in keeps its messages: a folder tree of .eml files or a
// map in memory. Both behave the same; the COM objects see only this.
// Not locked: the caller holds the store lock.
#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velk::tools::store {

// Failure codes every backend uses, so tests see the same HRESULTs in both
// modes.
inline const HRESULT kNoFolder = HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
inline const HRESULT kNoMessage = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

class Backend {
public:
    virtual ~Backend() = default;
    virtual bool FolderExists(ULONG folder) = 0;
    virtual HRESULT CreateFolder(ULONG folder) = 0;
    // Message ids of the folder, ascending; empty when there is no folder.
    virtual std::vector<ULONG> List(ULONG folder) = 0;
    virtual HRESULT Read(ULONG folder, ULONG msg, std::string& bytes) = 0;
    // Overwrites an existing message only: a message deleted meanwhile stays
    // deleted.
    virtual HRESULT Rewrite(ULONG folder, ULONG msg, std::string_view bytes) = 0;
    // Creates or overwrites; creates the folder.
    virtual HRESULT Put(ULONG folder, ULONG msg, std::string_view bytes) = 0;
    virtual HRESULT Remove(ULONG folder, ULONG msg) = 0;
    // Moves to `dst` under the id after the highest one there.
    HRESULT Move(ULONG src, ULONG dst, ULONG msg, ULONG& new_id);

protected:
    // 0 for an empty folder.
    virtual ULONG HighestId(ULONG folder) = 0;
    virtual HRESULT MoveTo(ULONG src, ULONG msg, ULONG dst, ULONG new_id) = 0;
};

class MemoryBackend : public Backend {
public:
    bool FolderExists(ULONG folder) override;
    HRESULT CreateFolder(ULONG folder) override;
    std::vector<ULONG> List(ULONG folder) override;
    HRESULT Read(ULONG folder, ULONG msg, std::string& bytes) override;
    HRESULT Rewrite(ULONG folder, ULONG msg, std::string_view bytes) override;
    HRESULT Put(ULONG folder, ULONG msg, std::string_view bytes) override;
    HRESULT Remove(ULONG folder, ULONG msg) override;

protected:
    ULONG HighestId(ULONG folder) override;
    HRESULT MoveTo(ULONG src, ULONG msg, ULONG dst, ULONG new_id) override;

private:
    std::map<ULONG, std::map<ULONG, std::string>> folders_;
};

// <root>\<folder>\<msg>.eml
class DiskBackend : public Backend {
public:
    explicit DiskBackend(std::wstring root) : root_(std::move(root)) {}
    bool FolderExists(ULONG folder) override;
    HRESULT CreateFolder(ULONG folder) override;
    std::vector<ULONG> List(ULONG folder) override;
    HRESULT Read(ULONG folder, ULONG msg, std::string& bytes) override;
    HRESULT Rewrite(ULONG folder, ULONG msg, std::string_view bytes) override;
    HRESULT Put(ULONG folder, ULONG msg, std::string_view bytes) override;
    HRESULT Remove(ULONG folder, ULONG msg) override;

protected:
    ULONG HighestId(ULONG folder) override;
    HRESULT MoveTo(ULONG src, ULONG msg, ULONG dst, ULONG new_id) override;

private:
    std::wstring FolderPath(ULONG folder) const;
    std::wstring MessagePath(ULONG folder, ULONG msg) const;
    HRESULT WriteReplacing(const std::wstring& path, std::string_view bytes);

    std::wstring root_;
};

// Creates `path` and its missing parents.
HRESULT CreateDirectories(const std::wstring& path);

// "123" -> 123; anything else (leading zeros, signs, overflow) -> false.
bool ParseId(std::wstring_view text, ULONG& id);

}  // namespace velk::tools::store
