// The demo's summary: what the run did, told from its records only, and the
// verdict. No Win32 here.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "demo/mailbox.h"
#include "demo/scenario.h"

namespace velk::demo {

// What a run left, as read back from its files, plus the driver's own
// observations (which it timed or did itself).
struct RunRecords {
    const Scenario* scenario = nullptr;
    std::string identity;
    std::string locale;          // the system's, "de-DE"
    std::string client_events;   // the client stand-in's events file
    std::string scanner_report;  // the scanning process's send report
    std::string scanner_log;     // what the scanning process received
    std::string journal;         // the store's journal
    bool mailbox_read = false;   // false: mailbox_error says why
    std::string mailbox_error;
    Mailbox before, after;
    std::vector<std::pair<std::string, std::string>> addin_logs;  // file name, text
    bool band_seen = false;
    double band_seconds = 0;   // from the client's start until the band was seen
    bool clicked = false;      // the mouse went down and up on Report Spam
    double close_seconds = 0;  // from WM_CLOSE until the client ended; 0: it did not
    std::string screenshot;    // "900x560", empty when none was taken
    // The statistics dialog opened at the end, as it showed: processed,
    // detected, reported as spam, reported as not spam, the two rates;
    // empty when it did not open.
    std::vector<std::string> statistics;
    std::string statistics_screenshot;  // "636x314"
    // The filtering sheet: the steps the driver got through, in order
    // ("opened from the logo menu", ...); whether OK closed it with the
    // sender typed into the blocked-senders page; its screenshot.
    std::vector<std::string> sheet_steps;
    bool sheet_confirmed = false;
    double sheet_seconds = 0;  // from the menu click until the sheet closed
    std::string blocked_sender;
    std::string sheet_screenshot;
    // BlackList.dat of the user's folder after the run, as the lists' own
    // code reads it: false when it is missing or not a list file.
    bool blocked_list_read = false;
    std::vector<std::string> blocked_list;  // the addresses
    std::uint64_t start = 0, end = 0;       // the run, seconds since 1970 (UTC)
    std::vector<std::string> problems;      // steps that failed
};

struct Summary {
    std::vector<std::string> lines;
    std::vector<std::string> failures;  // empty: the run did what the scenario says

    std::string Text() const;  // the lines, then the verdict and the failures
};

Summary Summarize(const RunRecords& run);

}  // namespace velk::demo
