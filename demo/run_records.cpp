#include "demo/run_records.h"

#include <cctype>
#include <cstdlib>
#include <string>

namespace velk::demo {

namespace {

// Calls `f` with each line, without its line end.
template <class F>
void ForEachLine(std::string_view text, F f) {
    while (!text.empty()) {
        std::size_t nl = text.find('\n');
        std::string_view line = text.substr(0, nl);
        text = nl == std::string_view::npos ? std::string_view() : text.substr(nl + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        f(line);
    }
}

bool StartsWith(std::string_view text, std::string_view head) {
    return text.substr(0, head.size()) == head;
}

std::optional<double> LeadingNumber(std::string_view text) {
    std::size_t n = 0;
    while (n < text.size() && (std::isdigit(static_cast<unsigned char>(text[n])) ||
                               text[n] == '.' || text[n] == '-')) {
        ++n;
    }
    if (n == 0)
        return std::nullopt;
    const std::string number(text.substr(0, n));
    char* end = nullptr;
    double value = std::strtod(number.c_str(), &end);
    if (end != number.c_str() + number.size())
        return std::nullopt;
    return value;
}

char Lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EndsWithNoCase(std::string_view text, std::string_view tail) {
    if (text.size() < tail.size())
        return false;
    text = text.substr(text.size() - tail.size());
    for (std::size_t i = 0; i < tail.size(); ++i) {
        if (Lower(text[i]) != Lower(tail[i]))
            return false;
    }
    return true;
}

}  // namespace

std::vector<ClientEvent> ParseClientEvents(std::string_view text) {
    std::vector<ClientEvent> events;
    ForEachLine(text, [&](std::string_view line) {
        std::size_t blank = line.find(' ');
        if (blank == std::string_view::npos)
            return;
        std::optional<double> ms = LeadingNumber(line.substr(0, blank));
        if (!ms)
            return;
        events.push_back(ClientEvent{*ms, std::string(line.substr(blank + 1))});
    });
    return events;
}

const ClientEvent* FindEvent(const std::vector<ClientEvent>& events, std::string_view prefix) {
    for (const ClientEvent& e : events) {
        if (StartsWith(e.text, prefix))
            return &e;
    }
    return nullptr;
}

std::optional<double> EventValue(const ClientEvent& event, std::string_view key) {
    const std::string needle = " " + std::string(key) + "=";
    std::size_t at = event.text.find(needle);
    if (at == std::string::npos)
        return std::nullopt;
    return LeadingNumber(std::string_view(event.text).substr(at + needle.size()));
}

const ClientEvent* FindLoad(const std::vector<ClientEvent>& events, std::string_view file) {
    for (const ClientEvent& e : events) {
        if (!StartsWith(e.text, "load "))
            continue;
        // "load PATH ok ms=..." or "load PATH failed error=N ms=..."
        std::string_view rest = std::string_view(e.text).substr(5);
        std::size_t status = rest.rfind(" ok ms=");
        if (status == std::string_view::npos)
            status = rest.rfind(" failed error=");
        if (status != std::string_view::npos && EndsWithNoCase(rest.substr(0, status), file))
            return &e;
    }
    return nullptr;
}

std::size_t CountPosted(std::string_view log, unsigned n) {
    const std::string head = "posted WM_USER+" + std::to_string(n) + " ";
    std::size_t count = 0;
    ForEachLine(log, [&](std::string_view line) {
        if (StartsWith(line, head))
            ++count;
    });
    return count;
}

SendReport ParseSendReport(std::string_view text) {
    SendReport report;
    ForEachLine(text, [&](std::string_view line) {
        if (StartsWith(line, "error: ")) {
            report.errors.emplace_back(line);
        } else if (StartsWith(line, "send ")) {
            ++report.sends;
            std::size_t us = line.rfind(" us=");
            if (us != std::string_view::npos) {
                if (std::optional<double> v = LeadingNumber(line.substr(us + 4)))
                    report.us.push_back(*v);
            }
        }
    });
    return report;
}

AddinLogStats ReadAddinLog(std::string_view text) {
    AddinLogStats stats;
    ForEachLine(text, [&](std::string_view line) {
        if (line.empty())
            return;
        ++stats.lines;
        const bool incomplete = line.find("!!! the action of") != std::string_view::npos &&
                                line.find("is not complete") != std::string_view::npos;
        if (line.find("@@@ Error") != std::string_view::npos ||
            line.find("Exception Catched") != std::string_view::npos || incomplete) {
            stats.problems.emplace_back(line);
        }
    });
    return stats;
}

}  // namespace velk::demo
