#include "resources/resources_test_util.h"

#include "common_src/win32/handles.h"

namespace velk::res::test {

std::wstring WindowsPathOf(const std::string& unix_path) {
    std::wstring path = L"Z:";
    for (char c : unix_path)
        path += c == '/' ? L'\\' : static_cast<wchar_t>(static_cast<unsigned char>(c));
    return path;
}

std::wstring DistPath(const std::wstring& relative) {
    return WindowsPathOf(VELK_TEST_DIST_DIR) + L"\\" + relative;
}

std::vector<std::wstring> Languages() {
    std::vector<std::wstring> languages(1);
    for (const char* c = VELK_TEST_LANGUAGES; *c; ++c) {
        if (*c == ',')
            languages.emplace_back();
        else
            languages.back() += static_cast<wchar_t>(*c);
    }
    return languages;
}

bool ReadAll(const std::wstring& path, std::vector<unsigned char>& bytes) {
    bytes.clear();
    win32::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
    if (!file)
        return false;
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file.get(), &size) || size.QuadPart > (64 << 20))
        return false;
    bytes.resize(static_cast<size_t>(size.QuadPart));
    DWORD read = 0;
    if (!bytes.empty() &&
        (!::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) ||
         read != bytes.size()))
        return false;
    return true;
}

}  // namespace velk::res::test
