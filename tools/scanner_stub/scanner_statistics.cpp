#include "tools/scanner_stub/scanner_statistics.h"

namespace velk::tools::scanner {

namespace {

void Increment(std::int32_t& counter) {
    counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(counter) + 1u);
}

}  // namespace

void StatisticsCounters::CountRequest(const Command& request) {
    switch (request.verb) {
        case Verb::kClone:
            Increment(processed);
            break;
        case Verb::kMove:
            Increment(processed);
            if (request.verdict == 1)
                Increment(detected);
            break;
        case Verb::kDelete:
            Increment(processed);
            Increment(detected);
            break;
        default:
            break;
    }
}

void StatisticsCounters::CountMessage(unsigned offset) {
    if (offset == 17)
        Increment(reported_spam);
    else if (offset == 18)
        Increment(reported_fp);
}

void StatisticsCounters::Reset(std::int64_t now) {
    *this = StatisticsCounters();
    running_since = now;
}

std::vector<std::pair<std::string, std::string>> StatisticsCounters::Entries() const {
    return {{"ProcessedMsg", std::to_string(processed)},
            {"DetectedSpam", std::to_string(detected)},
            {"ReportedSpam", std::to_string(reported_spam)},
            {"ReportedFP", std::to_string(reported_fp)},
            {"RunningSince", std::to_string(running_since)}};
}

}  // namespace velk::tools::scanner
