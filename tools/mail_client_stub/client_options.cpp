#include "tools/mail_client_stub/client_options.h"

#include <cstdint>

namespace velk::tools {
namespace {

// Decimal milliseconds; no sign, no overflow.
bool ParseMs(const std::wstring& text, unsigned& out) {
    if (text.empty() || text.size() > 9)
        return false;
    std::uint32_t value = 0;
    for (wchar_t c : text) {
        if (c < L'0' || c > L'9')
            return false;
        value = value * 10 + static_cast<std::uint32_t>(c - L'0');
    }
    out = value;
    return true;
}

bool ParseStep(const std::wstring& word, Step& step) {
    static const struct {
        const wchar_t* name;
        StepKind kind;
    } kSimple[] = {
        {L"set-browser", StepKind::kSetBrowser}, {L"rebuild", StepKind::kRebuild},
        {L"destroy", StepKind::kDestroy},        {L"close", StepKind::kClose},
        {L"unload", StepKind::kUnload},
    };
    for (const auto& s : kSimple) {
        if (word == s.name) {
            step = Step{s.kind, 0};
            return true;
        }
    }
    const std::wstring wait = L"wait=";
    if (word.compare(0, wait.size(), wait) == 0) {
        step.kind = StepKind::kWait;
        return ParseMs(word.substr(wait.size()), step.ms);
    }
    return false;
}

}  // namespace

bool ParseSteps(const std::wstring& text, std::vector<Step>& out, std::wstring& error) {
    std::vector<Step> steps;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        std::size_t end = text.find(L',', begin);
        if (end == std::wstring::npos)
            end = text.size();
        const std::wstring word = text.substr(begin, end - begin);
        Step step;
        if (!ParseStep(word, step)) {
            error = L"bad step \"" + word + L"\"";
            return false;
        }
        steps.push_back(step);
        begin = end + 1;
    }
    out.insert(out.end(), steps.begin(), steps.end());
    return true;
}

bool ParseClientOptions(const std::vector<std::wstring>& args, ClientOptions& out,
                        std::wstring& error) {
    ClientOptions options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::wstring& arg = args[i];
        if (arg == L"--help" || arg == L"-h") {
            options.help = true;
            continue;
        }
        if (arg == L"--no-free") {
            options.free_at_exit = false;
            continue;
        }
        if (arg == L"--keep-identity") {
            options.write_identity = false;
            continue;
        }
        if (i + 1 >= args.size()) {
            error = arg.compare(0, 2, L"--") == 0 ? L"missing value for " + arg
                                                  : L"unexpected argument " + arg;
            return false;
        }
        const std::wstring& value = args[++i];
        bool ok = true;
        if (arg == L"--addin") {
            ok = !value.empty();
            options.addins.push_back(value);
        } else if (arg == L"--mode") {
            if (value == L"auto") {
                options.mode = ClientMode::kAuto;
            } else if (value == L"oe") {
                options.mode = ClientMode::kOutlookExpress;
            } else if (value == L"wmail") {
                options.mode = ClientMode::kWindowsMail;
            } else {
                ok = false;
            }
        } else if (arg == L"--identity") {
            ok = !value.empty();
            options.identity = value;
            options.write_identity = true;
        } else if (arg == L"--late") {
            ok = ParseMs(value, options.late_ms);
        } else if (arg == L"--run") {
            if (!ParseSteps(value, options.steps, error))
                return false;
        } else if (arg == L"--events") {
            ok = !value.empty();
            options.events_path = value;
        } else if (arg == L"--exit-after") {
            ok = ParseMs(value, options.exit_after_ms);
        } else {
            error = L"unknown option " + arg;
            return false;
        }
        if (!ok) {
            error = L"bad value \"" + value + L"\" for " + arg;
            return false;
        }
    }
    out = options;
    return true;
}

const wchar_t* ClientUsage() {
    return L"usage: mail_client_stub.exe [options]\n"
           L"  --addin PATH      load this add-in (repeatable, loaded in order)\n"
           L"  --mode M          auto | oe | wmail (default auto: wmail on 6.x systems)\n"
           L"  --identity ID     HKCU\\Identities \"Last User ID\" to write (default a fixed id)\n"
           L"  --keep-identity   leave HKCU\\Identities as it is\n"
           L"  --late MS         create the main window MS ms after loading the add-ins\n"
           L"  --run STEPS       comma-separated: set-browser rebuild destroy wait=MS close "
           L"unload\n"
           L"  --events FILE     append one line per event (ms since start, event)\n"
           L"  --exit-after MS   close the main window after MS ms\n"
           L"  --no-free         leave the add-ins loaded at exit\n";
}

}  // namespace velk::tools
