// What happened to each message of the demo: found from the mailbox before
// and after the run and the store's journal, never from what the session
// meant to do; and the check of the scenario's expectations against it.
// No Win32 here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "demo/mailbox.h"
#include "demo/scenario.h"
#include "demo/store_journal.h"

namespace velk::demo {

struct Outcome {
    const Message* message = nullptr;  // of the scenario
    std::string before;                // the bytes staged
    bool found = false;                // still in the mailbox after the run
    std::uint32_t folder = 0;          // where it is now
    std::uint32_t id = 0;
    std::string after;
    std::vector<const JournalEntry*> calls;  // store calls made on it, in order
};

// Messages are followed by their Message-ID. Messages of the mailbox after
// the run that match none of the scenario's are returned in `strangers`.
std::vector<Outcome> FindOutcomes(const Scenario& scenario, const Mailbox& before,
                                  const Mailbox& after, const std::vector<JournalEntry>& journal,
                                  std::vector<const StoredMessage*>& strangers);

// One line for the summary, e.g. "spam-offer.eml: moved Inbox -> Quarantine
// (message 4), subject now '[SPAM] ...', ...".
std::string DescribeOutcome(const Scenario& scenario, const Outcome& outcome);

// Seconds since 1970 (UTC) as "2024-06-11 08:02:50 UTC".
std::string UtcText(std::uint64_t seconds);

// Each unmet expectation as "line N: FILE: ...", and each message that
// changed without an expectation naming it; empty when the run did what the
// scenario says. Times written by the run must lie in [start, end] (seconds
// since 1970, UTC).
std::vector<std::string> CheckOutcomes(const Scenario& scenario,
                                       const std::vector<Outcome>& outcomes,
                                       const std::vector<const StoredMessage*>& strangers,
                                       std::uint64_t start, std::uint64_t end);

}  // namespace velk::demo
