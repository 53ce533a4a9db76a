#include "demo/mailbox.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

#include "tools/store_stub/eml_header.h"

namespace velk::demo {

namespace fs = std::filesystem;

namespace {

bool Fail(std::string& error, const std::string& why) {
    error = why;
    return false;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

char Lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// A store id: decimal digits without a leading zero, as the store names them.
std::optional<std::uint32_t> StoreId(const std::string& text) {
    if (text.empty() || text.size() > 10 || text[0] == '0')
        return std::nullopt;
    std::uint64_t value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    if (value > 0xFFFFFFFFull)
        return std::nullopt;
    return static_cast<std::uint32_t>(value);
}

bool ReadFile(const fs::path& path, std::string& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

bool WriteFile(const fs::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out.flush());
}

}  // namespace

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (Lower(a[i]) != Lower(b[i]))
            return false;
    }
    return true;
}

std::vector<HeaderField> HeaderFields(std::string_view message) {
    std::vector<HeaderField> fields;
    std::string_view block = velk::tools::eml::HeaderBlock(message);
    std::size_t pos = 0;
    while (pos < block.size()) {
        std::size_t nl = block.find('\n', pos);
        std::size_t end = nl == std::string_view::npos ? block.size() : nl + 1;
        std::string_view line = block.substr(pos, end - pos);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.remove_suffix(1);
        pos = end;
        if (!line.empty() && IsBlank(line[0])) {
            if (!fields.empty())
                fields.back().value += line;  // unfolded: the line end goes
            continue;
        }
        std::size_t colon = line.find(':');
        if (colon == std::string_view::npos)
            continue;  // not a field; the store ignores it too
        std::string_view name = line.substr(0, colon);
        while (!name.empty() && IsBlank(name.back()))
            name.remove_suffix(1);
        std::string_view value = line.substr(colon + 1);
        while (!value.empty() && IsBlank(value.front()))
            value.remove_prefix(1);
        fields.push_back(HeaderField{std::string(name), std::string(value)});
    }
    return fields;
}

std::optional<std::string> FindField(const std::vector<HeaderField>& fields,
                                     std::string_view name) {
    for (const HeaderField& f : fields) {
        if (EqualsNoCase(f.name, name))
            return f.value;
    }
    return std::nullopt;
}

bool LoadMailbox(const fs::path& root, Mailbox& out, std::string& error) {
    out.clear();
    std::error_code ec;
    fs::directory_iterator folders(root, ec);
    if (ec)
        return Fail(error, "cannot read the mailbox " + root.u8string() + ": " + ec.message());
    for (const fs::directory_entry& folder : folders) {
        std::optional<std::uint32_t> folder_id = StoreId(folder.path().filename().u8string());
        if (!folder_id || !folder.is_directory(ec))
            continue;
        for (const fs::directory_entry& file : fs::directory_iterator(folder.path(), ec)) {
            if (file.path().extension() != ".eml" || !file.is_regular_file(ec))
                continue;
            std::optional<std::uint32_t> id = StoreId(file.path().stem().u8string());
            if (!id)
                continue;
            StoredMessage m{*folder_id, *id, {}};
            if (!ReadFile(file.path(), m.bytes))
                return Fail(error, "cannot read " + file.path().u8string());
            out.push_back(std::move(m));
        }
        if (ec)
            return Fail(error, "cannot read " + folder.path().u8string() + ": " + ec.message());
    }
    std::sort(out.begin(), out.end(), [](const StoredMessage& a, const StoredMessage& b) {
        return a.folder != b.folder ? a.folder < b.folder : a.id < b.id;
    });
    return true;
}

bool StageMailbox(const Scenario& scenario, const fs::path& source, const fs::path& root,
                  Mailbox& staged, std::string& error) {
    staged.clear();
    std::error_code ec;
    if (fs::exists(root, ec) && !fs::is_empty(root, ec))
        return Fail(error, root.u8string() + " is not empty");

    // Every .eml file in a folder of the sample mailbox must be listed. A
    // folder without messages has no directory (git keeps no empty ones).
    for (const Folder& folder : scenario.folders) {
        const fs::path dir = source / fs::u8path(folder.name);
        if (!fs::exists(dir, ec))
            continue;
        for (const fs::directory_entry& file : fs::directory_iterator(dir, ec)) {
            if (file.path().extension() != ".eml")
                continue;
            const std::string name = file.path().filename().u8string();
            const Message* m = scenario.MessageByFile(name);
            if (!m || m->folder != folder.id)
                return Fail(error, folder.name + "/" + name + " is not listed in the scenario");
        }
        if (ec)
            return Fail(error, "cannot read " + dir.u8string() + ": " + ec.message());
    }

    // Everything is read and checked before anything is written.
    std::set<std::string> message_ids;
    for (const Message& m : scenario.messages) {
        StoredMessage stored{m.folder, m.id, {}};
        const fs::path from =
            source / fs::u8path(scenario.FolderName(m.folder)) / fs::u8path(m.file);
        if (!ReadFile(from, stored.bytes))
            return Fail(error, "cannot read " + from.u8string());
        std::optional<std::string> message_id = FindField(HeaderFields(stored.bytes), "Message-ID");
        if (!message_id || message_id->empty())
            return Fail(error, m.file + " has no Message-ID");
        if (!message_ids.insert(*message_id).second)
            return Fail(error, m.file + " shares its Message-ID " + *message_id);
        staged.push_back(std::move(stored));
    }
    for (const StoredMessage& m : staged) {
        const fs::path dir = root / std::to_string(m.folder);
        fs::create_directories(dir, ec);
        const fs::path to = dir / (std::to_string(m.id) + ".eml");
        if (ec || !WriteFile(to, m.bytes))
            return Fail(error, "cannot write " + to.u8string());
    }
    // Declared folders exist even when empty: the store fails on a missing one.
    for (const Folder& folder : scenario.folders) {
        fs::create_directories(root / std::to_string(folder.id), ec);
        if (ec)
            return Fail(error, "cannot create folder " + std::to_string(folder.id));
    }
    std::sort(staged.begin(), staged.end(), [](const StoredMessage& a, const StoredMessage& b) {
        return a.folder != b.folder ? a.folder < b.folder : a.id < b.id;
    });
    return true;
}

}  // namespace velk::demo
