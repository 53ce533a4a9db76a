// Painting the whole gallery once, every control redrawn by its own object.
#include <windows.h>

#include "common_src/bench/bench.h"
#include "tools/control_gallery/control_gallery.h"

int wmain() {
    HMODULE module = ::LoadLibraryExW(VELK_TEST_LANGUAGE_MODULE, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    auto gallery = velk::tools::ShowControlGallery(module);
    if (!gallery)
        return 1;
    HWND window = velk::tools::GalleryWindow(*gallery);
    const auto stats = velk::bench::Measure(50, [&] {
        ::RedrawWindow(window, nullptr, nullptr,
                       RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        ::GdiFlush();
    });
    velk::bench::Report("control_gallery_paint_once", stats);
    gallery.reset();
    return 0;
}
