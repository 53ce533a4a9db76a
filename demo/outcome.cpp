#include "demo/outcome.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>

namespace velk::demo {

namespace {

using Location = std::pair<std::uint32_t, std::uint32_t>;  // folder, message

std::string MessageIdOf(std::string_view bytes) {
    return FindField(HeaderFields(bytes), "Message-ID").value_or(std::string());
}

// The message a journal entry acts on: its target, or for the folder's own
// calls the message id among the arguments.
std::optional<Location> EntryLocation(const JournalEntry& e) {
    if (e.folder && e.msg)
        return Location{*e.folder, *e.msg};
    if (e.method == "MoveMessage") {
        auto src = e.NumberArg(0);
        auto msg = e.NumberArg(2);
        if (src && msg)
            return Location{*src, *msg};
    }
    if (e.folder && (e.method == "DeleteMessage" || e.method == "GetMessage")) {
        if (auto msg = e.NumberArg(0))
            return Location{*e.folder, *msg};
    }
    return std::nullopt;
}

bool IsQuarantineTime(std::string_view name) {
    return EqualsNoCase(name, "X-Nuvexa-AntispamAddin-QuarantineTime");
}

std::optional<std::uint64_t> Seconds(const std::string& text) {
    if (text.empty() || text.size() > 10)
        return std::nullopt;
    std::uint64_t value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    return value;
}

std::string ShowField(const HeaderField& f) {
    std::string text = f.name + "=" + f.value;
    if (IsQuarantineTime(f.name)) {
        if (auto seconds = Seconds(f.value))
            text += " (" + UtcText(*seconds) + ")";
    }
    return text;
}

std::string Join(const std::vector<std::string>& parts, const char* separator) {
    std::string text;
    for (const std::string& p : parts) {
        if (!text.empty())
            text += separator;
        text += p;
    }
    return text;
}

// "GetMessage, GetBodyHandle, SetHeader x5, Commit": runs of one method merged.
std::string CallList(const std::vector<const JournalEntry*>& calls) {
    std::vector<std::string> parts;
    std::string last;
    int run = 0;
    auto flush = [&] {
        if (run > 0)
            parts.push_back(run == 1 ? last : last + " x" + std::to_string(run));
    };
    for (const JournalEntry* e : calls) {
        std::string name = e->method + (e->Succeeded() ? "" : " (failed)");
        if (name == last) {
            ++run;
            continue;
        }
        flush();
        last = name;
        run = 1;
    }
    flush();
    return Join(parts, ", ");
}

bool Wrote(const Outcome& o, std::string_view name) {
    return std::any_of(o.calls.begin(), o.calls.end(), [&](const JournalEntry* e) {
        return e->method == "SetHeader" && EqualsNoCase(e->FirstArg(), name);
    });
}

}  // namespace

std::string UtcText(std::uint64_t seconds) {
    // Civil date from days since 1970-01-01 (the proleptic Gregorian
    // calendar), so the text does not depend on the C library's time zone.
    std::int64_t days = static_cast<std::int64_t>(seconds / 86400);
    const unsigned rest = static_cast<unsigned>(seconds % 86400);
    days += 719468;
    const std::int64_t era = days / 146097;
    const unsigned doe = static_cast<unsigned>(days - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned day = doy - (153 * mp + 2) / 5 + 1;
    const unsigned month = mp < 10 ? mp + 3 : mp - 9;
    const std::int64_t year = static_cast<std::int64_t>(yoe) + era * 400 + (month <= 2 ? 1 : 0);
    char text[48];
    std::snprintf(text, sizeof text, "%04lld-%02u-%02u %02u:%02u:%02u UTC",
                  static_cast<long long>(year), month, day, rest / 3600, rest / 60 % 60, rest % 60);
    return text;
}

std::vector<Outcome> FindOutcomes(const Scenario& scenario, const Mailbox& before,
                                  const Mailbox& after, const std::vector<JournalEntry>& journal,
                                  std::vector<const StoredMessage*>& strangers) {
    std::vector<Outcome> outcomes;
    std::map<std::string, std::size_t> by_message_id;
    std::map<Location, std::size_t> at;  // where each message is, as the journal goes
    for (const Message& m : scenario.messages) {
        Outcome o;
        o.message = &m;
        for (const StoredMessage& s : before) {
            if (s.folder == m.folder && s.id == m.id)
                o.before = s.bytes;
        }
        by_message_id[MessageIdOf(o.before)] = outcomes.size();
        at[{m.folder, m.id}] = outcomes.size();
        outcomes.push_back(std::move(o));
    }

    strangers.clear();
    for (const StoredMessage& s : after) {
        auto it = by_message_id.find(MessageIdOf(s.bytes));
        if (it == by_message_id.end() || it->first.empty() || outcomes[it->second].found) {
            strangers.push_back(&s);
            continue;
        }
        Outcome& o = outcomes[it->second];
        o.found = true;
        o.folder = s.folder;
        o.id = s.id;
        o.after = s.bytes;
    }

    for (const JournalEntry& e : journal) {
        std::optional<Location> where = EntryLocation(e);
        if (!where)
            continue;
        auto it = at.find(*where);
        if (it == at.end())
            continue;
        const std::size_t index = it->second;
        outcomes[index].calls.push_back(&e);
        // A moved message is found at its new place by later calls; the new
        // id is not in the journal, the mailbox after the run has it.
        if (e.method == "MoveMessage" && e.Succeeded()) {
            at.erase(it);
            if (outcomes[index].found)
                at[{outcomes[index].folder, outcomes[index].id}] = index;
        }
    }
    return outcomes;
}

std::string DescribeOutcome(const Scenario& scenario, const Outcome& o) {
    const Message& m = *o.message;
    const std::string home = scenario.FolderName(m.folder);
    std::string text = m.file + ": ";
    std::vector<std::string> details;
    if (!o.found) {
        text += "deleted from " + home;
    } else if (o.after == o.before && o.folder == m.folder) {
        text += "unchanged in " + home;
    } else {
        if (o.folder != m.folder) {
            text += "moved " + home + " -> " + scenario.FolderName(o.folder) + " (message " +
                    std::to_string(o.id) + ")";
        } else {
            text += "rewritten in place in " + home;
        }
        const std::vector<HeaderField> old_fields = HeaderFields(o.before);
        const std::vector<HeaderField> new_fields = HeaderFields(o.after);
        const auto old_subject = FindField(old_fields, "Subject");
        const auto new_subject = FindField(new_fields, "Subject");
        if (new_subject != old_subject)
            details.push_back("subject now '" + new_subject.value_or("") + "'");
        std::vector<std::string> added, changed, removed, kept;
        for (const HeaderField& f : new_fields) {
            if (EqualsNoCase(f.name, "Subject"))
                continue;
            auto old_value = FindField(old_fields, f.name);
            if (!old_value)
                added.push_back(ShowField(f));
            else if (*old_value != f.value && FindField(new_fields, f.name) == f.value)
                changed.push_back(f.name + " " + *old_value + " -> " + f.value);
        }
        for (const HeaderField& f : old_fields) {
            if (!FindField(new_fields, f.name))
                removed.push_back(f.name);
        }
        if (!added.empty())
            details.push_back("added " + Join(added, ", "));
        if (!changed.empty())
            details.push_back("changed " + Join(changed, ", "));
        if (!removed.empty())
            details.push_back("removed " + Join(removed, ", "));
        if (o.after.size() != o.before.size() && added.empty() && changed.empty() &&
            removed.empty() && new_subject == old_subject) {
            details.push_back("body changed");
        }
    }
    // Headers the add-in looked at and left alone (a marker already set).
    std::vector<std::string> queried;
    for (const JournalEntry* e : o.calls) {
        if (e->method == "QueryHeader" && !Wrote(o, e->FirstArg()) &&
            std::find(queried.begin(), queried.end(), e->FirstArg()) == queried.end()) {
            queried.push_back(e->FirstArg());
        }
    }
    if (!queried.empty())
        details.push_back("kept " + Join(queried, ", ") + " (queried, not written)");
    for (const std::string& d : details)
        text += ", " + d;
    if (!o.calls.empty())
        text += " [store: " + CallList(o.calls) + "]";
    return text;
}

std::vector<std::string> CheckOutcomes(const Scenario& scenario,
                                       const std::vector<Outcome>& outcomes,
                                       const std::vector<const StoredMessage*>& strangers,
                                       std::uint64_t start, std::uint64_t end) {
    std::vector<std::string> failures;
    for (const Outcome& o : outcomes) {
        const Message& m = *o.message;
        bool named = false, placed = false;
        auto fail = [&](int line, const std::string& why) {
            failures.push_back((line ? "line " + std::to_string(line) + ": " : std::string()) +
                               m.file + ": " + why);
        };
        auto where = [&] {
            return o.found ? "in " + scenario.FolderName(o.folder) : std::string("gone");
        };
        const std::vector<HeaderField> fields = HeaderFields(o.after);
        for (const Expectation& e : scenario.expectations) {
            if (e.file != m.file)
                continue;
            named = true;
            switch (e.kind) {
                case ExpectKind::kIn:
                    placed = true;
                    if (!o.found || o.folder != e.folder)
                        fail(e.line,
                             "expected in " + scenario.FolderName(e.folder) + ", found " + where());
                    continue;
                case ExpectKind::kGone:
                    placed = true;
                    if (o.found)
                        fail(e.line, "expected gone, found " + where());
                    continue;
                case ExpectKind::kUnchanged:
                    placed = true;
                    if (!o.found || o.folder != m.folder || o.after != o.before)
                        fail(e.line, "expected unchanged, found " +
                                         (o.found ? where() + (o.after != o.before
                                                                   ? std::string(", changed")
                                                                   : std::string())
                                                  : where()));
                    continue;
                case ExpectKind::kNotWritten:
                    if (Wrote(o, e.name))
                        fail(e.line,
                             "expected " + e.name + " not written, the store got SetHeader");
                    continue;
                default:
                    break;
            }
            // The remaining expectations read the message after the run.
            if (!o.found) {
                fail(e.line, "expected to read its headers, but it is gone");
                continue;
            }
            const std::optional<std::string> value =
                FindField(fields, e.kind == ExpectKind::kSubject ? "Subject" : e.name);
            const std::string shown = value ? "'" + *value + "'" : std::string("absent");
            if (e.kind == ExpectKind::kSubject && value != e.value) {
                fail(e.line, "expected subject '" + e.value + "', found " + shown);
            } else if (e.kind == ExpectKind::kHeader && value != e.value) {
                fail(e.line, "expected " + e.name + " '" + e.value + "', found " + shown);
            } else if (e.kind == ExpectKind::kNoHeader && value) {
                fail(e.line, "expected no " + e.name + ", found " + shown);
            } else if (e.kind == ExpectKind::kHeaderTime) {
                std::optional<std::uint64_t> t = value ? Seconds(*value) : std::nullopt;
                if (!t || *t < start || *t > end)
                    fail(e.line, "expected " + e.name + " a time of this run (" +
                                     std::to_string(start) + " to " + std::to_string(end) +
                                     "), found " + shown);
            }
        }
        if (!named && (!o.found || o.folder != m.folder || o.after != o.before))
            fail(0, "changed (" + where() + ") though no expectation names it");
        if (named && !placed && (!o.found || o.folder != m.folder))
            fail(0, "expected to stay in " + scenario.FolderName(m.folder) + ", found " + where());
    }
    for (const StoredMessage* s : strangers) {
        failures.push_back("message " + std::to_string(s->id) + " of " +
                           scenario.FolderName(s->folder) +
                           " is not one of the scenario's messages");
    }
    return failures;
}

}  // namespace velk::demo
