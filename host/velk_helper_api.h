// The entry points of the product's helper library "VelkHlp.dll", resolved by
// name at run time. The library is not ours; these are the shapes the add-in
// calls it with (the stand-in in tools/velkhlp_stub exports the same).
#pragma once

#include <windows.h>

extern "C" {
// Non-zero when the library is ready; pairs with velkHelperExit.
typedef int(__cdecl* VelkHelperInitFn)(void);
typedef void(__cdecl* VelkHelperExitFn)(void);
// Asks the real-time scanner to protect (non-zero) or release a folder.
typedef int(__cdecl* VelkHelperRTscanFolderProtectFn)(const wchar_t* folder, int protect);
// Copies the system proxy as "host:port" into `buffer` (`chars` wide
// characters with the terminator); non-zero on success.
typedef int(__cdecl* VelkHelperGetProxyFn)(wchar_t* buffer, unsigned chars);
}
