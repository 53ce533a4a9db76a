// Every owner-drawn control of the settings windows in one window, in each of
// its states: what a designer or reviewer looks at after changing a
// control's drawing, and what the screenshot in docs/controls.png shows.
// Never shipped.
#pragma once

#include <windows.h>

#include <memory>

namespace velk::tools {

class ControlGallery;
struct GalleryDeleter {
    void operator()(ControlGallery* gallery) const;
};
using GalleryPtr = std::unique_ptr<ControlGallery, GalleryDeleter>;

// Creates the gallery as a visible top-level window. `resources` is the
// language module (the slider's thumb bitmap); null draws the slider's
// built-in thumb. The window lives until the returned object goes.
GalleryPtr ShowControlGallery(HINSTANCE resources);

HWND GalleryWindow(const ControlGallery& gallery);

}  // namespace velk::tools
