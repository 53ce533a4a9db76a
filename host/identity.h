// The mail client's current identity, which names the per-user folder.
#pragma once

#include <windows.h>

#include <string>

namespace velk::host {

// HKEY_CURRENT_USER "Identities\" value "Last User ID", else "Default User
// ID", else "". A value that is not a string, or that could not name a folder
// (a path separator, a reserved character, "." or ".."), is passed over with a
// log line: it becomes a path component of the user folder. `root` is for
// tests.
std::wstring LookupIdentityId(HKEY root = HKEY_CURRENT_USER);

}  // namespace velk::host
