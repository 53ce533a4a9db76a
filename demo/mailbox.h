// The demo's mailbox on disk, in the message store stand-in's layout
// (<root>/<folder id>/<message id>.eml), and the header fields of its
// messages. No Win32 here.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "demo/scenario.h"

namespace velk::demo {

struct StoredMessage {
    std::uint32_t folder = 0;
    std::uint32_t id = 0;
    std::string bytes;
};

// Every message of a store tree, by folder then message id. Files and
// folders that are not the store's (other names, sub-folders) are skipped,
// as the store skips them.
using Mailbox = std::vector<StoredMessage>;

struct HeaderField {
    std::string name;   // as written, blanks before the colon cut
    std::string value;  // unfolded, blanks after the colon cut
};

// The fields of the message's header block, in order.
std::vector<HeaderField> HeaderFields(std::string_view message);

// The first field named `name` (ASCII case-insensitive).
std::optional<std::string> FindField(const std::vector<HeaderField>& fields, std::string_view name);

bool EqualsNoCase(std::string_view a, std::string_view b);

// Reads a store tree; false with `error` when it cannot be read.
bool LoadMailbox(const std::filesystem::path& root, Mailbox& out, std::string& error);

// Copies demo/mailbox/<folder>/<file> of every scenario message to
// <root>/<folder id>/<message id>.eml and returns what was written. Fails
// when `root` exists and is not empty (nothing is overwritten), when a
// listed file is missing, when a folder holds an
// .eml file the scenario does not list (it would change the demo unseen), or
// when two messages share a Message-ID or have none: the report follows a
// message through moves by it.
bool StageMailbox(const Scenario& scenario, const std::filesystem::path& source,
                  const std::filesystem::path& root, Mailbox& staged, std::string& error);

}  // namespace velk::demo
