#include "resources/resources_test_util.h"

#include <fstream>
#include <iterator>

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
    return {VELK_TEST_LANGUAGES};
}

bool ReadAll(const std::wstring& path, std::vector<unsigned char>& bytes) {
    std::ifstream in(path.c_str(), std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return static_cast<bool>(in);
}

}  // namespace velk::res::test
