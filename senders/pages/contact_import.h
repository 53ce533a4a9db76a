// Importing the user's contacts into the approved senders: the import tool
// "VELK_OEImp.exe" from the add-in's program folder edits both list files
// itself, on a thread of its own so the page stays usable while it runs.
#pragma once

#include <windows.h>

#include <string>

namespace velk::senders {

inline constexpr wchar_t kImportToolName[] = L"VELK_OEImp.exe";
// Tells the import tool who calls it.
inline constexpr wchar_t kImportIdentifier[] = L"{0F4A9D63-2E7B-4C58-A1D9-6B3E85C27F14}";

// The tool's command line: ` "<folder>WhiteList.dat" "<folder>BlackList.dat" <identifier>`.
// The folder ends with its backslash.
std::wstring ImportCommandLine(const std::wstring& list_folder);

// Starts the import thread: it runs the tool from `program_folder` (ending
// with its backslash) with the command line above, waits for it to end
// however long it takes, then posts `done_message` to `notify` with wParam 1
// when the tool ran and 0 when it could not be started. The thread holds
// nothing of the caller: a page closed meanwhile only misses the message.
// False (logged, nothing posted) when the thread cannot be started.
bool StartContactImport(const std::wstring& program_folder, const std::wstring& list_folder,
                        HWND notify, UINT done_message);

}  // namespace velk::senders
