#include "demo/driver/child_process.h"

#include <vector>

namespace velk::demo {

std::wstring QuoteArgument(const std::wstring& argument) {
    if (!argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos)
        return argument;
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (wchar_t c : argument) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        // Backslashes before a quote are doubled, and the quote escaped.
        quoted.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
        backslashes = 0;
        quoted += c;
    }
    quoted.append(backslashes * 2, L'\\');  // before the closing quote
    return quoted + L"\"";
}

bool ChildProcess::Start(const std::wstring& command_line, DWORD& error) {
    Kill();
    SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
    win32::unique_file nul_in(::CreateFileW(L"NUL", GENERIC_READ,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                            OPEN_EXISTING, 0, nullptr));
    win32::unique_file nul_out(::CreateFileW(L"NUL", GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                             OPEN_EXISTING, 0, nullptr));
    if (!nul_in || !nul_out) {
        error = ::GetLastError();
        return false;
    }
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = nul_in.get();
    si.hStdOutput = nul_out.get();
    si.hStdError = nul_out.get();
    PROCESS_INFORMATION pi{};
    std::vector<wchar_t> writable(command_line.begin(), command_line.end());
    writable.push_back(L'\0');
    if (!::CreateProcessW(nullptr, writable.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                          nullptr, nullptr, &si, &pi)) {
        error = ::GetLastError();
        return false;
    }
    ::CloseHandle(pi.hThread);
    process_.reset(pi.hProcess);
    id_ = pi.dwProcessId;
    error = 0;
    return true;
}

bool ChildProcess::Running() const {
    return process_ && ::WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT;
}

bool ChildProcess::Wait(DWORD ms, DWORD& exit_code) {
    if (!process_ || ::WaitForSingleObject(process_.get(), ms) != WAIT_OBJECT_0)
        return false;
    return ::GetExitCodeProcess(process_.get(), &exit_code) != FALSE;
}

void ChildProcess::Kill() {
    if (Running()) {
        ::TerminateProcess(process_.get(), 99);
        ::WaitForSingleObject(process_.get(), 5000);
    }
}

}  // namespace velk::demo
