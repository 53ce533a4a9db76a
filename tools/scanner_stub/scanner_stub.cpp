// scanner_stub.exe: the scanning process as the add-in sees it. Sends
// WM_COPYDATA requests (well formed or not) from a process of its own and
// times each send; or runs the window that records what the add-in posts.
// The command line is described in tools/README.md.
#include <windows.h>
#include <shellapi.h>

#include "common_src/bench/bench.h"
#include "tools/scanner_stub/listener.h"
#include "tools/scanner_stub/scanner_command.h"
#include "tools/scanner_stub/scanner_io.h"

#include <cstdio>
#include <functional>
#include <vector>

using namespace velk::tools::scanner;

namespace {

enum ExitCode { kDone = 0, kBadArguments = 1, kNoTarget = 2, kSendFailed = 3, kCrashed = 4 };

bool ReadWholeFile(const std::string& path, std::string& text) {
    velk::win32::unique_file file(::CreateFileW(Widen(path).c_str(), GENERIC_READ,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return false;
    char buffer[4096];
    DWORD got = 0;
    text.clear();
    while (::ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr) && got)
        text.append(buffer, got);
    return true;
}

// Sleeps while still answering messages sent to this thread (the add-in
// may send to the listening window meanwhile); posted ones wait.
void SleepAnswering(DWORD ms) {
    DWORD start = ::GetTickCount();
    for (DWORD elapsed = 0; elapsed < ms; elapsed = ::GetTickCount() - start) {
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, ms - elapsed, QS_SENDMESSAGE);
        MSG msg;
        ::PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
}

class Sender {
public:
    Sender(const Globals& globals, Report& report) : globals_(globals), report_(report) {}

    // Runs record and sleep commands in order; stops at the first failure.
    int RunAll(const std::vector<Command>& commands, HWND from) {
        for (const Command& c : commands) {
            int status = Run(c, from);
            if (status != kDone)
                return status;
        }
        return kDone;
    }

    // Called after each request that was sent.
    void OnSent(std::function<void(const Command&)> sent) { on_sent_ = std::move(sent); }

    void Summary() {
        if (times_.empty())
            return;
        velk::bench::Stats s = velk::bench::Summarise(times_);
        report_.Line(FormatSummary(s.samples, s.median_us, s.p99_us, s.max_us));
    }

private:
    int Run(const Command& c, HWND from) {
        if (c.verb == Verb::kSleep) {
            SleepAnswering(c.sleep_ms);
            return kDone;
        }
        if (!target_) {
            target_ = FindTarget();
            if (!target_) {
                report_.Line("error: target window not found");
                return kNoTarget;
            }
        }
        Payload payload = BuildPayload(c);
        for (std::uint32_t i = 0; i < c.repeat; ++i) {
            int status = Send(payload, from);
            if (status != kDone)
                return status;
            if (on_sent_)
                on_sent_(c);
        }
        return kDone;
    }

    HWND FindTarget() const {
        if (globals_.hwnd) {
            HWND hwnd = reinterpret_cast<HWND>(static_cast<UINT_PTR>(*globals_.hwnd));
            return ::IsWindow(hwnd) ? hwnd : nullptr;
        }
        std::wstring window_class = Widen(globals_.window_class);
        DWORD start = ::GetTickCount();
        for (;;) {
            if (HWND hwnd = ::FindWindowW(window_class.c_str(), nullptr))
                return hwnd;
            if (::GetTickCount() - start >= globals_.wait_ms)
                return nullptr;
            ::Sleep(20);
        }
    }

    int Send(const Payload& payload, HWND from) {
        COPYDATASTRUCT cds{};
        cds.dwData = payload.dwdata;
        cds.cbData = static_cast<DWORD>(payload.bytes.size());
        cds.lpData =
            payload.bytes.empty() ? nullptr : const_cast<std::uint8_t*>(payload.bytes.data());

        LARGE_INTEGER frequency, t0, t1;
        ::QueryPerformanceFrequency(&frequency);
        LRESULT result = 0;
        ::QueryPerformanceCounter(&t0);
        if (globals_.timeout_ms) {
            DWORD_PTR answer = 0;
            if (!::SendMessageTimeoutW(target_, WM_COPYDATA, reinterpret_cast<WPARAM>(from),
                                       reinterpret_cast<LPARAM>(&cds), SMTO_NORMAL,
                                       *globals_.timeout_ms, &answer)) {
                report_.Line("error: send " + std::to_string(times_.size() + 1) +
                             " timed out or failed");
                return kSendFailed;
            }
            result = static_cast<LRESULT>(answer);
        } else {
            result = ::SendMessageW(target_, WM_COPYDATA, reinterpret_cast<WPARAM>(from),
                                    reinterpret_cast<LPARAM>(&cds));
        }
        ::QueryPerformanceCounter(&t1);
        double us = static_cast<double>(t1.QuadPart - t0.QuadPart) * 1e6 /
                    static_cast<double>(frequency.QuadPart);
        times_.push_back(us);
        report_.Line(FormatSendLine(times_.size(), payload.dwdata, payload.bytes.size(),
                                    static_cast<long long>(result), us));
        return kDone;
    }

    const Globals& globals_;
    Report& report_;
    HWND target_ = nullptr;
    std::vector<double> times_;
    std::function<void(const Command&)> on_sent_;
};

bool LoadScript(const std::string& path, std::vector<Command>& commands, std::string& error) {
    std::string text;
    if (!ReadWholeFile(path, text)) {
        error = "cannot read the script " + path;
        return false;
    }
    return ParseScript(text, commands, error);
}

// A bad command line still reports its error where the caller looks.
int BadArguments(const std::vector<std::string>& args, const std::string& error) {
    Report report;
    for (size_t i = 0; i + 1 < args.size(); ++i) {
        if (args[i] == "--report") {
            report.Open(args[i + 1]);
            break;
        }
    }
    std::fprintf(stderr,
                 "usage: scanner_stub [--hwnd H] [--class NAME] [--wait MS] "
                 "[--timeout MS] [--report FILE] COMMAND [OPTIONS]\n"
                 "       (see tools/README.md)\n");
    std::fprintf(stderr, "error: %s\n", error.c_str());
    report.Line("error: " + error);
    return kBadArguments;
}

int Main() {
    int argc = 0;
    LPWSTR* argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    std::vector<std::string> args;
    for (int i = 1; argv && i < argc; ++i)
        args.push_back(Narrow(argv[i]));
    ::LocalFree(argv);

    Invocation inv;
    std::string error;
    if (!ParseInvocation(args, inv, error))
        return BadArguments(args, error);
    Report report;
    if (!report.Open(inv.globals.report))
        return BadArguments(args, "cannot open the report file");

    Sender sender(inv.globals, report);
    std::vector<Command> commands;
    const Command& command = inv.command;
    if (command.verb == Verb::kScript || (command.verb == Verb::kListen && !command.path.empty())) {
        if (!LoadScript(command.path, commands, error))
            return BadArguments(args, error);
    } else if (command.verb != Verb::kListen) {
        commands.push_back(command);
    }

    if (command.verb != Verb::kListen) {
        int status = sender.RunAll(commands, nullptr);
        sender.Summary();
        return status;
    }
    int status = kDone;
    Listener listener(command, [&](HWND self) {
        if (commands.empty())
            return;
        status = sender.RunAll(commands, self);
        sender.Summary();
    });
    sender.OnSent([&](const Command& c) { listener.CountRequest(c); });
    int listened = listener.Run();
    return listened != kDone ? listened : status;
}

}  // namespace

int main() {
    try {
        return Main();
    } catch (...) {
        std::fputs("error: unexpected exception\n", stderr);
        return kCrashed;
    }
}
