#include "settings_ui/dialogs_test_support.h"

#include <fstream>
#include <iterator>

#include "host/window_identifiers.h"
#include "log/diag_log.h"

namespace velk::settings_ui::testing {

HMODULE DialogsTest::language_module_ = nullptr;
QzResourceStringLoader* DialogsTest::strings_ = nullptr;

namespace {

MessageBoxAnswerer* g_answerer = nullptr;

void Pump() {
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

BOOL CALLBACK FindBox(HWND window, LPARAM found) {
    wchar_t cls[16] = L"";
    ::GetClassNameW(window, cls, 16);
    // A message box: a dialog whose text is the static 0xFFFF.
    if (lstrcmpW(cls, L"#32770") == 0 && ::IsWindowVisible(window) && ::GetDlgItem(window, 0xFFFF)) {
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    return TRUE;
}

}  // namespace

std::string ReadAll(const std::wstring& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::size_t CountOf(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size()))
        ++n;
    return n;
}

bool WaitFor(const std::function<bool()>& done, DWORD ms) {
    const DWORD start = ::GetTickCount();
    while (!done()) {
        if (::GetTickCount() - start > ms)
            return false;
        Pump();
        ::Sleep(10);
    }
    return true;
}

std::wstring TextOf(HWND window) {
    wchar_t buffer[2048] = L"";
    ::GetWindowTextW(window, buffer, 2048);
    return buffer;
}

void Click(HWND dialog, int id) {
    HWND control = ::GetDlgItem(dialog, id);
    ASSERT_NE(nullptr, control) << id;
    ::SendMessageW(control, BM_CLICK, 0, 0);
}

MessageBoxAnswerer::MessageBoxAnswerer() {
    g_answerer = this;
    timer_ = ::SetTimer(nullptr, 0, 20, &Tick);
}

MessageBoxAnswerer::~MessageBoxAnswerer() {
    ::KillTimer(nullptr, timer_);
    g_answerer = nullptr;
}

void CALLBACK MessageBoxAnswerer::Tick(HWND, UINT, UINT_PTR, DWORD) {
    if (g_answerer == nullptr)
        return;
    HWND box = nullptr;
    ::EnumThreadWindows(::GetCurrentThreadId(), &FindBox, reinterpret_cast<LPARAM>(&box));
    if (box == nullptr)
        return;
    g_answerer->boxes.push_back({TextOf(box), TextOf(::GetDlgItem(box, 0xFFFF))});
    ::PostMessageW(box, WM_COMMAND, IDOK, 0);
}

void DialogsTest::SetUpTestSuite() {
    language_module_ = ::LoadLibraryExW(VELK_TEST_LANGUAGE_MODULE, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(nullptr, language_module_);
    QzLanguageEnvironment environment;
    environment.resourceRoot = VELK_TEST_RESOURCE_ROOT;
    environment.systemDefaultLcid = [] { return static_cast<LCID>(0x0409); };
    strings_ = new QzResourceStringLoader(environment);
    ASSERT_TRUE(strings_->Initialize(L"VELK_OE_AGENT"));
}

void DialogsTest::TearDownTestSuite() {
    delete strings_;
    strings_ = nullptr;
    ::FreeLibrary(language_module_);
    language_module_ = nullptr;
}

void DialogsTest::SetUp() {
    temp_.MakeFolder(L"bin");
    temp_.MakeFolder(L"data\\Users\\{tester}");
    ui_.where = settings::SettingsLocations(temp_.path() + L"bin\\", temp_.path() + L"data\\");
    ui_.where.SetUser(L"{tester}");
    ui_.strings = strings_;
    ui_.resources = language_module_;
    heard_ = temp_.path() + L"heard.txt";
    log_base_ = temp_.path() + L"data\\agent.log";
    log::Open(log_base_);
    SECURITY_ATTRIBUTES sa{sizeof(sa), nullptr, TRUE};
    nul_.reset(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                             &sa, OPEN_EXISTING, 0, nullptr));
}

void DialogsTest::TearDown() {
    StopScanner();
    client_.reset();
    log::Close();
}

void DialogsTest::SetUser(const wchar_t* section, const wchar_t* key, const std::wstring& value) {
    ::WritePrivateProfileStringW(section, key, value.c_str(), UserIni().c_str());
}

void DialogsTest::SetInstall(const wchar_t* section, const wchar_t* key, const std::wstring& value) {
    ::WritePrivateProfileStringW(section, key, value.c_str(), InstallIni().c_str());
}

std::wstring DialogsTest::User(const wchar_t* section, const wchar_t* key) const {
    wchar_t buffer[2048] = L"";
    ::GetPrivateProfileStringW(section, key, L"<none>", buffer, 2048, UserIni().c_str());
    return buffer;
}

std::string DialogsTest::UserFile() const {
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, UserIni().c_str());
    return ReadAll(UserIni());
}

void DialogsTest::StartScanner() {
    std::wstring cmd = std::wstring(L"\"") + VELK_SCANNER_STUB_EXE + L"\" listen --log \"" + heard_ + L"\"";
    STARTUPINFOW si{};
    si.cb = sizeof(si);
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul_.get();
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(::CreateProcessW(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi));
    ::CloseHandle(pi.hThread);
    scanner_.reset(pi.hProcess);
    ASSERT_TRUE(WaitFor([] { return ::FindWindowW(nullptr, host::kCompanionWindowTitle) != nullptr; }));
}

void DialogsTest::StopScanner() {
    if (!scanner_)
        return;
    // Posted after everything else: the stand-in handles its queue in order.
    if (HWND scanner = ::FindWindowW(nullptr, host::kCompanionWindowTitle))
        ::PostMessageW(scanner, WM_CLOSE, 0, 0);
    if (::WaitForSingleObject(scanner_.get(), 10000) != WAIT_OBJECT_0)
        ::TerminateProcess(scanner_.get(), 99);
    scanner_.reset();
}

std::string DialogsTest::LogText() const {
    return ReadAll(log::CurrentPath());
}

HWND DialogsTest::ClientWindow() {
    if (!client_) {
        client_.reset(::CreateWindowExW(0, L"STATIC", L"client", WS_POPUP | WS_VISIBLE, 100, 80, 700, 500,
                                        nullptr, nullptr, nullptr, nullptr));
    }
    return client_.get();
}

}  // namespace velk::settings_ui::testing
