// The scanning-process stand-in's commands: the command line and script
// parser, and the bytes of each WM_COPYDATA record it sends. No Win32 here,
// so the parser is tested natively and fuzzed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::tools::scanner {

// The add-in's toolbar window class and the scanning process's window title;
// both programs find each other by these.
inline constexpr char kAddinWindowClass[] = "{6E2D94B7-1C5A-4F83-B0E6-3A7D52C819F4}";
inline constexpr char kScannerWindowTitle[] = "{5B0E7C21-93D4-4A6F-8B12-C4E97A1D2F58}";

enum class Verb { kClone, kMove, kDelete, kPurge, kRaw, kSleep, kScript, kListen };

struct Command {
    Verb verb = Verb::kClone;
    // Record fields; what a verb does not use stays 0.
    std::uint32_t folder = 0;
    std::uint32_t msg = 0;
    std::uint32_t option = 0;
    std::uint32_t src = 0;
    std::uint32_t dst = 0;
    std::uint32_t verdict = 1;
    std::uint32_t quarantine = 1;
    std::u16string headers;
    // Malformed records on purpose.
    bool no_nul = false;                  // fill all 1024 units, no terminating NUL
    std::optional<std::uint32_t> dwdata;  // in place of the record's own
    std::optional<std::uint32_t> cb;      // cbData, cut or zero padded
    std::vector<std::uint8_t> raw;        // the bytes of `raw`
    std::uint32_t repeat = 1;
    std::uint32_t sleep_ms = 0;
    // script: the file; listen: log file, title, ready event, script.
    std::string path;
    std::string log;
    std::string title = kScannerWindowTitle;
    std::string ready_event;
    // listen: the user's settings file the statistics counters go to.
    std::string settings;
};

struct Globals {
    std::optional<std::uint64_t> hwnd;
    std::string window_class = kAddinWindowClass;
    std::uint32_t wait_ms = 5000;
    std::optional<std::uint32_t> timeout_ms;
    std::string report;
};

struct Invocation {
    Globals globals;
    Command command;
};

// The program's arguments (UTF-8, without the program name).
bool ParseInvocation(const std::vector<std::string>& args, Invocation& out, std::string& error);

// One command: args[0] is the verb.
bool ParseCommand(const std::vector<std::string>& args, Command& out, std::string& error);

// Words of one script line: blanks separate, double quotes group.
bool SplitLine(std::string_view line, std::vector<std::string>& words, std::string& error);

// A whole script; only record verbs and sleep. The error names the line.
bool ParseScript(std::string_view text, std::vector<Command>& out, std::string& error);

// UTF-8 with the escapes \r \n \t \\ \0 \uXXXX, to UTF-16.
bool DecodeText(std::string_view text, std::u16string& out, std::string& error);

// "0a 0B ff" or "0a0bff".
bool ParseHex(std::string_view text, std::vector<std::uint8_t>& out, std::string& error);

// Decimal or 0x-hex, at most `max`.
bool ParseNumber(std::string_view text, std::uint64_t max, std::uint64_t& out);

struct Payload {
    std::uint32_t dwdata = 0;
    std::vector<std::uint8_t> bytes;  // exactly cbData bytes
};

// The WM_COPYDATA content of a record verb.
Payload BuildPayload(const Command& command);

// Report lines (without line end).
std::string FormatSendLine(std::size_t seq, std::uint32_t dwdata, std::size_t cb, long long result,
                           double us);
std::string FormatSummary(std::size_t sends, double median_us, double p99_us, double max_us);
// A message the listening window got: "posted WM_USER+17 wParam=0x0 lParam=0x0".
std::string FormatMessageLine(bool sent, unsigned message, std::uint64_t wparam,
                              std::uint64_t lparam);
std::string FormatCopyDataLine(std::uint64_t dwdata, std::uint32_t cb);

}  // namespace velk::tools::scanner
