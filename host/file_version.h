// The "FileVersion" text of a file's version resource.
#pragma once

#include <string>

namespace velk::host {

// The string of the first translation listed in the resource (then US
// English in Unicode and in Windows-1252, the two common scripts); empty when
// the file, its version resource or the value is missing.
std::wstring ReadFileVersionText(const std::wstring& path);

}  // namespace velk::host
