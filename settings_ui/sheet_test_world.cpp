#include "settings_ui/sheet_test_world.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "common_src/win32/companion.h"

namespace velk::settings_ui::test {
namespace {

constexpr DWORD kStepTimeoutMs = 10000;
constexpr UINT kFence = WM_USER + 900;
constexpr wchar_t kEngineKey[] = L"SOFTWARE\\Nuvexa\\Tessaveli";

QzLanguageEnvironment StagedLanguages() {
    QzLanguageEnvironment environment;
    environment.resourceRoot = std::wstring(VELK_TEST_DIST) + L"\\Resource\\";
    return environment;
}

std::string ReadFile(const std::wstring& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

struct Answering {
    HWND owner;
    int answer;
    std::wstring said;
} g_answering;

BOOL CALLBACK AnswerBox(HWND box, LPARAM) {
    if (::GetWindow(box, GW_OWNER) != g_answering.owner || !::IsWindowVisible(box))
        return TRUE;
    g_answering.said = TextOf(box) + L"|" + TextOf(::GetDlgItem(box, 0xFFFF));
    ::PostMessageW(box, WM_COMMAND, g_answering.answer, 0);
    return FALSE;
}

}  // namespace

Script::Script() : ModalScript(kStepTimeoutMs) {}

bool Script::Run(const std::function<void()>& modal) {
    const bool finished = ModalScript::Run(modal);
    if (timed_out())
        ADD_FAILURE() << "step " << stopped_at() << " did not finish";
    return finished;
}

HWND FindDialog(const std::wstring& caption) {
    return ::FindWindowW(L"#32770", caption.c_str());
}

HWND FindDescendant(HWND root, int id) {
    for (HWND child = ::GetWindow(root, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        if (::GetDlgCtrlID(child) == id)
            return child;
        if (HWND found = FindDescendant(child, id))
            return found;
    }
    return nullptr;
}

std::wstring TextOf(HWND window) {
    wchar_t text[2048] = L"";
    ::GetWindowTextW(window, text, 2048);
    return text;
}

std::wstring ClickAnswering(HWND dialog, int id, int answer) {
    g_answering = {dialog, answer, std::wstring()};
    const UINT_PTR timer = ::SetTimer(nullptr, 0, 20, [](HWND, UINT, UINT_PTR, DWORD) {
        if (g_answering.said.empty())
            ::EnumThreadWindows(::GetCurrentThreadId(), &AnswerBox, 0);
    });
    ::SendMessageW(::GetDlgItem(dialog, id), BM_CLICK, 0, 0);
    ::KillTimer(nullptr, timer);
    return g_answering.said;
}

void SetEngineValue(const wchar_t* name, const std::wstring& value) {
    win32::unique_hkey key;
    ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kEngineKey, 0, nullptr, 0,
                      KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, key.put(), nullptr);
    ::RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                     static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

void RemoveEngineKey() {
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kEngineKey, KEY_WOW64_64KEY, 0);
}

SheetWorld::SheetWorld(const std::string& counters) : strings_(StagedLanguages()) {
    wchar_t temp[MAX_PATH];
    ::GetTempPathW(MAX_PATH, temp);
    root_ = std::wstring(temp) + L"velk_sheet_" + std::to_wstring(::GetCurrentProcessId()) + L"\\";
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
    const std::wstring bin = root_ + L"bin\\";
    ::SHCreateDirectoryExW(nullptr, bin.c_str(), nullptr);
    ::CopyFileW((std::wstring(VELK_TEST_DIST) + L"\\bin\\VELK_OE.ini").c_str(),
                (bin + L"VELK_OE.ini").c_str(), FALSE);
    ui_.where = settings::SettingsLocations(bin, root_ + L"data\\");
    ui_.where.SetUser(L"{sheet-test}");
    ::SHCreateDirectoryExW(nullptr, ui_.where.user_dir.c_str(), nullptr);

    EXPECT_TRUE(strings_.Initialize(L"VELK_OE_AGENT"));
    ui_.strings = &strings_;
    module_.reset(::LoadLibraryExW(
        (std::wstring(VELK_TEST_DIST) + L"\\Resource\\en-US\\VELK_OEA.dll.mui").c_str(), nullptr,
        LOAD_LIBRARY_AS_DATAFILE));
    EXPECT_TRUE(module_) << "the staged language module";
    ui_.resources = module_.get();

    heard_ = root_ + L"heard.txt";
    std::wstring cmd = demo::QuoteArgument(VELK_SCANNER_STUB_EXE) + L" listen --log " +
                       demo::QuoteArgument(heard_);
    if (!counters.empty()) {
        WriteUserIni("[Statistics]\r\n" + counters);
        cmd += L" --settings " + demo::QuoteArgument(ui_.where.user_ini);
    }
    DWORD error = 0;
    EXPECT_TRUE(scanner_.Start(cmd, error)) << error;
    const DWORD start = ::GetTickCount();
    while (win32::companion::FindWindow() == nullptr && ::GetTickCount() - start < 10000)
        ::Sleep(20);
    EXPECT_NE(nullptr, win32::companion::FindWindow()) << "the scanning process's stand-in";
}

SheetWorld::~SheetWorld() {
    if (HWND companion = win32::companion::FindWindow())
        ::PostMessageW(companion, WM_CLOSE, 0, 0);
    DWORD code = 0;
    scanner_.Wait(10000, code);  // ended in any case when it goes
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

void SheetWorld::WriteUserIni(const std::string& text) const {
    std::ofstream(ui_.where.user_ini.c_str(), std::ios::binary) << text;
}

std::string SheetWorld::ReadUserIni() const {
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, ui_.where.user_ini.c_str());  // flush
    return ReadFile(ui_.where.user_ini);
}

std::wstring SheetWorld::UserValue(const wchar_t* section, const wchar_t* key) const {
    wchar_t value[1024] = L"";
    ::GetPrivateProfileStringW(section, key, L"<none>", value, 1024, ui_.where.user_ini.c_str());
    return value;
}

std::vector<std::string> SheetWorld::HeardSinceLastAsk() {
    // The stand-in's log is written as messages arrive; a message of our own
    // posted after everything else marks how far this question reaches.
    const unsigned fence = ++fence_;
    ::PostMessageW(win32::companion::FindWindow(), kFence, fence, 0);
    char mark[64];
    snprintf(mark, sizeof mark, "posted WM_USER+900 wParam=0x%X ", fence);
    std::string all;
    const DWORD start = ::GetTickCount();
    while ((all = ReadFile(heard_)).find(mark) == std::string::npos &&
           ::GetTickCount() - start < 10000) {
        ::Sleep(20);
    }
    std::vector<std::string> lines;
    std::istringstream in(all.substr(heard_offset_, all.find(mark) - heard_offset_));
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.find("WM_USER+900 ") == std::string::npos)
            lines.push_back(line);
    }
    heard_offset_ = std::min(all.size(), all.find('\n', all.find(mark)) + 1);
    return lines;
}

}  // namespace velk::settings_ui::test
