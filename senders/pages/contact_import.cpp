#include "senders/pages/contact_import.h"

#include <process.h>

#include <memory>

#include "log/diag_log.h"
#include "senders/sender_list_wide.h"

namespace velk::senders {

namespace {

struct ImportJob {
    std::wstring tool;
    std::wstring command_line;
    HWND notify = nullptr;
    UINT done_message = 0;
    HMODULE pin = nullptr;  // keeps this code mapped until the thread is gone
};

bool RunTool(ImportJob& job) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    // CreateProcessW may write into the command line.
    std::wstring command_line = job.command_line;
    if (!::CreateProcessW(job.tool.c_str(), &command_line[0], nullptr, nullptr, FALSE, 0, nullptr,
                          nullptr, &startup, &process)) {
        VELK_LOG(L"xxx Can not launch VELK_OEImp");
        return false;
    }
    ::CloseHandle(process.hThread);
    // The user may take as long as the tool lets them.
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::CloseHandle(process.hProcess);
    return true;
}

unsigned __stdcall ImportThread(void* argument) {
    HMODULE pin = nullptr;
    try {
        std::unique_ptr<ImportJob> job(static_cast<ImportJob*>(argument));
        pin = job->pin;
        VELK_LOG(L"@@@ Import contact items thread starts");
        const bool ran = RunTool(*job);
        VELK_LOG(L"@@@ Import contact items thread ends");
        ::PostMessageW(job->notify, job->done_message, ran ? 1 : 0, 0);
    } catch (...) {
        VELK_LOG(L"@@@ Exception Catched in Function: %s", L"ImportThread");
    }
    if (pin != nullptr)
        ::FreeLibraryAndExitThread(pin, 0);
    return 0;
}

}  // namespace

std::wstring ImportCommandLine(const std::wstring& list_folder) {
    return L" \"" + SenderListPathW(list_folder, SenderListKind::kApproved) + L"\" \"" +
           SenderListPathW(list_folder, SenderListKind::kBlocked) + L"\" " + kImportIdentifier;
}

bool StartContactImport(const std::wstring& program_folder, const std::wstring& list_folder,
                        HWND notify, UINT done_message) {
    auto job = std::make_unique<ImportJob>();
    job->tool = program_folder + kImportToolName;
    job->command_line = ImportCommandLine(list_folder);
    job->notify = notify;
    job->done_message = done_message;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(&ImportThread), &job->pin);
    const HMODULE pin = job->pin;
    const uintptr_t thread = ::_beginthreadex(nullptr, 0, &ImportThread, job.get(), 0, nullptr);
    if (thread == 0) {
        VELK_LOG(L"@@@ Error : the import contact items thread cannot be started");
        if (pin != nullptr)
            ::FreeLibrary(pin);
        return false;
    }
    job.release();  // the thread's now
    ::CloseHandle(reinterpret_cast<HANDLE>(thread));
    return true;
}

}  // namespace velk::senders
