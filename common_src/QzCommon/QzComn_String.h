// String helpers of the QzCommon library: growing printf-style formatting,
// UTF-8 conversion, trailing backslashes and the library-wide working-buffer
// sizes.
//
// No <windows.h> here: everything but Utf8ToWide is built natively as well.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>

#include "common_src/QzCommon/QzComn_Exception.h"

namespace QzCommon {
namespace String {

// Working buffers (formatting, profile reads) start at the initial size and
// grow by the step, both in characters, 256 by default. The host may set them
// at start-up; zero restores the default.
constexpr std::size_t kDefaultBufferChars = 256;
void SetInitialBufferSize(std::size_t chars) noexcept;
void SetBufferGrowthStep(std::size_t chars) noexcept;
std::size_t InitialBufferSize() noexcept;
std::size_t BufferGrowthStep() noexcept;

// No buffer grows past this many characters: a format the runtime refuses at
// every size ends as an allocation failure (error 6) instead of eating memory.
constexpr std::size_t kMaxBufferChars = std::size_t(1) << 20;

// printf-style formatting into `out` (wide format, the runtime's own wide
// conversions). Throws String::Exception* with error 6 when a buffer cannot
// be had.
void Format(std::wstring& out, const wchar_t* format, ...);
void FormatV(std::wstring& out, const wchar_t* format, va_list args);

// UTF-8 to UTF-16. On failure stores the system error in `errorCode` (when
// given) and returns false, leaving `out` untouched. Windows only.
bool Utf8ToWide(const std::string& text, std::wstring& out, std::uint32_t* errorCode = nullptr);

// Appends a backslash unless the text is empty or already ends with one.
void AddTrailingBackslash(std::wstring& path);
// Removes one trailing backslash, if there is one.
void RemoveTrailingBackslash(std::wstring& path);

}  // namespace String
}  // namespace QzCommon
