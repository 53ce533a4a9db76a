#include "demo/scenario.h"

#include <algorithm>
#include <limits>

#include "tools/scanner_stub/scanner_command.h"

namespace velk::demo {

namespace {

using Words = std::vector<std::string>;
namespace scanner = velk::tools::scanner;

bool Fail(std::string& error, const std::string& why) {
    error = why;
    return false;
}

bool Number(const std::string& text, std::uint32_t& out) {
    std::uint64_t value = 0;
    if (!scanner::ParseNumber(text, std::numeric_limits<std::uint32_t>::max(), value))
        return false;
    out = static_cast<std::uint32_t>(value);
    return true;
}

bool EndsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

class Parser {
public:
    explicit Parser(Scenario& out) : out_(out) {}

    bool Line(const Words& w, std::string& error) {
        const std::string& verb = w[0];
        if (verb == "folder")
            return FolderLine(w, error);
        if (verb == "message")
            return MessageLine(w, error);
        if (verb == "purge" || verb == "clone" || verb == "move" || verb == "delete" ||
            verb == "sleep")
            return ActionLine(w, error);
        if (verb == "expect")
            return ExpectLine(w, error);
        if (verb == "show")
            return ShowLine(w, error);
        return Fail(error, "unknown line: " + verb);
    }

private:
    bool FolderLine(const Words& w, std::string& error) {
        Folder f;
        if (w.size() != 3 || !Number(w[1], f.id) || f.id == 0)
            return Fail(error, "expected: folder ID NAME (ID from 1)");
        f.name = w[2];
        if (out_.FolderById(f.id) || out_.FolderByName(f.name))
            return Fail(error, "folder " + w[1] + " " + f.name + " is declared twice");
        if (f.name.find_first_of("\\/:") != std::string::npos || f.name == "." || f.name == "..")
            return Fail(error, "a folder name is one directory name: " + f.name);
        out_.folders.push_back(std::move(f));
        return true;
    }

    bool MessageLine(const Words& w, std::string& error) {
        Message m;
        if (w.size() != 4 || !Number(w[2], m.id) || m.id == 0)
            return Fail(error, "expected: message FOLDER ID FILE (ID from 1)");
        const Folder* folder = out_.FolderByName(w[1]);
        if (!folder)
            return Fail(error, "unknown folder " + w[1]);
        m.folder = folder->id;
        m.file = w[3];
        if (!EndsWith(m.file, ".eml") || m.file.find_first_of("\\/:") != std::string::npos)
            return Fail(error, "a message is a file name ending in .eml: " + m.file);
        if (out_.MessageByFile(m.file))
            return Fail(error, m.file + " is declared twice");
        for (const Message& other : out_.messages) {
            if (other.folder == m.folder && other.id == m.id)
                return Fail(error, "message " + w[2] + " of " + w[1] + " is declared twice");
        }
        out_.messages.push_back(std::move(m));
        return true;
    }

    bool ActionLine(const Words& w, std::string& error) {
        Action a;
        std::size_t i = 1;
        const std::string& verb = w[0];
        if (verb == "sleep") {
            a.kind = ActionKind::kSleep;
            if (w.size() != 2 || !Number(w[1], a.sleep_ms))
                return Fail(error, "expected: sleep MS");
            out_.session.push_back(std::move(a));
            return true;
        }
        if (w.size() < 2)
            return Fail(error, verb + ": what?");
        if (verb == "purge") {
            a.kind = ActionKind::kPurge;
            const Folder* folder = out_.FolderByName(w[1]);
            if (!folder)
                return Fail(error, "unknown folder " + w[1]);
            a.folder = folder->id;
            if (w.size() != 2)
                return Fail(error, "purge takes only the folder");
            out_.session.push_back(std::move(a));
            return true;
        }
        const Message* m = out_.MessageByFile(w[1]);
        if (!m)
            return Fail(error, "unknown message " + w[1]);
        a.file = m->file;
        a.folder = m->folder;
        a.msg = m->id;
        i = 2;
        if (verb == "delete") {
            a.kind = ActionKind::kDelete;
            if (w.size() != 2)
                return Fail(error, "delete takes only the message");
            out_.session.push_back(std::move(a));
            return true;
        }
        a.kind = verb == "move" ? ActionKind::kMove : ActionKind::kClone;
        if (a.kind == ActionKind::kMove) {
            if (w.size() < 4 || w[2] != "to")
                return Fail(error, "expected: move FILE to FOLDER ...");
            const Folder* dst = out_.FolderByName(w[3]);
            if (!dst)
                return Fail(error, "unknown folder " + w[3]);
            a.dst = dst->id;
            i = 4;
        }
        for (; i < w.size(); i += 2) {
            const std::string& key = w[i];
            if (i + 1 >= w.size())
                return Fail(error, key + " needs a value");
            const std::string& value = w[i + 1];
            bool ok = true;
            if (key == "option") {
                ok = Number(value, a.option);
            } else if (key == "headers") {
                std::u16string decoded;
                std::string why;
                if (!scanner::DecodeText(value, decoded, why))
                    return Fail(error, "headers: " + why);
                a.headers = value;
            } else if (a.kind == ActionKind::kMove && key == "verdict") {
                ok = Number(value, a.verdict);
            } else if (a.kind == ActionKind::kMove && key == "quarantine") {
                ok = Number(value, a.quarantine);
            } else {
                return Fail(error, "unknown option " + key + " of " + verb);
            }
            if (!ok)
                return Fail(error, key + " is not a number: " + value);
        }
        out_.session.push_back(std::move(a));
        return true;
    }

    bool ShowLine(const Words& w, std::string& error) {
        const Folder* folder = w.size() == 2 ? out_.FolderByName(w[1]) : nullptr;
        if (!folder)
            return Fail(error, "expected: show FOLDER (a declared folder)");
        out_.show_folder = folder->id;
        return true;
    }

    bool ExpectLine(const Words& w, std::string& error) {
        Expectation e;
        if (w.size() < 3)
            return Fail(error, "expected: expect FILE WHAT ...");
        if (!out_.MessageByFile(w[1]))
            return Fail(error, "unknown message " + w[1]);
        e.file = w[1];
        const std::string& what = w[2];
        std::size_t want = 3;
        if (what == "in") {
            e.kind = ExpectKind::kIn;
            want = 4;
            const Folder* folder = w.size() == 4 ? out_.FolderByName(w[3]) : nullptr;
            if (w.size() == 4 && !folder)
                return Fail(error, "unknown folder " + w[3]);
            if (folder)
                e.folder = folder->id;
        } else if (what == "gone") {
            e.kind = ExpectKind::kGone;
        } else if (what == "unchanged") {
            e.kind = ExpectKind::kUnchanged;
        } else if (what == "subject") {
            e.kind = ExpectKind::kSubject;
            want = 4;
            if (w.size() == 4)
                e.value = w[3];
        } else if (what == "header") {
            want = 5;
            if (w.size() == 5) {
                e.name = w[3];
                e.kind = w[4] == "time" ? ExpectKind::kHeaderTime : ExpectKind::kHeader;
                e.value = w[4];
            }
        } else if (what == "no-header" || what == "not-written") {
            e.kind = what == "no-header" ? ExpectKind::kNoHeader : ExpectKind::kNotWritten;
            want = 4;
            if (w.size() == 4)
                e.name = w[3];
        } else {
            return Fail(error, "unknown expectation " + what);
        }
        if (w.size() != want)
            return Fail(error, "wrong number of words for expect ... " + what);
        out_.expectations.push_back(std::move(e));
        return true;
    }

    Scenario& out_;
};

// A word of a script line; the scanning process's script groups by double
// quotes and has no escaped quote, which the scenario's own parser cannot
// produce either.
std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

}  // namespace

const Folder* Scenario::FolderById(std::uint32_t id) const {
    auto it =
        std::find_if(folders.begin(), folders.end(), [&](const Folder& f) { return f.id == id; });
    return it == folders.end() ? nullptr : &*it;
}

const Folder* Scenario::FolderByName(std::string_view name) const {
    auto it = std::find_if(folders.begin(), folders.end(),
                           [&](const Folder& f) { return f.name == name; });
    return it == folders.end() ? nullptr : &*it;
}

const Message* Scenario::MessageByFile(std::string_view file) const {
    auto it = std::find_if(messages.begin(), messages.end(),
                           [&](const Message& m) { return m.file == file; });
    return it == messages.end() ? nullptr : &*it;
}

std::string Scenario::FolderName(std::uint32_t id) const {
    const Folder* f = FolderById(id);
    return f ? f->name : "folder " + std::to_string(id);
}

bool ParseScenario(std::string_view text, Scenario& out, std::string& error) {
    out = Scenario();
    Parser parser(out);
    int line_no = 0;
    while (!text.empty()) {
        ++line_no;
        std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        Words words;
        std::string why;
        bool ok = scanner::SplitLine(line, words, why);
        if (ok && (words.empty() || words[0][0] == '#'))
            continue;
        const std::size_t expectations = out.expectations.size();
        if (ok)
            ok = parser.Line(words, why);
        if (!ok)
            return Fail(error, "line " + std::to_string(line_no) + ": " + why);
        if (out.expectations.size() > expectations)
            out.expectations.back().line = line_no;
    }
    if (out.messages.empty())
        return Fail(error, "the scenario has no messages");
    return true;
}

std::string SessionScript(const Scenario& scenario) {
    std::string script;
    for (const Action& a : scenario.session) {
        std::string line;
        switch (a.kind) {
            case ActionKind::kSleep:
                line = "sleep " + std::to_string(a.sleep_ms);
                break;
            case ActionKind::kPurge:
                line = "purge --folder " + std::to_string(a.folder);
                break;
            case ActionKind::kDelete:
                line = "delete --folder " + std::to_string(a.folder) + " --msg " +
                       std::to_string(a.msg);
                break;
            case ActionKind::kClone:
                line = "clone --folder " + std::to_string(a.folder) + " --msg " +
                       std::to_string(a.msg) + " --option " + std::to_string(a.option);
                break;
            case ActionKind::kMove:
                line = "move --src " + std::to_string(a.folder) + " --dst " +
                       std::to_string(a.dst) + " --msg " + std::to_string(a.msg) + " --verdict " +
                       std::to_string(a.verdict) + " --quarantine " + std::to_string(a.quarantine) +
                       " --option " + std::to_string(a.option);
                break;
        }
        if (!a.headers.empty())
            line += " --headers " + Quoted(a.headers);
        if (!a.file.empty())
            script += "# " + a.file + "\n";
        script += line + "\n";
    }
    return script;
}

}  // namespace velk::demo
