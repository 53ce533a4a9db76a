// The message store stand-in's journal as the demo saves it: one call per
// line, "Method(args) @target -> 0xHRESULT" (target "F" a folder, "F/M" a
// message, "-" the folder manager). No Win32 here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::demo {

struct JournalEntry {
    std::string call;    // "SetHeader(x-has-been-checked, 1)"
    std::string method;  // "SetHeader"
    std::string args;    // "x-has-been-checked, 1"
    std::optional<std::uint32_t> folder;
    std::optional<std::uint32_t> msg;
    std::optional<std::uint32_t> hr;  // absent while pending or not recorded

    bool Succeeded() const { return hr && (*hr & 0x80000000u) == 0; }
    // The first argument, and the n-th (0-based) as a number when it is one.
    std::string FirstArg() const;
    std::optional<std::uint32_t> NumberArg(std::size_t n) const;
};

std::vector<JournalEntry> ParseJournal(std::string_view text);

}  // namespace velk::demo
