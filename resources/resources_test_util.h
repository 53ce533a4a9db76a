// Helpers of the resource tests: where the staged tree is, which languages
// it holds, reading files.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace velk::res::test {

// The Windows path of a file of the staged installation (the build stages it
// under a Unix path, which a Windows program sees on drive Z:).
std::wstring DistPath(const std::wstring& relative);

// Z: plus the Unix path, with backslashes.
std::wstring WindowsPathOf(const std::string& unix_path);

// The languages the build stages (en-US first), each a folder of Resource.
std::vector<std::wstring> Languages();

// The whole file, or false when it cannot be read.
bool ReadAll(const std::wstring& path, std::vector<unsigned char>& bytes);

}  // namespace velk::res::test
