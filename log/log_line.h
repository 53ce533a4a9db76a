// The shape of a diagnostic log line and of the log's file name. Support
// staff and their tools read these files, so the file name pattern and the
// line prefix below are fixed character for character.
//
// Platform-free: built in both trees and tested natively under the sanitizers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace velk::log {

// A local calendar time; month is 1-12. Every field is -1 when the clock
// could not give the local date (the file name then reads ".-001-1-1").
struct LocalTime {
    int year = -1;
    int month = -1;
    int day = -1;
    int hour = -1;
    int minute = -1;
    int second = -1;
};

// The message of one call is formatted into this many characters (with the
// terminator); longer messages are cut there.
constexpr std::size_t kMessageChars = 1024;
// A line (prefix + message + "\n") this long or longer is cut ...
constexpr std::size_t kMaxLineChars = 500;
// ... to its first kCutKeepChars characters followed by kCutMark. The mark
// ends in a literal 'n', not a line break, so the next entry continues on the
// same text line of the file; readers of old logs rely on that look.
constexpr std::size_t kCutKeepChars = 495;
constexpr wchar_t kCutMark[] = L"...n";
// "tttt:tttt YYYY/MM/DD hh:mm:ss " is 30 characters for sane values; room is
// left for the -1 fields of an unknown date.
constexpr std::size_t kPrefixChars = 64;
// Room for the longest line before the cut: prefix + message + "\n".
constexpr std::size_t kLineChars = kPrefixChars + kMessageChars + 1;

// "VELKAgent.log" on 3 May 2009 -> "VELKAgent.20090503.log": ".YYYYMMDD" goes
// before the last dot; without a dot it goes before the last character, and
// an empty path gets it at position 0.
std::wstring DatedPath(const std::wstring& base_path, const LocalTime& date);

// Writes "%04x:%04x %04d/%02d/%02d %02d:%02d:%02d " (high and low 16 bits of
// the thread id, then the local date and time) into `out` (at least
// kPrefixChars) and returns its length.
std::size_t FormatPrefix(wchar_t* out, std::uint32_t thread_id, const LocalTime& now);

// Builds the final line into `out` (at least kLineChars): the prefix, then
// `message` (which already ends in "\n"), then the cut rule. Returns its
// length; the text is terminated.
std::size_t BuildLine(wchar_t* out, std::uint32_t thread_id, const LocalTime& now,
                      const wchar_t* message);

// A formatter may write at most this many characters into a kMessageChars
// buffer, leaving room for the "\n" and the terminator.
constexpr std::size_t kFormatChars = kMessageChars - 2;

// Turns a formatter's output in `buffer` (kMessageChars, whose first
// character was zeroed before formatting) into the message of one call:
// terminates it whatever the formatter did on truncation or failure and
// appends "\n". Returns the length.
std::size_t FinishMessage(wchar_t* buffer) noexcept;

// True when `now` falls on another calendar day than the open file's date.
bool IsOtherDay(const LocalTime& file_date, const LocalTime& now) noexcept;

}  // namespace velk::log
