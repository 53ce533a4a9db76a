// The statistics counters as the scanning process keeps them: what its
// session counts, and the values it writes to [Statistics] of the user's
// settings file when the add-in asks it to flush (WM_USER+21) or reset
// (WM_USER+26). The add-in only reads them.
//
// Platform-free.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/scanner_stub/scanner_command.h"

namespace velk::tools::scanner {

inline constexpr char kStatisticsSection[] = "Statistics";

struct StatisticsCounters {
    std::int32_t processed = 0;      // "ProcessedMsg"
    std::int32_t detected = 0;       // "DetectedSpam"
    std::int32_t reported_spam = 0;  // "ReportedSpam"
    std::int32_t reported_fp = 0;    // "ReportedFP"
    std::int64_t running_since = 0;  // "RunningSince", seconds since 1970 (UTC)

    // A request the session sent: every clone, move and delete is a message
    // the scanner looked at; a move with the spam verdict and a delete are
    // spam it found. Purges and raw records count nothing. 32-bit wrapping,
    // as the real counters do.
    void CountRequest(const Command& request);
    // A private message from the add-in, as WM_USER + `offset`: 17 is the
    // user's Report Spam, 18 Report Not Spam.
    void CountMessage(unsigned offset);
    // Counting starts again at `now`.
    void Reset(std::int64_t now);

    // The keys and values written to the settings file, in file order.
    std::vector<std::pair<std::string, std::string>> Entries() const;
};

}  // namespace velk::tools::scanner
