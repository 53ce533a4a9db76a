// control_gallery.exe [language module]: shows the gallery until closed.
#include <windows.h>

#include "tools/control_gallery/control_gallery.h"

int wmain(int argc, wchar_t** argv) {
    HMODULE resources = argc > 1 ? ::LoadLibraryExW(argv[1], nullptr, LOAD_LIBRARY_AS_DATAFILE)
                                 : nullptr;
    auto gallery = velk::tools::ShowControlGallery(resources);
    if (!gallery)
        return 1;
    MSG msg;
    while (::IsWindow(velk::tools::GalleryWindow(*gallery)) && ::GetMessageW(&msg, nullptr, 0, 0) > 0) {
        if (!::IsDialogMessageW(velk::tools::GalleryWindow(*gallery), &msg)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    return 0;
}
