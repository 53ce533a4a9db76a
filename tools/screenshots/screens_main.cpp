// velk_screens.exe OUT_DIR: every window of the product on the screen, each
// saved as OUT_DIR\<window>.bmp, in the language the system's language
// chooses (scripts/screenshots.sh runs it once per language and DPI).
// Exit status 0 when every window opened and was saved; 1 otherwise, with
// each failure named on stderr; 2 for a bad command line.
#include <windows.h>

#include <cstdio>
#include <string>

#include "tools/screenshots/client_shots.h"
#include "tools/screenshots/sample_world.h"
#include "tools/screenshots/settings_shots.h"
#include "tools/screenshots/shot_steps.h"

int wmain(int argc, wchar_t** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: velk_screens OUT_DIR\n");
        return 2;
    }
    const std::wstring out = argv[1];
    const std::wstring dist = VELK_SCREENS_DIST;
    velk::screens::Album album(out);
    {
        velk::screens::SampleWorld world(dist);
        if (!world.Open())
            return 1;
        HDC screen = ::GetDC(nullptr);
        std::printf("screens: language %ls (system language 0x%04X), %d dpi\n",
                    world.language().c_str(), ::GetSystemDefaultLangID(),
                    ::GetDeviceCaps(screen, LOGPIXELSY));
        ::ReleaseDC(nullptr, screen);
        velk::screens::ShootSettingsWindows(world.ui(), album);
    }
    velk::screens::ShootClientWindows({VELK_SCREENS_CLIENT, dist, out}, album);
    std::printf("screens: %d pictures\n", album.saved());
    return album.ok() ? 0 : 1;
}
