#include "demo/summary.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "demo/outcome.h"
#include "demo/run_records.h"
#include "demo/store_journal.h"
#include "tools/scanner_stub/scanner_statistics.h"

namespace velk::demo {

namespace {

// Posted by the band's Report Spam button to the scanning process.
constexpr unsigned kReportSpamMessage = 17;
// Posted by the sender pages once they have written the lists.
constexpr unsigned kSenderListsSaved = 9;

std::string Format(const char* format, double value) {
    const int n = std::snprintf(nullptr, 0, format, value);
    std::string text(n > 0 ? static_cast<std::size_t>(n) : 0, '\0');
    std::snprintf(text.data(), text.size() + 1, format, value);
    return text;
}

// One line per thing the demo shows, ending in its verdict; a failure also
// goes to the list the verdict is made of.
void Verdict(Summary& s, const std::string& line, bool passed, const std::string& failure) {
    s.lines.push_back(line + (passed ? " [pass]" : " [FAIL]"));
    if (!passed)
        s.failures.push_back(failure);
}

bool SameAddress(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// The sheet was worked through to its OK, the scanning process heard that
// the lists changed, and the blocked list on disk holds the sender.
void SettingsLines(const RunRecords& run, Summary& s) {
    std::string steps;
    for (const std::string& step : run.sheet_steps)
        steps += (steps.empty() ? "" : ", ") + step;
    Verdict(s,
            "filtering settings: " + (steps.empty() ? std::string("never opened") : steps) +
                (run.sheet_confirmed ? Format(" (%.2f s)", run.sheet_seconds) : std::string()) +
                (run.sheet_screenshot.empty() ? std::string()
                                              : "; screenshot " + run.sheet_screenshot + " pixels"),
            run.sheet_confirmed, "the filtering sheet was not worked through to its OK");

    const std::size_t saved = CountPosted(run.scanner_log, kSenderListsSaved);
    Verdict(s,
            "sender lists saved: the scanning process got WM_USER+9 (1033) " +
                (saved ? "posted " + std::to_string(saved) + " time(s)" : std::string("never")),
            saved > 0, "the scanning process was not told that the sender lists changed");

    const bool held =
        !run.blocked_sender.empty() &&
        std::any_of(run.blocked_list.begin(), run.blocked_list.end(),
                    [&](const std::string& a) { return SameAddress(a, run.blocked_sender); });
    std::string line = "BlackList.dat: ";
    if (!run.blocked_list_read)
        line += "missing or not a list file";
    else
        line += std::string(held ? "holds " : "does not hold ") +
                (run.blocked_sender.empty() ? "the sender" : run.blocked_sender) + " among its " +
                std::to_string(run.blocked_list.size()) + " sender(s)";
    Verdict(s, line, held, "BlackList.dat does not hold the blocked sender");
}

std::string StartupLine(const std::vector<ClientEvent>& events, const RunRecords& run) {
    const ClientEvent* load = FindLoad(events, "VELK_OEA.dll");
    std::string line = "start-up: ";
    if (!load)
        line += "the client never loaded the add-in";
    else if (load->text.find(" ok ") == std::string::npos)
        line += "the add-in failed to load (" + load->text + ")";
    else
        line += Format("LoadLibrary of the add-in %.1f ms", EventValue(*load, "ms").value_or(0));
    if (run.band_seen) {
        line += Format(
            "; band with Report Spam in the client's rebar %.2f s after the client "
            "process started",
            run.band_seconds);
    }
    return line;
}

std::string SessionLine(const RunRecords& run) {
    const SendReport sends = ParseSendReport(run.scanner_report);
    std::vector<double> us = sends.us;
    std::sort(us.begin(), us.end());
    std::string line =
        "session: " + std::to_string(sends.sends) + " requests sent by the scanning process";
    if (!us.empty())
        line += Format(", median send %.2f ms", us[(us.size() - 1) / 2] / 1000);
    return line;
}

// The client's own WM_CLOSE handler says whether the add-in had detached.
std::string CloseLine(const std::vector<ClientEvent>& events, const RunRecords& run,
                      bool outlook_express, std::vector<std::string>& failures) {
    std::string line = "close: ";
    const ClientEvent* wm_close = FindEvent(events, "wm-close");
    if (!wm_close) {
        line += "the client's window never got WM_CLOSE";
        failures.push_back("the client's window never got WM_CLOSE");
    } else {
        const bool band = EventValue(*wm_close, "band").value_or(1) != 0;
        line += std::string("when the client's own handler got WM_CLOSE, ") +
                (band ? "the band was still in the rebar" : "the band was gone");
        // Outlook Express closes without telling the add-in: its hook must
        // have taken the band down before the client's own handler runs.
        // (The hook is a comctl32 subclass that takes itself off inside that
        // WM_CLOSE, so the window's procedure is comctl32's until it returns.)
        if (outlook_express && band)
            failures.push_back("the add-in had not detached when the client got WM_CLOSE");
        if (run.close_seconds > 0)
            line += Format("; the client ended %.2f s after WM_CLOSE", run.close_seconds);
    }
    for (const ClientEvent& e : events) {
        if ((e.text.rfind("free ", 0) == 0 || e.text.rfind("unload ", 0) == 0) &&
            e.text.find("VELK_OEA.dll") != std::string::npos) {
            line += Format("; FreeLibrary of the add-in %.1f ms", EventValue(e, "ms").value_or(0));
        }
    }
    return line;
}

// The statistics dialog must show what the scanning process counted: the
// session's requests and the user's reports.
void StatisticsLine(const RunRecords& run, std::size_t reports, Summary& s) {
    if (run.statistics.size() != 6) {
        Verdict(s, "statistics: the dialog was not shown", false,
                "the statistics dialog was not shown");
        return;
    }
    const std::vector<std::string>& v = run.statistics;
    std::vector<tools::scanner::Command> session;
    std::string error;
    tools::scanner::StatisticsCounters counted;
    if (run.scenario && tools::scanner::ParseScript(SessionScript(*run.scenario), session, error)) {
        for (const tools::scanner::Command& c : session)
            counted.CountRequest(c);
    }
    for (std::size_t i = 0; i < reports; ++i)
        counted.CountMessage(kReportSpamMessage);
    const std::vector<std::string> expected{
        std::to_string(counted.processed), std::to_string(counted.detected),
        std::to_string(counted.reported_spam), std::to_string(counted.reported_fp)};
    Verdict(s,
            "statistics: the dialog showed " + v[0] + " processed, " + v[1] + " detected, " + v[2] +
                " reported as spam, " + v[3] + " as not spam; detection rate " + v[4] +
                ", false-positive rate " + v[5] +
                (run.statistics_screenshot.empty()
                     ? std::string()
                     : "; screenshot " + run.statistics_screenshot + " pixels"),
            std::equal(expected.begin(), expected.end(), v.begin()),
            "the statistics dialog showed " + v[0] + "/" + v[1] + "/" + v[2] + "/" + v[3] +
                ", the session counted " + expected[0] + "/" + expected[1] + "/" + expected[2] +
                "/" + expected[3]);
}

}  // namespace

std::string Summary::Text() const {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    if (failures.empty()) {
        text += "check: passed\n";
    } else {
        text += "check: FAILED\n";
        for (const std::string& f : failures)
            text += "  " + f + "\n";
    }
    return text;
}

Summary Summarize(const RunRecords& run) {
    Summary s;
    const std::vector<ClientEvent> events = ParseClientEvents(run.client_events);
    const ClientEvent* start = FindEvent(events, "start mode=");
    const bool outlook_express = start && start->text == "start mode=oe";
    s.lines.push_back(std::string("demo: VELK_OEA.dll in the mail-client stand-in, ") +
                      (!start            ? "which never started"
                       : outlook_express ? "Outlook Express mode"
                                         : "Windows Mail mode") +
                      ", identity " + run.identity +
                      (run.locale.empty() ? std::string() : ", system locale " + run.locale));
    s.lines.push_back(StartupLine(events, run));
    s.lines.push_back(SessionLine(run));

    if (!run.mailbox_read) {
        s.failures.push_back(run.mailbox_error);
    } else if (run.scenario) {
        const std::vector<JournalEntry> journal = ParseJournal(run.journal);
        std::vector<const StoredMessage*> strangers;
        const std::vector<Outcome> outcomes =
            FindOutcomes(*run.scenario, run.before, run.after, journal, strangers);
        for (const Outcome& o : outcomes)
            s.lines.push_back("  " + DescribeOutcome(*run.scenario, o));
        std::vector<std::string> unmet =
            CheckOutcomes(*run.scenario, outcomes, strangers, run.start, run.end);
        s.failures.insert(s.failures.end(), unmet.begin(), unmet.end());
    }

    const std::size_t posted = CountPosted(run.scanner_log, kReportSpamMessage);
    s.lines.push_back(std::string("Report Spam: ") +
                      (run.clicked ? "clicked with the mouse" : "not clicked") +
                      "; the scanning process got WM_USER+17 (1041) " +
                      (posted ? "posted " + std::to_string(posted) + " time(s)" : "never"));
    if (posted == 0)
        s.failures.push_back("Report Spam did not reach the scanning process");

    s.lines.push_back(CloseLine(events, run, outlook_express, s.failures));

    std::string log_line = "add-in log: ";
    if (run.addin_logs.empty()) {
        log_line += "none written";
        s.failures.push_back("the add-in wrote no log");
    }
    for (const auto& [name, text] : run.addin_logs) {
        const AddinLogStats stats = ReadAddinLog(text);
        log_line +=
            name + ", " + std::to_string(stats.lines) + " lines, " +
            (stats.problems.empty() ? std::string("no errors reported")
                                    : std::to_string(stats.problems.size()) +
                                          " reporting errors, the first: " + stats.problems[0]);
    }
    s.lines.push_back(log_line);
    if (!run.screenshot.empty())
        s.lines.push_back("screenshot: " + run.screenshot + " pixels of the client window");
    SettingsLines(run, s);
    StatisticsLine(run, posted, s);
    s.failures.insert(s.failures.end(), run.problems.begin(), run.problems.end());
    return s;
}

}  // namespace velk::demo
