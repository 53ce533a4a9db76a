// Test helpers: a private temporary folder and a private registry key, both
// removed when the test ends.
#pragma once

#include <windows.h>

#include <string>

namespace QzCommon {
namespace testing_util {

// A fresh folder under %TEMP% (path() ends with a backslash).
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    const std::wstring& path() const { return m_path; }
    // Writes a file below path(), creating its folders.
    void WriteFile(const std::wstring& relative, const std::string& bytes) const;
    std::string ReadFile(const std::wstring& relative) const;
    void MakeFolder(const std::wstring& relative) const;

private:
    std::wstring m_path;
};

// "Software\VelkQzTest_<unique>" in the given view (0, KEY_WOW64_32KEY or
// KEY_WOW64_64KEY), deleted with its sub-keys at the end.
class TempKey {
public:
    explicit TempKey(HKEY root, REGSAM view = 0);
    ~TempKey();
    const std::wstring& path() const { return m_path; }
    std::wstring node() const { return m_path.substr(9); }  // below "Software\"
    void SetRaw(const std::wstring& name, DWORD type, const void* data, DWORD bytes) const;
    bool Exists() const;

private:
    HKEY m_root;
    REGSAM m_view;
    std::wstring m_path;
};

}  // namespace testing_util
}  // namespace QzCommon
