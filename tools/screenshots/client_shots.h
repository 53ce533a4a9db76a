// The band as the user meets it: the mail-client stand-in started with the
// staged add-in, once as Outlook Express (Wine tells the client it runs on
// XP x64) and once as Windows Mail, with the logo menu popped up.
#pragma once

#include <string>

#include "tools/screenshots/shot_steps.h"

namespace velk::screens {

struct ClientSetup {
    std::wstring client_exe;  // the mail-client stand-in
    std::wstring dist;        // the staged installation
    std::wstring scratch;     // a folder of this run for the client's copy
};

void ShootClientWindows(const ClientSetup& setup, Album& album);

}  // namespace velk::screens
