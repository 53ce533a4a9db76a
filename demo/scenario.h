// The demo's scenario file (demo/scenario.txt): the sample mailbox, the
// session the scanning process plays against the add-in, and what the
// mailbox must look like afterwards. No Win32 here: parsed and tested
// natively, used by the Windows driver.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velk::demo {

struct Folder {
    std::uint32_t id = 0;
    std::string name;
};

// A message of the sample mailbox: demo/mailbox/<folder name>/<file>, stored
// as message `id` of store folder `folder`. File names are unique across the
// mailbox, so the scenario names a message by its file.
struct Message {
    std::string file;
    std::uint32_t folder = 0;
    std::uint32_t id = 0;
};

enum class ActionKind { kPurge, kClone, kMove, kDelete, kSleep };

struct Action {
    ActionKind kind = ActionKind::kClone;
    std::string file;          // clone, move, delete
    std::uint32_t folder = 0;  // purge: the folder; others: the message's folder
    std::uint32_t msg = 0;
    std::uint32_t dst = 0;  // move
    std::uint32_t verdict = 1;
    std::uint32_t quarantine = 1;
    std::uint32_t option = 0;
    std::string headers;  // as written, with the scanning process's escapes
    std::uint32_t sleep_ms = 0;
};

enum class ExpectKind {
    kIn,
    kGone,
    kUnchanged,
    kSubject,
    kHeader,
    kHeaderTime,
    kNoHeader,
    kNotWritten
};

struct Expectation {
    ExpectKind kind = ExpectKind::kIn;
    std::string file;
    std::uint32_t folder = 0;  // kIn
    std::string name;          // header name
    std::string value;         // kSubject, kHeader
    int line = 0;              // in the scenario file, for the failure report
};

struct Scenario {
    std::vector<Folder> folders;
    std::vector<Message> messages;
    std::vector<Action> session;
    std::vector<Expectation> expectations;
    std::uint32_t show_folder = 0;  // the folder the client shows afterwards; 0: none named

    const Folder* FolderById(std::uint32_t id) const;
    const Folder* FolderByName(std::string_view name) const;
    const Message* MessageByFile(std::string_view file) const;
    // The folder's name, or its number when the scenario does not name it.
    std::string FolderName(std::uint32_t id) const;
};

// The whole file. On failure `error` names the line ("line 12: ...").
bool ParseScenario(std::string_view text, Scenario& out, std::string& error);

// The session as a script of the scanning-process stand-in (one command per
// line, its own syntax and escapes).
std::string SessionScript(const Scenario& scenario);

}  // namespace velk::demo
