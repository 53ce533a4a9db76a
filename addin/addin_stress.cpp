// make stress: the add-in in the client stand-in under load. Two scanning
// processes send 10,000 requests between them while the band is torn down
// and rebuilt, its menus pop up (and are torn down while open), and the
// client closes at a random moment; the store stand-in runs in memory with
// one random fault always armed. Then every request sent is accounted for
// and the store's objects must all be gone.
//
// The flood comes in two halves. After the first, with the band built again
// and idle, the client process's GDI and USER object counts must be back
// where they were before it (after one action of each kind, so that what
// the system keeps for the process's life once a thing is used, a menu's
// bitmaps say, is already counted). The second half ends with the close.
//
// STRESS_SEED picks the run (printed, so a failure can be run again).
#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "common_src/win32/handles.h"
#include "host/window_identifiers.h"
#include "resources/resource_ids.h"

namespace {

using velk::win32::unique_handle;

constexpr int kSenders = 2;
constexpr int kRequestsPerSender = 5000;
constexpr int kMessages = 200;
constexpr wchar_t kAppDefaults[] = L"Software\\Wine\\AppDefaults\\mail_client_stub.exe";
constexpr UINT kBandId = 3339;

unsigned g_seed = 1;
unsigned Random(unsigned below) {
    g_seed = g_seed * 1103515245u + 12345u;
    return (g_seed >> 16) % below;
}

std::string ReadAll(const std::wstring& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int Count(const std::string& text, const std::string& needle) {
    int n = 0;
    for (auto at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
        ++n;
    return n;
}

// The numbers after "key " in the probe's lines.
std::map<std::string, double> ProbeValues(const std::wstring& path) {
    std::map<std::string, double> values;
    std::istringstream in(ReadAll(path));
    std::string key;
    double value = 0;
    while (in >> key >> value)
        values[key] = value;
    return values;
}

void SetString(const std::wstring& key_path, const wchar_t* name, const wchar_t* value) {
    HKEY key = nullptr;
    ::RegCreateKeyExW(HKEY_CURRENT_USER, key_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      &key, nullptr);
    if (value != nullptr)
        ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                         static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t)));
    else
        ::RegDeleteValueW(key, name);
    ::RegCloseKey(key);
}

unique_handle Start(std::wstring cmd) {
    SECURITY_ATTRIBUTES sa{sizeof(sa), nullptr, TRUE};
    static HANDLE nul =
        ::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &sa,
                      OPEN_EXISTING, 0, nullptr);
    STARTUPINFOW si{};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul;
    PROCESS_INFORMATION pi{};
    if (!::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi))
        return unique_handle();
    ::CloseHandle(pi.hThread);
    return unique_handle(pi.hProcess);
}

DWORD ExitCode(HANDLE process, DWORD ms) {
    if (::WaitForSingleObject(process, ms) != WAIT_OBJECT_0) {
        ::TerminateProcess(process, 99);
        return 99;
    }
    DWORD code = 0;
    ::GetExitCodeProcess(process, &code);
    return code;
}

HWND MainWindow() {
    return ::FindWindowW(velk::host::kClientMainWindowClass, nullptr);
}

HWND Band() {
    HWND sizable = ::FindWindowExW(MainWindow(), nullptr, L"SizableRebar", nullptr);
    for (HWND rebar = ::FindWindowExW(sizable, nullptr, L"ReBarWindow32", nullptr);
         rebar != nullptr; rebar = ::FindWindowExW(sizable, rebar, L"ReBarWindow32", nullptr)) {
        for (HWND child = ::FindWindowExW(rebar, nullptr, nullptr, nullptr); child != nullptr;
             child = ::FindWindowExW(rebar, child, nullptr, nullptr)) {
            if (::GetDlgItem(child, ID_TB_LOGO) != nullptr)
                return child;
        }
    }
    return nullptr;
}

bool Send(HWND window, UINT msg, WPARAM wp = 0, LPARAM lp = 0) {
    DWORD_PTR answer = 0;
    return window != nullptr &&
           ::SendMessageTimeoutW(window, msg, wp, lp, SMTO_NORMAL, 10000, &answer) != 0;
}

// One action of the storm on the client's user interface; `kind` -1 picks
// one at random.
void Disturb(int& actions, int kind = -1) {
    HWND main = MainWindow();
    if (main == nullptr)
        return;
    ++actions;
    switch (kind >= 0 ? kind : static_cast<int>(Random(5))) {
        case 0:  // the band out and in again, through the exports
            Send(main, WM_APP + 3);
            Send(main, WM_APP + 2);
            break;
        case 1:
        case 2: {  // a menu: closed by the user, or with the band while open
            HWND band = Band();
            if (band == nullptr)
                break;
            const bool overflow = kind >= 0 ? kind == 2 : Random(2) == 0;
            if (overflow)
                ::SetWindowPos(main, nullptr, 0, 0, 160, 400, SWP_NOMOVE | SWP_NOZORDER);
            ::PostMessageW(band, WM_COMMAND, overflow ? ID_TB_OVERFLOW : ID_TB_MENU_BUTTON, 0);
            ::Sleep(20 + Random(60));
            if (kind >= 0 || Random(2) == 0) {
                ::PostMessageW(main, WM_KEYDOWN, VK_ESCAPE, 0);
            } else {
                Send(main, WM_APP + 3);
                Send(main, WM_APP + 2);
            }
            if (overflow)
                ::SetWindowPos(main, nullptr, 0, 0, 900, 560, SWP_NOMOVE | SWP_NOZORDER);
            break;
        }
        case 3:  // the scanning process switches the report buttons
            Send(::FindWindowW(velk::host::kToolBarWindowClass, nullptr),
                 velk::host::kMsgSwitchReportButton, 0, Random(2));
            break;
        default:
            ::Sleep(Random(40));
            break;
    }
}

std::wstring Temp(const std::wstring& name) {
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    return std::wstring(temp) + name;
}

// The probe's counts at its checkpoints, in order.
std::vector<double> Checkpoints(const std::wstring& probe_log, const std::string& key) {
    std::vector<double> values;
    std::istringstream in(ReadAll(probe_log));
    std::string word;
    double value = 0;
    while (in >> word >> value) {
        if (word == key)
            values.push_back(value);
    }
    return values;
}

// Band built, no menu open, nothing pending: a state to count objects in.
void Settle() {
    HWND main = MainWindow();
    ::PostMessageW(main, WM_KEYDOWN, VK_ESCAPE, 0);
    Send(main, WM_APP + 2);
    ::Sleep(300);
    Send(main, WM_APP + 0x77);  // the probe counts
}

}  // namespace

int main() {
    wchar_t seed_text[32] = L"";
    g_seed = ::GetEnvironmentVariableW(L"STRESS_SEED", seed_text, 32) > 0
                 ? static_cast<unsigned>(_wtoi(seed_text))
                 : static_cast<unsigned>(::GetTickCount());
    const unsigned seed = g_seed;
    std::printf("stress: seed %u (STRESS_SEED=%u runs it again)\n", seed, seed);

    // A private copy of the staged installation with the log on.
    const std::wstring root = Temp(L"velk_stress_" + std::to_wstring(seed) + L"\\");
    {
        std::wstring from = root + L'\0';
        SHFILEOPSTRUCTW op{};
        op.wFunc = FO_DELETE;
        op.pFrom = from.c_str();
        op.fFlags = FOF_NO_UI;
        ::SHFileOperationW(&op);
    }
    ::SHCreateDirectoryExW(nullptr, (root + L"bin").c_str(), nullptr);
    ::SHCreateDirectoryExW(nullptr, (root + L"Resource\\en-US").c_str(), nullptr);
    const std::wstring dist = VELK_TEST_DIST;
    for (const wchar_t* f :
         {L"bin\\VELK_OEA.dll", L"bin\\VELK_OE.ini", L"Resource\\LanguageMap.ini",
          L"Resource\\en-US\\StringTable.ini", L"Resource\\en-US\\VELK_OEA.dll.mui"}) {
        if (!::CopyFileW((dist + L"\\" + f).c_str(), (root + f).c_str(), FALSE)) {
            std::printf("stress: FAILED, %ls is not staged\n", f);
            return 1;
        }
    }
    const std::wstring addin = root + L"bin\\VELK_OEA.dll";
    ::WritePrivateProfileStringW(L"General", L"Debug", L"1", (root + L"bin\\VELK_OE.ini").c_str());
    const std::wstring identity = L"{stress-" + std::to_wstring(seed) + L"}";
    wchar_t data[MAX_PATH];
    ::ExpandEnvironmentStringsW(L"%ProgramData%", data, MAX_PATH);
    const std::wstring user_dir = std::wstring(data) + L"\\Nuvexa\\OE\\Users\\" + identity + L"\\";
    ::SHCreateDirectoryExW(nullptr, (user_dir + L"log").c_str(), nullptr);
    SetString(std::wstring(kAppDefaults) + L"\\X11 Driver", L"Managed", L"N");
    SetString(kAppDefaults, L"Version", L"winxp64");  // Outlook Express: the hook's close

    const std::wstring client_exe = VELK_MAIL_CLIENT_STUB_EXE;
    const std::wstring probe = VELK_TEST_PROBE;
    auto client_command = [&](const std::wstring& addins, const std::wstring& events) {
        return L"\"" + client_exe + L"\" --mode oe --identity " + identity + L" --events \"" +
               events + L"\" " + addins + L" --run set-browser --exit-after 600000";
    };

    // The run.
    const std::wstring probe_log = root + L"probe.txt";
    const std::wstring events = root + L"events.txt";
    ::SetEnvironmentVariableW(L"VELK_PROBE_LOG", probe_log.c_str());
    ::SetEnvironmentVariableW(L"VELK_PROBE_COUNT", L"1");
    ::SetEnvironmentVariableW(L"VELK_PROBE_STORE_MEMORY", std::to_wstring(kMessages).c_str());
    ::SetEnvironmentVariableW(L"VELK_PROBE_FAULTS", std::to_wstring(seed).c_str());
    unique_handle client =
        Start(client_command(L"--addin \"" + probe + L"\" --addin \"" + addin + L"\"", events));
    for (int i = 0; i < 250 && Band() == nullptr; ++i)
        ::Sleep(20);
    if (Band() == nullptr) {
        std::printf("stress: FAILED, no band\n%s", ReadAll(events).c_str());
        return 1;
    }

    std::vector<std::wstring> reports;
    auto start_senders = [&](int half) {
        std::vector<unique_handle> senders;
        for (int s = 0; s < kSenders; ++s) {
            const std::wstring name = std::to_wstring(half) + L"_" + std::to_wstring(s) + L".txt";
            const std::wstring script = root + L"script" + name;
            std::ofstream out(script.c_str());
            for (int i = 0; i < kRequestsPerSender / 2; ++i) {
                const unsigned msg = 1 + Random(kMessages);
                switch (Random(3)) {
                    case 0:
                        out << "clone --folder 1 --msg " << msg << " --headers \"X-Stress: " << i
                            << "\"\n";
                        break;
                    case 1:
                        out << "move --src 1 --dst 2 --msg " << msg << "\n";
                        break;
                    default:
                        out << "delete --folder " << 1 + Random(2) << " --msg " << msg << "\n";
                        break;
                }
            }
            out.close();
            reports.push_back(root + L"report" + name);
            senders.push_back(Start(L"\"" + std::wstring(VELK_SCANNER_STUB_EXE) +
                                    L"\" --timeout 30000 --report \"" + reports.back() +
                                    L"\" script \"" + script + L"\""));
        }
        return senders;
    };
    auto finished = [](std::vector<unique_handle>& senders) {
        std::vector<HANDLE> waits;
        for (unique_handle& sender : senders)
            waits.push_back(sender.get());
        return ::WaitForMultipleObjects(static_cast<DWORD>(waits.size()), waits.data(), TRUE, 0) ==
               WAIT_OBJECT_0;
    };
    auto delivered = [&] {
        int n = 0;
        for (const std::wstring& r : reports)
            n += Count(ReadAll(r), "\nsend ") + (ReadAll(r).rfind("send ", 0) == 0);
        return n;
    };

    // Each kind of action once, then the first half of the storm.
    int actions = 0;
    for (int kind = 0; kind < 4; ++kind)
        Disturb(actions, kind);
    Settle();
    const DWORD started = ::GetTickCount();
    std::vector<unique_handle> senders = start_senders(1);
    while (!finished(senders))
        Disturb(actions);
    Settle();
    // The second half, until the client closes at a random moment.
    const int half = kSenders * kRequestsPerSender / 2;
    const int close_at = delivered() + 500 + static_cast<int>(Random(half - 1000));
    senders = start_senders(2);
    for (bool closed = false; !closed;) {
        Disturb(actions);
        if (finished(senders) || (actions % 8 == 0 && delivered() >= close_at)) {
            ::PostMessageW(MainWindow(), WM_CLOSE, 0, 0);
            closed = true;
        }
    }
    const DWORD client_code = ExitCode(client.get(), 60000);
    for (unique_handle& sender : senders)
        ExitCode(sender.get(), 60000);
    const double seconds = (::GetTickCount() - started) / 1000.0;

    // Every request accounted for.
    WIN32_FIND_DATAW found{};
    HANDLE any = ::FindFirstFileW((user_dir + L"log\\VELKAgent*.log").c_str(), &found);
    std::string log;
    if (any != INVALID_HANDLE_VALUE) {
        log = ReadAll(user_dir + L"log\\" + found.cFileName);
        ::FindClose(any);
    }
    const int sent = delivered();
    const int dropped = Count(log, "request dropped, its deque stayed full");
    const int refused = Count(log, "the message worker is not running, request refused");
    int undone = 0;
    for (auto at = log.find("!!! "); at != std::string::npos; at = log.find("!!! ", at + 1)) {
        int n = 0;
        if (std::sscanf(log.c_str() + at, "!!! %d requests left undone at the stop", &n) == 1)
            undone += n;
    }
    auto v = ProbeValues(probe_log);
    const int processed = static_cast<int>(v["store_requests"]);
    std::vector<double> gdi = Checkpoints(probe_log, "gdi_checkpoint");
    const std::vector<double> cache = Checkpoints(probe_log, "gdi_dc_cache_checkpoint");
    const std::vector<double> user = Checkpoints(probe_log, "user_checkpoint");
    const bool counted = gdi.size() == 2 && user.size() == 2 && cache.size() == 2;
    // The system's DC cache grows to the most DCs once in use together.
    for (std::size_t i = 0; counted && i < 2; ++i)
        gdi[i] -= cache[i];
    const std::string client_events = ReadAll(events);

    std::printf(
        "stress: %.1f s; %d requests delivered of %d, client closed after about %d; "
        "%d interface actions\n",
        seconds, sent, kSenders * kRequestsPerSender, close_at, actions);
    std::printf(
        "stress: carried out %d, dropped by the full-queue rule %d (after %d waits "
        "on a full queue in all), refused after the stop %d, left undone at the stop %d\n",
        processed, dropped, Count(log, "deque is full, waiting..."), refused, undone);
    std::printf(
        "stress: store objects alive %g, references %g; GDI objects %g before the "
        "first half, %g after it (besides the system's DC cache, %g and %g); USER "
        "objects %g and %g\n",
        v["store_live_objects"], v["store_outstanding_refs"], counted ? gdi[0] : -1,
        counted ? gdi[1] : -1, counted ? cache[0] : -1, counted ? cache[1] : -1,
        counted ? user[0] : -1, counted ? user[1] : -1);
    std::printf("stress: client exit code %lu, library %s at the client's FreeLibrary\n",
                client_code,
                client_events.find("mapped=0") != std::string::npos ? "unmapped" : "still mapped");

    std::vector<std::string> failures;
    if (client_code != 0)
        failures.push_back("the client did not end normally");
    if (processed + dropped + refused + undone != sent)
        failures.push_back("requests lost");
    if (v["store_live_objects"] != 0 || v["store_outstanding_refs"] != 0)
        failures.push_back("store objects left alive");
    if (!counted || gdi[0] != gdi[1] || user[0] != user[1])
        failures.push_back("GDI or USER objects left behind");
    if (client_events.find("mapped=0") == std::string::npos)
        failures.push_back("the library stayed mapped after the client's FreeLibrary");
    for (const std::string& f : failures)
        std::printf("stress: FAILED, %s\n", f.c_str());
    if (failures.empty())
        std::printf("stress: passed\n");
    SetString(kAppDefaults, L"Version", nullptr);
    return failures.empty() ? 0 : 1;
}
