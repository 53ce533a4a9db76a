// The demo run: a copy of the staged installation with the diagnostic log
// on, the sample mailbox in the store stand-in, the mail-client stand-in with
// the add-in (and the probe), the scanning-process stand-in playing the
// scenario's session, a screenshot, a real click on Report Spam, a sender
// blocked through the filtering sheet opened from the logo menu, the
// statistics dialog on the session's counts, each window with its
// screenshot, the client's close; then the summary, read from what the run
// left on disk only.
//
// Every window of the add-in is found by class, control id and owner, never
// by its text: the run works the same in every language of the session.
#include "demo/driver/demo_run.h"

#include <windows.h>
#include <commctrl.h>
#include <prsht.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "common_src/win32/handles.h"
#include "demo/driver/child_process.h"
#include "demo/driver/remote_window.h"
#include "demo/driver/screen_shot.h"
#include "demo/mailbox.h"
#include "demo/probe/probe_protocol.h"
#include "demo/run_records.h"
#include "demo/scenario.h"
#include "demo/summary.h"
#include "resources/resource_ids.h"
#include "senders/pages/sender_page_ids.h"
#include "senders/sender_list_wide.h"
#include "statistics/statistics_ids.h"

namespace velk::demo {

namespace fs = std::filesystem;

namespace {

// Fixed by the add-in and the real client; the demo looks for them.
constexpr wchar_t kBrowserClass[] = L"Outlook Express Browser Class";
constexpr wchar_t kScannerTitle[] = L"{5B0E7C21-93D4-4A6F-8B12-C4E97A1D2F58}";
constexpr UINT kBandId = 3339;
constexpr int kReportSpamId = 6011;
constexpr unsigned kReportSpamMessage = 17;  // WM_USER + 17, posted to the scanning process
constexpr unsigned kSenderListsSaved = 9;    // WM_USER + 9, posted once the lists are written
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";

// Typed into the sender dialog of the blocked-senders page.
constexpr wchar_t kBlockedSender[] = L"offers@bargain-mail.example";

// The client runs under this name so that Wine's per-program settings
// (version, window management) touch no other program of the prefix.
constexpr wchar_t kClientName[] = L"demo_client.exe";

std::string Utf8(const std::wstring& text) {
    if (text.empty())
        return std::string();
    int n = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr,
                                  0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(n), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), n,
                          nullptr, nullptr);
    return out;
}

// Files another process may still be writing: shared read.
std::string ReadText(const std::wstring& path) {
    win32::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                          nullptr, OPEN_EXISTING, 0, nullptr));
    std::string text;
    if (!file)
        return text;
    char buffer[8192];
    DWORD got = 0;
    while (::ReadFile(file.get(), buffer, sizeof buffer, &got, nullptr) && got)
        text.append(buffer, got);
    return text;
}

bool WriteText(const std::wstring& path, const std::string& text) {
    std::ofstream out(fs::path(path), std::ios::binary | std::ios::trunc);
    out << text;
    return static_cast<bool>(out.flush());
}

std::size_t CountLinesStarting(const std::string& text, const std::string& head) {
    std::size_t count = 0;
    for (std::size_t pos = 0; pos < text.size();) {
        if (text.compare(pos, head.size(), head) == 0)
            ++count;
        std::size_t nl = text.find('\n', pos);
        pos = nl == std::string::npos ? text.size() : nl + 1;
    }
    return count;
}

double Seconds(LARGE_INTEGER from, LARGE_INTEGER to) {
    LARGE_INTEGER f;
    ::QueryPerformanceFrequency(&f);
    return static_cast<double>(to.QuadPart - from.QuadPart) / static_cast<double>(f.QuadPart);
}

LARGE_INTEGER Now() {
    LARGE_INTEGER t;
    ::QueryPerformanceCounter(&t);
    return t;
}

std::uint64_t UnixNow() {
    FILETIME ft;
    ::GetSystemTimeAsFileTime(&ft);
    ULARGE_INTEGER t{};
    t.LowPart = ft.dwLowDateTime;
    t.HighPart = ft.dwHighDateTime;
    return (t.QuadPart - 116444736000000000ull) / 10000000ull;
}

bool SetRegistryString(HKEY root, const std::wstring& key, const wchar_t* name,
                       const std::wstring* value) {
    win32::unique_hkey k;
    if (::RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, k.put(),
                          nullptr) != ERROR_SUCCESS) {
        return false;
    }
    if (!value) {
        LONG rc = ::RegDeleteValueW(k.get(), name);
        return rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND;
    }
    return ::RegSetValueExW(k.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value->c_str()),
                            static_cast<DWORD>((value->size() + 1) * sizeof(wchar_t))) ==
           ERROR_SUCCESS;
}

// A top-level window of `process` found by class or title.
HWND FindProcessWindow(DWORD process, const wchar_t* class_name, const wchar_t* title) {
    for (HWND w = ::FindWindowExW(nullptr, nullptr, class_name, title); w;
         w = ::FindWindowExW(nullptr, w, class_name, title)) {
        DWORD owner = 0;
        ::GetWindowThreadProcessId(w, &owner);
        if (owner == process)
            return w;
    }
    return nullptr;
}

// A visible top-level window of `process` of class `class_name` that
// `match` accepts.
template <class Match>
HWND FindVisibleWindow(DWORD process, const wchar_t* class_name, Match match) {
    for (HWND w = ::FindWindowExW(nullptr, nullptr, class_name, nullptr); w;
         w = ::FindWindowExW(nullptr, w, class_name, nullptr)) {
        DWORD owner = 0;
        ::GetWindowThreadProcessId(w, &owner);
        if (owner == process && ::IsWindowVisible(w) && match(w))
            return w;
    }
    return nullptr;
}

// SendMessage that never hangs the run on a busy or stuck client.
LRESULT Ask(HWND window, UINT msg, WPARAM wp = 0, LPARAM lp = 0) {
    DWORD_PTR answer = 0;
    return ::SendMessageTimeoutW(window, msg, wp, lp, SMTO_NORMAL, 5000, &answer) ? answer : 0;
}

std::wstring TextOf(HWND window) {
    wchar_t text[256] = {};
    DWORD_PTR copied = 0;
    ::SendMessageTimeoutW(window, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text), SMTO_NORMAL,
                          5000, &copied);
    return text;
}

class Run {
public:
    explicit Run(const DemoConfig& config) : config_(config) {
        out_ = fs::path(config.out).lexically_normal().wstring();
        install_ = out_ + L"\\install";
        mailbox_ = out_ + L"\\mailbox";
        before_ = out_ + L"\\mailbox-before";
        journal_ = out_ + L"\\store-journal.txt";
        events_ = out_ + L"\\client-events.txt";
        scanner_report_ = out_ + L"\\scanner-report.txt";
        scanner_log_ = out_ + L"\\scanner-messages.txt";
        session_ = out_ + L"\\session.txt";
        client_exe_ = out_ + L"\\bin\\" + kClientName;
    }

    int Go() {
        start_time_ = UnixNow();
        if (!fs::exists(fs::path(config_.dist) / L"bin" / L"VELK_OEA.dll")) {
            std::printf("demo: %s\\bin\\VELK_OEA.dll is missing: the add-in is not built yet\n",
                        Utf8(config_.dist).c_str());
            return kDemoNoAddin;
        }
        // Once the client runs, every step is tried, so that a failed one
        // still leaves the others' evidence behind.
        if (Prepare() && StartClient()) {
            PlaySession();
            ShowAndShoot();
            PressReportSpam();
            EditFilteringSettings();
            ShowStatistics();
        }
        Close();
        end_time_ = UnixNow();
        CollectLogs();
        return Report() ? kDemoOk : kDemoFailed;
    }

private:
    bool Problem(const std::string& text) {
        problems_.push_back(text);
        return false;
    }

    // ---- before the client starts ----

    bool Prepare() {
        std::error_code ec;
        fs::create_directories(fs::path(out_) / L"bin", ec);
        // The installation as staged, with the diagnostic log switched on.
        fs::copy(config_.dist, install_, fs::copy_options::recursive, ec);
        if (ec)
            return Problem("cannot copy the staged installation: " + ec.message());
        const std::wstring ini = install_ + L"\\bin\\VELK_OE.ini";
        wchar_t debug[8] = {};
        if (!::WritePrivateProfileStringW(L"General", L"Debug", L"1", ini.c_str()) ||
            ::GetPrivateProfileStringW(L"General", L"Debug", L"", debug, 8, ini.c_str()) != 1 ||
            debug[0] != L'1') {
            return Problem("cannot switch the log on in " + Utf8(ini));
        }

        std::string error;
        const std::string text = ReadText(config_.source + L"\\scenario.txt");
        if (!ParseScenario(text, scenario_, error))
            return Problem("scenario.txt: " + error);
        if (!StageMailbox(scenario_, config_.source + L"\\mailbox", before_, staged_, error) ||
            !StageMailbox(scenario_, config_.source + L"\\mailbox", mailbox_, staged_, error)) {
            return Problem("staging the mailbox: " + error);
        }
        if (!WriteText(session_, SessionScript(scenario_)))
            return Problem("cannot write " + Utf8(session_));

        // The store stand-in as the scanning process's installation would
        // leave it: registered in the prefix.
        win32::unique_hmodule store(::LoadLibraryW(config_.store_dll.c_str()));
        auto reg = store ? reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(
                               ::GetProcAddress(store.get(), "DllRegisterServer")))
                         : nullptr;
        if (!reg || FAILED(reg()))
            return Problem("cannot register the store stand-in " + Utf8(config_.store_dll));

        // A first start for the demo's identity: its folder is new, with the
        // log folder the log needs (the log does not create it).
        wchar_t common[MAX_PATH];
        if (FAILED(::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, 0, common)))
            return Problem("no common application data folder");
        user_folder_ = std::wstring(common) + L"\\Nuvexa\\OE\\Users\\" + config_.identity;
        fs::remove_all(user_folder_, ec);
        fs::create_directories(user_folder_ + L"\\log", ec);
        if (ec)
            return Problem("cannot create " + Utf8(user_folder_) + "\\log");

        if (!::CopyFileW(config_.client_exe.c_str(), client_exe_.c_str(), FALSE))
            return Problem("cannot copy the client stand-in");
        const std::wstring app = std::wstring(L"Software\\Wine\\AppDefaults\\") + kClientName;
        // Without a window manager Wine waits for one at each close of a
        // managed window; the client's windows are not managed.
        const std::wstring no = L"N", xp64 = L"winxp64";
        if (!SetRegistryString(HKEY_CURRENT_USER, app + L"\\X11 Driver", L"Managed", &no) ||
            !SetRegistryString(HKEY_CURRENT_USER, app, L"Version",
                               config_.mode == L"oe" ? &xp64 : nullptr)) {
            return Problem("cannot write Wine's settings for the client");
        }
        return true;
    }

    // ---- the client with the add-in ----

    bool StartClient() {
        ::SetEnvironmentVariableW(kProbeMailboxVariable, mailbox_.c_str());
        ::SetEnvironmentVariableW(kProbeJournalVariable, journal_.c_str());
        const std::wstring mode = config_.mode == L"wmail" ? L"wmail" : L"auto";
        const std::wstring command = QuoteArgument(client_exe_) + L" --addin " +
                                     QuoteArgument(install_ + L"\\bin\\VELK_OEA.dll") +
                                     L" --addin " + QuoteArgument(config_.probe_dll) + L" --mode " +
                                     mode + L" --identity " + config_.identity +
                                     L" --run set-browser --events " + QuoteArgument(events_) +
                                     L" --exit-after 90000";
        DWORD error = 0;
        client_start_ = Now();
        if (!client_.Start(command, error))
            return Problem("cannot start the client stand-in, error " + std::to_string(error));

        // Ready: the band with Report Spam in the client's rebar, and the
        // probe with the store pointed at the mailbox.
        std::string probe_error;
        const bool ready = WaitUntil(
            [&] {
                if (!client_.Running())
                    return true;
                if (!browser_)
                    browser_ = FindProcessWindow(client_.id(), kBrowserClass, nullptr);
                if (browser_ && !band_seen_ && ClientHasBand(browser_, kBandId) &&
                    (report_spam_ = FindDescendantById(browser_, kReportSpamId)) != nullptr &&
                    ::IsWindowVisible(report_spam_)) {
                    band_seen_ = true;
                    band_time_ = Seconds(client_start_, Now());
                }
                const std::string journal = ReadText(journal_);
                if (journal.rfind("error: ", 0) == 0)
                    probe_error = journal;
                probe_ = FindProcessWindow(client_.id(), kProbeWindowClass, nullptr);
                return !probe_error.empty() || (band_seen_ && probe_);
            },
            20000);
        if (!probe_error.empty())
            return Problem("the probe in the client: " + probe_error);
        if (!client_.Running())
            return Problem("the client ended during its start (see client-events.txt)");
        if (!ready || !band_seen_)
            return Problem(browser_ ? "no band with Report Spam in the client after 20 s"
                                    : "no client window after 20 s");
        if (!probe_)
            return Problem("the probe did not start in the client");
        return true;
    }

    // ---- the scanning process's session ----

    bool PlaySession() {
        const std::wstring command = QuoteArgument(config_.scanner_exe) + L" --report " +
                                     QuoteArgument(scanner_report_) +
                                     L" --wait 5000 listen --log " + QuoteArgument(scanner_log_) +
                                     L" --script " + QuoteArgument(session_) + L" --settings " +
                                     QuoteArgument(user_folder_ + L"\\VELK_OE.ini");
        DWORD error = 0;
        if (!scanner_.Start(command, error))
            return Problem("cannot start the scanning process stand-in, error " +
                           std::to_string(error));
        std::size_t requests = 0;
        for (const Action& a : scenario_.session)
            requests += a.kind == ActionKind::kSleep ? 0 : 1;

        const bool sent = WaitUntil(
            [&] {
                const std::string report = ReadText(scanner_report_);
                return !scanner_.Running() || CountLinesStarting(report, "summary ") > 0 ||
                       CountLinesStarting(report, "error: ") > 0 ||
                       (requests == 0 && FindProcessWindow(scanner_.id(), nullptr, kScannerTitle));
            },
            30000);
        const SendReport report = ParseSendReport(ReadText(scanner_report_));
        if (!sent || !report.errors.empty() || report.sends != requests) {
            return Problem("the scanning process sent " + std::to_string(report.sends) + " of " +
                           std::to_string(requests) + " requests" +
                           (report.errors.empty() ? std::string() : ": " + report.errors[0]));
        }
        // Each request opens the store once; the worker is done when all
        // have and the journal has been still for a while.
        std::string last;
        LARGE_INTEGER still_since = Now();
        const bool settled = WaitUntil(
            [&] {
                const std::string journal = ReadText(journal_);
                if (journal != last) {
                    last = journal;
                    still_since = Now();
                    return false;
                }
                return CountLinesStarting(journal, "CreateInstance(") >= requests &&
                       journal.find(" -> pending") == std::string::npos &&
                       Seconds(still_since, Now()) >= 0.5;
            },
            15000);
        if (!settled)
            return Problem("the add-in did not finish the session's requests within 15 s");
        return true;
    }

    // ---- the screenshot and the click ----

    void ShowAndShoot() {
        if (scenario_.show_folder) {
            const std::wstring name = Utf8ToWide(scenario_.FolderName(scenario_.show_folder));
            std::vector<BYTE> data(sizeof(std::uint32_t) + name.size() * sizeof(wchar_t));
            std::memcpy(data.data(), &scenario_.show_folder, sizeof(std::uint32_t));
            std::memcpy(data.data() + sizeof(std::uint32_t), name.data(),
                        name.size() * sizeof(wchar_t));
            COPYDATASTRUCT cds{kProbeShowFolder, static_cast<DWORD>(data.size()), data.data()};
            DWORD_PTR answer = 0;
            ::SendMessageTimeoutW(probe_, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&cds),
                                  SMTO_NORMAL, 5000, &answer);
        }
        // The mouse over Report Spam, as just before a click: the button
        // shows its hot frame in the picture.
        ::SetForegroundWindow(browser_);
        moved_ = MoveMouseOver(report_spam_);
        ::RedrawWindow(browser_, nullptr, nullptr,
                       RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        ::Sleep(400);
        shot_ = Shoot(browser_, L"screenshot", "the client");
    }

    // "WxH" of the picture saved as <out>\<name>.bmp; empty when none.
    std::string Shoot(HWND window, const wchar_t* name, const std::string& what) {
        Picture picture;
        if (!CaptureWindow(window, picture) || !SaveBmp(picture, out_ + L"\\" + name + L".bmp")) {
            Problem("no screenshot of " + what);
            return std::string();
        }
        return std::to_string(picture.width) + "x" + std::to_string(picture.height);
    }

    // The mouse to the middle of `window` and a click there.
    bool ClickOn(HWND window) {
        if (window && MoveMouseOver(window)) {
            ::Sleep(100);  // the control sees the mouse arrive, as with a hand on it
            if (ClickMouse())
                return true;
        }
        return Problem("the mouse could not be moved or pressed");
    }

    void PressReportSpam() {
        clicked_ = moved_ && ClickMouse();
        if (!clicked_) {
            Problem("the mouse could not be moved or pressed");
            return;
        }
        WaitUntil([&] { return CountPosted(ReadText(scanner_log_), kReportSpamMessage) > 0; },
                  5000);
    }

    // ---- the filtering sheet: a sender blocked as a user blocks one ----

    void EditFilteringSettings() {
        const LARGE_INTEGER started = Now();
        if (!OpenSheetFromMenu() || !AddBlockedSender()) {
            DismissLeftovers();
            return;
        }
        sheet_shot_ = Shoot(sheet_, L"sheet", "the filtering sheet");
        HWND ok = ::GetDlgItem(sheet_, IDOK);
        if (!ClickOn(ok) ||
            !WaitUntil([&] { return !::IsWindow(sheet_) || !client_.Running(); }, 10000) ||
            ::IsWindow(sheet_)) {
            Problem("the filtering sheet did not close within 10 s of its OK");
            DismissLeftovers();
            return;
        }
        sheet_steps_.push_back("OK in the sheet");
        sheet_confirmed_ = true;
        sheet_time_ = Seconds(started, Now());
        // The pages save on OK and tell the scanning process; the summary
        // reads what it recorded.
        WaitUntil([&] { return CountPosted(ReadText(scanner_log_), kSenderListsSaved) > 0; }, 5000);
    }

    // The logo menu's drop-down button, then the menu's first entry
    // (Filtering Settings... in either of its forms). The menu's item
    // rectangles live in the client's process, so the mouse aims at the
    // middle of the first row, just below the menu's top edge.
    bool OpenSheetFromMenu() {
        HWND button = FindDescendantById(browser_, ID_TB_MENU_BUTTON);
        if (!button)
            return Problem("no logo menu button on the band");
        ::SetForegroundWindow(browser_);
        if (!ClickOn(button))
            return false;
        HWND menu = WaitForWindow(
            [&] { return FindVisibleWindow(client_.id(), kMenuClass, [](HWND) { return true; }); },
            5000);
        if (!menu)
            return Problem("the logo menu did not open within 5 s of the click");
        RECT r{};
        ::GetWindowRect(menu, &r);
        const POINT first{(r.left + r.right) / 2, r.top + 3 + ::GetSystemMetrics(SM_CYMENU) / 2};
        if (!MoveMouseTo(first))
            return Problem("the mouse could not be moved or pressed");
        ::Sleep(150);  // the row under the mouse lights up
        if (!ClickMouse())
            return Problem("the mouse could not be moved or pressed");
        sheet_ = WaitForWindow(
            [&] {
                return FindVisibleWindow(client_.id(), kDialogClass, [](HWND w) {
                    return ::FindWindowExW(w, nullptr, WC_TABCONTROLW, nullptr) != nullptr;
                });
            },
            10000);
        if (!sheet_)
            return Problem("the filtering sheet did not open within 10 s of the menu click");
        sheet_steps_.push_back("opened from the logo menu");
        return true;
    }

    // The page with Add but without Import is the blocked senders'. Tab
    // rectangles cannot be asked for from another process (the message
    // carries a pointer), so each tab is selected as its click would.
    bool AddBlockedSender() {
        HWND tabs = ::FindWindowExW(sheet_, nullptr, WC_TABCONTROLW, nullptr);
        const int count = static_cast<int>(Ask(tabs, TCM_GETITEMCOUNT));
        HWND page = nullptr;
        for (int i = 0; i < count && !page; ++i) {
            Ask(sheet_, PSM_SETCURSEL, static_cast<WPARAM>(i));
            HWND shown = reinterpret_cast<HWND>(Ask(sheet_, PSM_GETCURRENTPAGEHWND));
            if (shown && ::GetDlgItem(shown, IDC_SENDER_ADD) &&
                !::GetDlgItem(shown, IDC_SENDER_IMPORT)) {
                page = shown;
                sheet_steps_.push_back("blocked-senders tab (" + std::to_string(i + 1) + " of " +
                                       std::to_string(count) + ")");
            }
        }
        if (!page)
            return Problem("no blocked-senders page among the sheet's " + std::to_string(count) +
                           " tabs");
        HWND list = ::GetDlgItem(page, IDC_SENDER_LIST);
        const LRESULT rows = Ask(list, LVM_GETITEMCOUNT);
        if (!ClickOn(::GetDlgItem(page, IDC_SENDER_ADD)))
            return false;
        HWND dialog = WaitForWindow(
            [&] {
                return FindVisibleWindow(client_.id(), kDialogClass, [&](HWND w) {
                    return ::GetWindow(w, GW_OWNER) == sheet_ &&
                           ::GetDlgItem(w, IDC_EDIT_ADDRESS) != nullptr;
                });
            },
            5000);
        if (!dialog)
            return Problem("the sender dialog did not open within 5 s of Add");
        sheet_steps_.push_back("Add");
        // The dialog puts the keyboard in its address field.
        HWND address = ::GetDlgItem(dialog, IDC_EDIT_ADDRESS);
        ::SetForegroundWindow(dialog);
        if (!TypeText(kBlockedSender) ||
            !WaitUntil([&] { return TextOf(address) == kBlockedSender; }, 3000)) {
            return Problem("the sender's address did not arrive in the dialog (it reads '" +
                           Utf8(TextOf(address)) + "')");
        }
        blocked_sender_ = Utf8(kBlockedSender);
        sheet_steps_.push_back("typed " + blocked_sender_);
        if (!ClickOn(::GetDlgItem(dialog, IDOK)))
            return false;
        if (!WaitUntil([&] { return !::IsWindow(dialog) && Ask(list, LVM_GETITEMCOUNT) > rows; },
                       5000)) {
            return Problem(::IsWindow(dialog)
                               ? "the sender dialog did not close within 5 s of its OK"
                               : "the blocked-senders list did not grow");
        }
        sheet_steps_.push_back("OK in the sender dialog");
        ::RedrawWindow(sheet_, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        ::Sleep(300);
        return true;
    }

    // After a failed step: whatever the run left open (a menu, a message
    // box, the sender dialog, the sheet) is cancelled, so the statistics and
    // the close still run.
    void DismissLeftovers() {
        for (int round = 0; round < 4; ++round) {
            if (FindVisibleWindow(client_.id(), kMenuClass, [](HWND) { return true; }))
                PressKey(VK_ESCAPE);
            HWND open = FindVisibleWindow(client_.id(), kDialogClass, [](HWND) { return true; });
            if (!open)
                return;
            ::PostMessageW(open, WM_COMMAND, IDCANCEL, 0);
            WaitUntil([&] { return !::IsWindow(open); }, 2000);
        }
    }

    // ---- the statistics of the session ----

    // Menu command 32773 as the logo menu sends it; the dialog asks the
    // scanning process for its counters, which now hold the session.
    void ShowStatistics() {
        HWND band = report_spam_ ? ::GetParent(report_spam_) : nullptr;
        if (!band || !::PostMessageW(band, WM_COMMAND, MAKEWPARAM(ID_MENU_STATISTICS, 0), 0)) {
            Problem("no band to send the statistics command to");
            return;
        }
        HWND dialog = WaitForWindow(
            [&] {
                return FindVisibleWindow(client_.id(), kDialogClass, [](HWND w) {
                    return ::GetDlgItem(w, IDC_STAT_CHART) != nullptr;
                });
            },
            10000);
        if (!dialog) {
            Problem("the statistics dialog did not open within 10 s");
            return;
        }
        ::RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        ::Sleep(300);
        for (int id : {IDC_STAT_PROCESSED, IDC_STAT_DETECTED, IDC_STAT_REPORTED_SPAM,
                       IDC_STAT_REPORTED_FP, IDC_STAT_DETECT_RATE, IDC_STAT_FP_RATE}) {
            wchar_t text[64] = {};
            ::GetDlgItemTextW(dialog, id, text, 64);
            statistics_.push_back(Utf8(text));
        }
        statistics_shot_ = Shoot(dialog, L"statistics", "the statistics dialog");
        ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        if (!WaitUntil([&] { return !::IsWindow(dialog); }, 5000))
            Problem("the statistics dialog did not close");
    }

    // ---- the end ----

    void Close() {
        if (probe_ && client_.Running()) {
            DWORD_PTR answer = 0;
            ::SendMessageTimeoutW(probe_, kProbeSaveJournal, 0, 0, SMTO_NORMAL, 5000, &answer);
        }
        DWORD code = 0;
        if (browser_ && client_.Running()) {
            const LARGE_INTEGER asked = Now();
            ::PostMessageW(browser_, WM_CLOSE, 0, 0);
            if (client_.Wait(15000, code))
                close_time_ = Seconds(asked, Now());
            else
                Problem("the client did not end within 15 s of WM_CLOSE");
        }
        if (client_.handle() && !client_.Wait(0, code)) {
            client_.Kill();
        } else if (client_.handle() && code != 0) {
            Problem("the client ended with exit code " + std::to_string(code));
        }
        if (HWND scanner = FindProcessWindow(scanner_.id(), nullptr, kScannerTitle))
            ::PostMessageW(scanner, WM_CLOSE, 0, 0);
        if (scanner_.handle() && !scanner_.Wait(5000, code))
            Problem("the scanning process stand-in did not end");
    }

    void CollectLogs() {
        std::error_code ec;
        for (const fs::directory_entry& e : fs::directory_iterator(user_folder_ + L"\\log", ec)) {
            if (fs::copy_file(e.path(), fs::path(out_) / e.path().filename(),
                              fs::copy_options::overwrite_existing, ec)) {
                logs_.push_back(e.path().filename().wstring());
            }
        }
        fs::copy_file(user_folder_ + L"\\VELK_OE.ini", out_ + L"\\VELK_OE.user.ini",
                      fs::copy_options::overwrite_existing, ec);
        fs::copy_file(BlockedListPath(user_folder_), BlockedListPath(out_),
                      fs::copy_options::overwrite_existing, ec);
    }

    static std::wstring BlockedListPath(const std::wstring& folder) {
        return senders::SenderListPathW(folder + L"\\", senders::SenderListKind::kBlocked);
    }

    // ---- the summary: from the files only ----

    bool Report() {
        RunRecords run;
        run.scenario = &scenario_;
        run.identity = Utf8(config_.identity);
        wchar_t language[16] = {}, country[16] = {}, id[8] = {};
        ::GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SISO639LANGNAME, language, 16);
        ::GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SISO3166CTRYNAME, country, 16);
        std::swprintf(id, 8, L"%04X", ::GetSystemDefaultLangID());
        run.locale = Utf8(std::wstring(language) + L"-" + country + L" (0x" + id + L")");
        run.client_events = ReadText(events_);
        run.scanner_report = ReadText(scanner_report_);
        run.scanner_log = ReadText(scanner_log_);
        run.journal = ReadText(journal_);
        run.mailbox_read = LoadMailbox(before_, run.before, run.mailbox_error) &&
                           LoadMailbox(mailbox_, run.after, run.mailbox_error);
        for (const std::wstring& name : logs_)
            run.addin_logs.emplace_back(Utf8(name), ReadText(out_ + L"\\" + name));
        run.band_seen = band_seen_;
        run.band_seconds = band_time_;
        run.clicked = clicked_;
        run.close_seconds = close_time_;
        run.screenshot = shot_;
        run.statistics = statistics_;
        run.statistics_screenshot = statistics_shot_;
        run.sheet_steps = sheet_steps_;
        run.sheet_confirmed = sheet_confirmed_;
        run.sheet_seconds = sheet_time_;
        run.sheet_screenshot = sheet_shot_;
        run.blocked_sender = blocked_sender_;
        // The copy the run left, read by the lists' own code.
        senders::SenderList blocked(senders::SenderListKind::kBlocked);
        run.blocked_list_read = fs::exists(BlockedListPath(out_)) &&
                                senders::LoadSenders(blocked, BlockedListPath(out_));
        for (const senders::SenderEntryW& e : senders::SenderEntries(blocked))
            run.blocked_list.push_back(Utf8(e.address));
        run.start = start_time_;
        run.end = end_time_;
        run.problems = problems_;
        const Summary summary = Summarize(run);
        const std::string text = summary.Text();
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
        WriteText(out_ + L"\\summary.txt", text);
        return summary.failures.empty();
    }

    static std::wstring Utf8ToWide(const std::string& text) {
        if (text.empty())
            return std::wstring();
        int n = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                      nullptr, 0);
        std::wstring out(static_cast<std::size_t>(n), L'\0');
        ::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(),
                              n);
        return out;
    }

    const DemoConfig& config_;
    std::wstring out_, install_, mailbox_, before_, journal_, events_, scanner_report_,
        scanner_log_, session_, client_exe_, user_folder_;
    Scenario scenario_;
    Mailbox staged_;
    ChildProcess client_, scanner_;
    HWND browser_ = nullptr, probe_ = nullptr, report_spam_ = nullptr, sheet_ = nullptr;
    LARGE_INTEGER client_start_{};
    bool band_seen_ = false, moved_ = false, clicked_ = false, sheet_confirmed_ = false;
    double band_time_ = 0, close_time_ = 0, sheet_time_ = 0;
    std::uint64_t start_time_ = 0, end_time_ = 0;
    std::string shot_, statistics_shot_, sheet_shot_, blocked_sender_;
    std::vector<std::string> sheet_steps_;
    std::vector<std::string> statistics_;
    std::vector<std::wstring> logs_;
    std::vector<std::string> problems_;
};

}  // namespace

int RunDemo(const DemoConfig& config) {
    return Run(config).Go();
}

}  // namespace velk::demo
