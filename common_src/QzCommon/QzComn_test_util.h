// The test helpers every folder shares: a private temporary folder (every
// tree), the diagnostic log captured around a call, and on Windows a private
// registry key. Each is removed when the test ends.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

namespace QzCommon {
namespace testing_util {

// A fresh folder under the system's temporary folder. Relative names may use
// "\" or "/"; folders on the way are created by WriteFile.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The folder with its trailing separator, as the code under test is given folders.
    const std::wstring& path() const { return m_path; }
    std::filesystem::path File(const std::wstring& relative) const;
    void WriteFile(const std::wstring& relative, const std::string& bytes) const;
    // The bytes of the file; "" when it cannot be read.
    std::string ReadFile(const std::wstring& relative) const;
    bool Exists(const std::wstring& relative) const;
    void MakeFolder(const std::wstring& relative) const;

private:
    std::filesystem::path m_dir;
    std::wstring m_path;
};

// What the process log received while `body` ran: the log is opened into
// `folder` for the call and closed again.
std::string CaptureLog(const TempFolder& folder, const std::function<void()>& body);

#ifdef _WIN32
// "Software\VelkQzTest_<unique>" in the given view (0, KEY_WOW64_32KEY or
// KEY_WOW64_64KEY), deleted with its sub-keys at the end.
class TempKey {
public:
    explicit TempKey(HKEY root, REGSAM view = 0);
    ~TempKey();
    const std::wstring& path() const { return m_path; }
    std::wstring node() const { return m_path.substr(9); }  // below "Software\"
    void SetRaw(const std::wstring& name, DWORD type, const void* data, DWORD bytes) const;

private:
    HKEY m_root;
    REGSAM m_view;
    std::wstring m_path;
};
#endif

}  // namespace testing_util
}  // namespace QzCommon
