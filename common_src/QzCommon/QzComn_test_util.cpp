#include "common_src/QzCommon/QzComn_test_util.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

#include "log/diag_log.h"

#ifdef _WIN32
#include <shlwapi.h>
#endif

namespace QzCommon {
namespace testing_util {

namespace fs = std::filesystem;

namespace {

std::string Unique() {
    // Wine reuses process ids across runs: a random part keeps a folder or
    // key left by a crashed run apart.
    static std::atomic<unsigned> counter{0};
    return std::to_string(std::random_device()()) + "_" + std::to_string(++counter);
}

// Wide text as a path: UTF-16 on Windows; natively the narrow form of a wide
// path would depend on the locale, the UTF-32 form does not.
fs::path PathOf(const std::wstring& text) {
#ifdef _WIN32
    return fs::path(text);
#else
    return fs::path(std::u32string(text.begin(), text.end()));
#endif
}

std::wstring WideOf(const fs::path& path) {
#ifdef _WIN32
    return path.wstring();
#else
    const std::u32string text = path.u32string();
    return std::wstring(text.begin(), text.end());
#endif
}

std::string ReadWhole(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

TempFolder::TempFolder() : m_dir(fs::temp_directory_path() / ("velk_test_" + Unique())) {
    if (!fs::create_directory(m_dir))
        throw std::runtime_error("no temporary folder");
    m_path = WideOf(m_dir) + static_cast<wchar_t>(fs::path::preferred_separator);
}

TempFolder::~TempFolder() {
#ifdef _WIN32
    // The profile functions cache files; let go of them before deleting.
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, nullptr);
#endif
    std::error_code ignored;
    fs::remove_all(m_dir, ignored);
}

fs::path TempFolder::File(const std::wstring& relative) const {
    std::wstring name = relative;
    const wchar_t native = static_cast<wchar_t>(fs::path::preferred_separator);
    std::replace(name.begin(), name.end(), native == L'/' ? L'\\' : L'/', native);
    return m_dir / PathOf(name);
}

void TempFolder::MakeFolder(const std::wstring& relative) const {
    fs::create_directories(File(relative));
}

void TempFolder::WriteFile(const std::wstring& relative, const std::string& bytes) const {
    const fs::path file = File(relative);
    fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write a test file");
}

std::string TempFolder::ReadFile(const std::wstring& relative) const {
    return ReadWhole(File(relative));
}

bool TempFolder::Exists(const std::wstring& relative) const {
    std::error_code ignored;
    return fs::exists(File(relative), ignored);
}

std::string CaptureLog(const TempFolder& folder, const std::function<void()>& body) {
    velk::log::Open(folder.path() + L"captured.log");
    body();
    const std::wstring path = velk::log::CurrentPath();
    velk::log::Close();
    return ReadWhole(PathOf(path));
}

#ifdef _WIN32
TempKey::TempKey(HKEY root, REGSAM view) : m_root(root), m_view(view) {
    const std::string unique = Unique();
    m_path = L"Software\\VelkQzTest_" + std::wstring(unique.begin(), unique.end());
}

TempKey::~TempKey() {
    // SHDeleteKeyW works in the native view, where the 32-bit view of
    // HKLM\Software lives under Wow6432Node.
    const bool redirected = m_view == KEY_WOW64_32KEY && m_root == HKEY_LOCAL_MACHINE;
    ::SHDeleteKeyW(m_root,
                   redirected ? (L"Software\\Wow6432Node\\" + node()).c_str() : m_path.c_str());
}

void TempKey::SetRaw(const std::wstring& name, DWORD type, const void* data, DWORD bytes) const {
    HKEY key = nullptr;
    LONG rc = ::RegCreateKeyExW(m_root, m_path.c_str(), 0, nullptr, 0, KEY_SET_VALUE | m_view,
                                nullptr, &key, nullptr);
    if (rc == ERROR_SUCCESS) {
        rc = ::RegSetValueExW(key, name.c_str(), 0, type, static_cast<const BYTE*>(data), bytes);
        ::RegCloseKey(key);
    }
    if (rc != ERROR_SUCCESS)
        throw std::runtime_error("cannot set a test registry value");
}

#endif

}  // namespace testing_util
}  // namespace QzCommon
