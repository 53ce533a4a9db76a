#include "common_src/QzCommon/QzComn_test_util.h"

#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <cstdio>

#include <gtest/gtest.h>

namespace QzCommon {
namespace testing_util {
namespace {

std::wstring Unique() {
    static unsigned counter = 0;
    // Wine reuses process ids across runs: the tick count keeps a key left by
    // a crashed run apart.
    return std::to_wstring(::GetCurrentProcessId()) + L"_" + std::to_wstring(::GetTickCount()) +
           L"_" + std::to_wstring(++counter);
}

}  // namespace

TempFolder::TempFolder() {
    wchar_t temp[MAX_PATH] = {};
    ::GetTempPathW(MAX_PATH, temp);
    m_path = std::wstring(temp) + L"velk_qz_" + Unique() + L"\\";
    EXPECT_TRUE(::CreateDirectoryW(m_path.c_str(), nullptr));
}

TempFolder::~TempFolder() {
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, nullptr);  // drop cached files
    std::wstring from = m_path;
    from.back() = L'\0';  // the folder itself, double-terminated by c_str()
    SHFILEOPSTRUCTW op = {};
    op.wFunc = FO_DELETE;
    op.pFrom = from.c_str();
    op.fFlags = FOF_NO_UI;
    ::SHFileOperationW(&op);
}

void TempFolder::MakeFolder(const std::wstring& relative) const {
    ::SHCreateDirectoryExW(nullptr, (m_path + relative).c_str(), nullptr);
}

void TempFolder::WriteFile(const std::wstring& relative, const std::string& bytes) const {
    const size_t slash = relative.rfind(L'\\');
    if (slash != std::wstring::npos)
        MakeFolder(relative.substr(0, slash));
    FILE* file = _wfopen((m_path + relative).c_str(), L"wb");
    ASSERT_NE(nullptr, file);
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

std::string TempFolder::ReadFile(const std::wstring& relative) const {
    std::string text;
    if (FILE* file = _wfopen((m_path + relative).c_str(), L"rb")) {
        char buffer[4096];
        for (size_t got; (got = fread(buffer, 1, sizeof(buffer), file)) > 0;)
            text.append(buffer, got);
        fclose(file);
    }
    return text;
}

TempKey::TempKey(HKEY root, REGSAM view)
    : m_root(root), m_view(view), m_path(L"Software\\VelkQzTest_" + Unique()) {}

TempKey::~TempKey() {
    // SHDeleteKeyW works in the native view, where the 32-bit view of
    // HKLM\Software lives under Wow6432Node.
    const bool redirected = m_view == KEY_WOW64_32KEY && m_root == HKEY_LOCAL_MACHINE;
    ::SHDeleteKeyW(m_root,
                   redirected ? (L"Software\\Wow6432Node\\" + node()).c_str() : m_path.c_str());
}

void TempKey::SetRaw(const std::wstring& name, DWORD type, const void* data, DWORD bytes) const {
    HKEY key = nullptr;
    ASSERT_EQ(0, ::RegCreateKeyExW(m_root, m_path.c_str(), 0, nullptr, 0, KEY_SET_VALUE | m_view,
                                   nullptr, &key, nullptr));
    EXPECT_EQ(0,
              ::RegSetValueExW(key, name.c_str(), 0, type, static_cast<const BYTE*>(data), bytes));
    ::RegCloseKey(key);
}

bool TempKey::Exists() const {
    HKEY key = nullptr;
    if (::RegOpenKeyExW(m_root, m_path.c_str(), 0, KEY_QUERY_VALUE | m_view, &key))
        return false;
    ::RegCloseKey(key);
    return true;
}

}  // namespace testing_util
}  // namespace QzCommon
