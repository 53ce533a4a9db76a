#include "tools/scanner_stub/scanner_command.h"

#include "actions/copydata_records.h"

#include <cstdio>
#include <cstring>

namespace velk::tools::scanner {

namespace rec = velk::actions;

namespace {

constexpr std::uint64_t kMax32 = 0xFFFFFFFFull;

bool Fail(std::string& error, std::string message) {
    error = std::move(message);
    return false;
}

struct VerbName {
    const char* name;
    Verb verb;
};
constexpr VerbName kVerbs[] = {
    {"clone", Verb::kClone},   {"move", Verb::kMove},     {"delete", Verb::kDelete},
    {"purge", Verb::kPurge},   {"raw", Verb::kRaw},       {"sleep", Verb::kSleep},
    {"script", Verb::kScript}, {"listen", Verb::kListen},
};

bool IsRecordVerb(Verb v) {
    return v == Verb::kClone || v == Verb::kMove || v == Verb::kDelete || v == Verb::kPurge ||
           v == Verb::kRaw;
}

// Which options a verb takes.
bool Allowed(Verb verb, std::string_view option) {
    auto in = [&](std::initializer_list<std::string_view> names) {
        for (std::string_view n : names)
            if (n == option)
                return true;
        return false;
    };
    if (IsRecordVerb(verb) && in({"--dwdata", "--cb", "--repeat"}))
        return true;
    switch (verb) {
        case Verb::kClone:
            return in({"--folder", "--msg", "--option", "--headers", "--no-nul"});
        case Verb::kMove:
            return in({"--src", "--dst", "--msg", "--verdict", "--quarantine", "--option",
                       "--headers", "--no-nul"});
        case Verb::kDelete:
        case Verb::kPurge:
            return in({"--folder", "--msg"});
        case Verb::kRaw:
            return in({"--hex"});
        case Verb::kListen:
            return in({"--log", "--title", "--ready-event", "--script", "--settings"});
        default:
            return false;
    }
}

// Appends one code point as UTF-16.
void AppendUtf16(std::u16string& out, std::uint32_t cp) {
    if (cp >= 0x10000) {
        cp -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
        out.push_back(static_cast<char16_t>(cp));
    }
}

// Decodes one UTF-8 sequence at text[i]; false when it is not valid.
bool DecodeUtf8(std::string_view text, std::size_t& i, std::uint32_t& cp) {
    auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    unsigned char lead = byte(i);
    std::size_t length;
    std::uint32_t min;
    if (lead < 0x80) {
        cp = lead;
        ++i;
        return true;
    } else if ((lead & 0xE0) == 0xC0) {
        length = 2, cp = lead & 0x1F, min = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3, cp = lead & 0x0F, min = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4, cp = lead & 0x07, min = 0x10000;
    } else {
        return false;
    }
    if (text.size() - i < length)
        return false;
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80)
            return false;
        cp = (cp << 6) | (byte(i + k) & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return false;
    i += length;
    return true;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

template <class T>
void Put(std::vector<std::uint8_t>& bytes, const T& record) {
    bytes.resize(sizeof(T));
    std::memcpy(bytes.data(), &record, sizeof(T));
}

// The header text as the record carries it.
void FillHeaders(char16_t (&field)[rec::kHeaderUnits], const Command& c) {
    std::memset(field, 0, sizeof field);
    if (c.no_nul) {
        for (std::size_t i = 0; i < rec::kHeaderUnits; ++i)
            field[i] = c.headers[i % c.headers.size()];
        return;
    }
    std::size_t n = c.headers.size() < rec::kHeaderUnits ? c.headers.size() : rec::kHeaderUnits - 1;
    std::memcpy(field, c.headers.data(), n * sizeof(char16_t));
}

}  // namespace

bool ParseNumber(std::string_view text, std::uint64_t max, std::uint64_t& out) {
    unsigned base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty() || text.size() > 20)
        return false;
    std::uint64_t value = 0;
    for (char c : text) {
        int d = base == 16 ? HexDigit(c) : (c >= '0' && c <= '9' ? c - '0' : -1);
        if (d < 0)
            return false;
        if (value > (max - static_cast<unsigned>(d)) / base)
            return false;
        value = value * base + static_cast<unsigned>(d);
    }
    out = value;
    return true;
}

bool DecodeText(std::string_view text, std::u16string& out, std::string& error) {
    out.clear();
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != '\\') {
            std::uint32_t cp = 0;
            if (!DecodeUtf8(text, i, cp))
                return Fail(error, "text is not valid UTF-8");
            AppendUtf16(out, cp);
            continue;
        }
        if (i + 1 >= text.size())
            return Fail(error, "a lone \\ ends the text");
        char e = text[i + 1];
        i += 2;
        switch (e) {
            case 'r':
                out.push_back(u'\r');
                break;
            case 'n':
                out.push_back(u'\n');
                break;
            case 't':
                out.push_back(u'\t');
                break;
            case '0':
                out.push_back(u'\0');
                break;
            case '\\':
                out.push_back(u'\\');
                break;
            case 'u': {
                std::uint32_t unit = 0;
                for (int k = 0; k < 4; ++k, ++i) {
                    int d = i < text.size() ? HexDigit(text[i]) : -1;
                    if (d < 0)
                        return Fail(error, "\\u needs four hex digits");
                    unit = unit * 16 + static_cast<unsigned>(d);
                }
                out.push_back(static_cast<char16_t>(unit));  // lone surrogates allowed on purpose
                break;
            }
            default:
                return Fail(error, std::string("unknown escape \\") + e);
        }
    }
    return true;
}

bool ParseHex(std::string_view text, std::vector<std::uint8_t>& out, std::string& error) {
    out.clear();
    int high = -1;
    for (char c : text) {
        if (c == ' ' || c == '\t' || c == ',') {
            if (high >= 0)
                return Fail(error, "hex bytes need two digits");
            continue;
        }
        int d = HexDigit(c);
        if (d < 0)
            return Fail(error, std::string("not a hex digit: ") + c);
        if (high < 0) {
            high = d;
        } else {
            out.push_back(static_cast<std::uint8_t>(high * 16 + d));
            high = -1;
        }
    }
    if (high >= 0)
        return Fail(error, "hex bytes need two digits");
    return true;
}

bool SplitLine(std::string_view line, std::vector<std::string>& words, std::string& error) {
    words.clear();
    std::string word;
    bool in_word = false, quoted = false;
    for (char c : line) {
        if (c == '"') {
            quoted = !quoted;
            in_word = true;
        } else if (!quoted && (c == ' ' || c == '\t' || c == '\r' || c == '\n')) {
            if (in_word)
                words.push_back(std::move(word));
            word.clear();
            in_word = false;
        } else {
            word.push_back(c);
            in_word = true;
        }
    }
    if (quoted)
        return Fail(error, "a quote is not closed");
    if (in_word)
        words.push_back(std::move(word));
    return true;
}

bool ParseCommand(const std::vector<std::string>& args, Command& out, std::string& error) {
    if (args.empty())
        return Fail(error, "no command");
    Command c;
    bool known = false;
    for (const VerbName& v : kVerbs) {
        if (args[0] == v.name) {
            c.verb = v.verb;
            known = true;
        }
    }
    if (!known)
        return Fail(error, "unknown command: " + args[0]);

    std::size_t i = 1;
    if (c.verb == Verb::kSleep || c.verb == Verb::kScript) {
        if (args.size() != 2)
            return Fail(error, args[0] + " takes one argument");
        if (c.verb == Verb::kScript) {
            c.path = args[1];
        } else {
            std::uint64_t ms = 0;
            if (!ParseNumber(args[1], kMax32, ms))
                return Fail(error, "bad sleep time: " + args[1]);
            c.sleep_ms = static_cast<std::uint32_t>(ms);
        }
        out = std::move(c);
        return true;
    }

    bool seen_folder = false, seen_msg = false, seen_src = false, seen_dst = false;
    for (; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (!Allowed(c.verb, option))
            return Fail(error, args[0] + " does not take " + option);
        if (option == "--no-nul") {
            c.no_nul = true;
            continue;
        }
        if (i + 1 >= args.size())
            return Fail(error, option + " needs a value");
        const std::string& value = args[++i];
        std::uint64_t n = 0;
        auto number = [&](std::uint32_t& field) {
            if (!ParseNumber(value, kMax32, n))
                return Fail(error, "bad number for " + option);
            field = static_cast<std::uint32_t>(n);
            return true;
        };
        auto optional_number = [&](std::optional<std::uint32_t>& field) {
            if (!ParseNumber(value, kMax32, n))
                return Fail(error, "bad number for " + option);
            field = static_cast<std::uint32_t>(n);
            return true;
        };
        bool ok = true;
        if (option == "--folder") {
            ok = number(c.folder);
            seen_folder = true;
        } else if (option == "--msg") {
            ok = number(c.msg);
            seen_msg = true;
        } else if (option == "--src") {
            ok = number(c.src);
            seen_src = true;
        } else if (option == "--dst") {
            ok = number(c.dst);
            seen_dst = true;
        } else if (option == "--option") {
            ok = number(c.option);
        } else if (option == "--verdict") {
            ok = number(c.verdict);
        } else if (option == "--quarantine") {
            ok = number(c.quarantine);
        } else if (option == "--repeat") {
            ok = number(c.repeat);
        } else if (option == "--dwdata") {
            ok = optional_number(c.dwdata);
        } else if (option == "--cb") {
            ok = optional_number(c.cb);
        } else if (option == "--headers") {
            ok = DecodeText(value, c.headers, error);
        } else if (option == "--hex") {
            ok = ParseHex(value, c.raw, error);
        } else if (option == "--log") {
            c.log = value;
        } else if (option == "--title") {
            c.title = value;
        } else if (option == "--ready-event") {
            c.ready_event = value;
        } else if (option == "--script") {
            c.path = value;
        } else if (option == "--settings") {
            c.settings = value;
        }
        if (!ok)
            return false;
    }

    switch (c.verb) {
        case Verb::kClone:
        case Verb::kDelete:
            if (!seen_folder || !seen_msg)
                return Fail(error, args[0] + " needs --folder and --msg");
            break;
        case Verb::kMove:
            if (!seen_src || !seen_dst || !seen_msg)
                return Fail(error, "move needs --src, --dst and --msg");
            break;
        case Verb::kPurge:
            if (!seen_folder)
                return Fail(error, "purge needs --folder");
            break;
        case Verb::kRaw:
            if (!c.dwdata)
                return Fail(error, "raw needs --dwdata");
            break;
        default:
            break;
    }
    if (c.no_nul && c.headers.empty())
        return Fail(error, "--no-nul needs --headers");
    if (IsRecordVerb(c.verb) && c.repeat == 0)
        return Fail(error, "--repeat must be at least 1");
    out = std::move(c);
    return true;
}

bool ParseInvocation(const std::vector<std::string>& args, Invocation& out, std::string& error) {
    Invocation inv;
    std::size_t i = 0;
    for (; i < args.size() && args[i].rfind("--", 0) == 0; i += 2) {
        const std::string& option = args[i];
        if (i + 1 >= args.size())
            return Fail(error, option + " needs a value");
        const std::string& value = args[i + 1];
        std::uint64_t n = 0;
        if (option == "--hwnd") {
            if (!ParseNumber(value, ~0ull, n) || n == 0)
                return Fail(error, "bad window handle");
            inv.globals.hwnd = n;
        } else if (option == "--class") {
            inv.globals.window_class = value;
        } else if (option == "--wait") {
            if (!ParseNumber(value, kMax32, n))
                return Fail(error, "bad number for --wait");
            inv.globals.wait_ms = static_cast<std::uint32_t>(n);
        } else if (option == "--timeout") {
            if (!ParseNumber(value, kMax32, n))
                return Fail(error, "bad number for --timeout");
            inv.globals.timeout_ms = static_cast<std::uint32_t>(n);
        } else if (option == "--report") {
            inv.globals.report = value;
        } else {
            return Fail(error, "unknown option: " + option);
        }
    }
    std::vector<std::string> rest(args.begin() + static_cast<std::ptrdiff_t>(i), args.end());
    if (!ParseCommand(rest, inv.command, error))
        return false;
    out = std::move(inv);
    return true;
}

bool ParseScript(std::string_view text, std::vector<Command>& out, std::string& error) {
    out.clear();
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3);
    std::size_t line_no = 0;
    while (!text.empty()) {
        ++line_no;
        std::size_t nl = text.find('\n');
        std::string_view line = text.substr(0, nl);
        text = nl == std::string_view::npos ? std::string_view() : text.substr(nl + 1);

        std::vector<std::string> words;
        std::string why;
        bool ok = SplitLine(line, words, why);
        if (ok && (words.empty() || words[0][0] == '#'))
            continue;
        Command c;
        if (ok)
            ok = ParseCommand(words, c, why);
        if (ok && !IsRecordVerb(c.verb) && c.verb != Verb::kSleep) {
            ok = false;
            why = words[0] + " cannot be used in a script";
        }
        if (!ok)
            return Fail(error, "line " + std::to_string(line_no) + ": " + why);
        out.push_back(std::move(c));
    }
    return true;
}

Payload BuildPayload(const Command& c) {
    Payload p;
    switch (c.verb) {
        case Verb::kClone: {
            rec::CloneMsgRequest r{};
            r.nOption = c.option;
            r.nFolderID = c.folder;
            r.nMsgID = c.msg;
            FillHeaders(r.szHeaders, c);
            Put(p.bytes, r);
            p.dwdata = rec::COPYDATA_CLONE_MSG;
            break;
        }
        case Verb::kMove: {
            rec::MoveMsgRequest r{};
            r.nFlagQuarantineTime = c.quarantine;
            r.nOption = c.option;
            r.nVerdict = c.verdict;
            r.nSrcFolderID = c.src;
            r.nDstFolderID = c.dst;
            r.nMsgID = c.msg;
            FillHeaders(r.szHeaders, c);
            Put(p.bytes, r);
            p.dwdata = rec::COPYDATA_MOVE_MSG;
            break;
        }
        case Verb::kDelete:
        case Verb::kPurge: {
            rec::DeleteMsgRequest r{};
            r.nFolderID = c.folder;
            r.nMsgID = c.msg;
            r.bDeleteAllSpam = c.verb == Verb::kPurge ? 1 : 0;
            Put(p.bytes, r);
            p.dwdata = rec::COPYDATA_DELETE_MSG;
            break;
        }
        case Verb::kRaw:
            p.bytes = c.raw;
            break;
        default:
            return p;
    }
    if (c.dwdata)
        p.dwdata = *c.dwdata;
    if (c.cb)
        p.bytes.resize(*c.cb, 0);
    return p;
}

std::string FormatSendLine(std::size_t seq, std::uint32_t dwdata, std::size_t cb, long long result,
                           double us) {
    char line[128];
    std::snprintf(line, sizeof line, "send %llu dwData=%lu cbData=%llu result=%lld us=%.1f",
                  static_cast<unsigned long long>(seq), static_cast<unsigned long>(dwdata),
                  static_cast<unsigned long long>(cb), result, us);
    return line;
}

std::string FormatSummary(std::size_t sends, double median_us, double p99_us, double max_us) {
    char line[128];
    std::snprintf(line, sizeof line, "summary sends=%llu median_us=%.1f p99_us=%.1f max_us=%.1f",
                  static_cast<unsigned long long>(sends), median_us, p99_us, max_us);
    return line;
}

std::string FormatMessageLine(bool sent, unsigned message, std::uint64_t wparam,
                              std::uint64_t lparam) {
    char line[128];
    std::snprintf(line, sizeof line, "%s WM_USER+%u wParam=0x%llX lParam=0x%llX",
                  sent ? "sent" : "posted", message - 0x400u,
                  static_cast<unsigned long long>(wparam), static_cast<unsigned long long>(lparam));
    return line;
}

std::string FormatCopyDataLine(std::uint64_t dwdata, std::uint32_t cb) {
    char line[96];
    std::snprintf(line, sizeof line, "copydata dwData=%llu cbData=%lu",
                  static_cast<unsigned long long>(dwdata), static_cast<unsigned long>(cb));
    return line;
}

}  // namespace velk::tools::scanner
