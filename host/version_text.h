// Reduction of the scanning process's file version to the form the add-in
// records in the settings ("VELKOEVer") and in the shared "VELK_version.ini".
//
// Platform-free: built and tested natively too.
#pragma once

#include <string>

namespace velk::host {

// "6.0.1234.5" gives "6.0.5": the first two fields and the fourth, each read
// as an integer and printed in decimal; the third is dropped on purpose, the
// readers of these files expect major.minor.build. With fewer than three dots
// only the fields that stand before a dot are kept, each followed by a dot
// ("1.2" gives "1.", "7" gives ""). A field that is no number counts as 0; a
// number beyond the range of int is clamped to it.
std::wstring ReduceFileVersion(const std::wstring& file_version);

}  // namespace velk::host
