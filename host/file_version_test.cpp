#include "host/file_version.h"

#include <gtest/gtest.h>

#include <windows.h>

#include "host/version_text.h"

namespace velk::host {
namespace {

// host_tests.rc gives this executable the FileVersion "6.0.1234.5".
TEST(FileVersion, ReadsTheVersionStringAndReducesIt) {
    wchar_t self[MAX_PATH];
    const std::wstring path(self, ::GetModuleFileNameW(nullptr, self, MAX_PATH));
    const std::wstring text = ReadFileVersionText(path);
    EXPECT_EQ(L"6.0.1234.5", text);
    EXPECT_EQ(L"6.0.5", ReduceFileVersion(text));
    EXPECT_EQ(L"", ReadFileVersionText(path + L".absent.exe"));
}

}  // namespace
}  // namespace velk::host
