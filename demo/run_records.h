// The other records a demo run leaves: the mail-client stand-in's events,
// the scanning-process stand-in's message log and send report, and the
// add-in's diagnostic log. Read after the run for the summary. No Win32 here.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::demo {

// "112.9 load Z:\...\VELK_OEA.dll ok ms=2.21": milliseconds since the
// client started, then the event.
struct ClientEvent {
    double ms = 0;
    std::string text;
};
std::vector<ClientEvent> ParseClientEvents(std::string_view text);

// The first event whose text starts with `prefix`.
const ClientEvent* FindEvent(const std::vector<ClientEvent>& events, std::string_view prefix);

// The number after "key=" in an event text ("ms=2.21", "band=0").
std::optional<double> EventValue(const ClientEvent& event, std::string_view key);

// The load event of the module whose path ends with `file` (case-insensitive).
const ClientEvent* FindLoad(const std::vector<ClientEvent>& events, std::string_view file);

// Lines of the listening window's log such as "posted WM_USER+17 wParam=0x0
// lParam=0x0": how many posted (not sent) messages WM_USER + n it got.
std::size_t CountPosted(std::string_view log, unsigned n);

// The send report: "send 1 dwData=1077 cbData=2072 result=0 us=183.5" lines.
struct SendReport {
    std::size_t sends = 0;
    std::vector<double> us;           // per send
    std::vector<std::string> errors;  // "error: ..." lines
};
SendReport ParseSendReport(std::string_view text);

// The add-in's diagnostic log: lines, and those that report a failure
// ("@@@ Error", "Exception Catched", "!!! the action of ... is not complete").
struct AddinLogStats {
    std::size_t lines = 0;
    std::vector<std::string> problems;
};
AddinLogStats ReadAddinLog(std::string_view text);

}  // namespace velk::demo
