#include "controls/bitmap_slider_geometry.h"

#include <algorithm>

namespace velk::controls {
namespace {

constexpr int kGroove = 6;        // thickness of the track's groove
constexpr int kTickLength = 4;    // tick marks beside the groove
constexpr int kLabelGap = 6;      // between the thumb and the stop names
constexpr int kMinLabelHalf = 8;  // half a line of text at least
// Far beyond any screen; keeps the arithmetic below clear of overflow.
constexpr int kMaxExtent = 1 << 20;

}  // namespace

SliderGeometry::SliderGeometry(int width, int height, int stops, int thumb_width, int thumb_height,
                               int label_width)
    : width_(std::clamp(width, 0, kMaxExtent)),
      height_(std::clamp(height, 0, kMaxExtent)),
      vertical_(height > width),
      stops_(std::clamp(stops, 2, 1000)),
      thumb_along_(std::clamp(vertical_ ? thumb_height : thumb_width, 1, kMaxExtent)),
      thumb_across_(std::clamp(vertical_ ? thumb_width : thumb_height, 1, kMaxExtent)),
      label_width_(std::clamp(label_width, 0, kMaxExtent)) {
    const int length = vertical_ ? height_ : width_;
    const int breadth = vertical_ ? width_ : height_;
    // One pixel of room at each end for the focus rectangle around the thumb.
    first_centre_ = thumb_along_ / 2 + 1;
    last_centre_ = length - 1 - (thumb_along_ - thumb_along_ / 2);
    if (last_centre_ <= first_centre_)
        first_centre_ = last_centre_ = length / 2;  // too small to slide: all stops in one place
    if (label_width_ > 0)
        track_centre_ = std::min(thumb_across_ / 2 + 1, breadth / 2);
    else
        track_centre_ = breadth / 2;
}

int SliderGeometry::Clamp(int stop) const {
    return std::clamp(stop, 0, stops_ - 1);
}

int SliderGeometry::StopCentre(int stop) const {
    const int span = last_centre_ - first_centre_;
    const int intervals = stops_ - 1;
    // Rounded to the nearest pixel, so the stops are spread evenly.
    return first_centre_ + (2 * span * Clamp(stop) + intervals) / (2 * intervals);
}

SliderRect SliderGeometry::Oriented(int along_from, int along_to, int across_from,
                                    int across_to) const {
    if (vertical_)
        return SliderRect{across_from, along_from, across_to, along_to};
    return SliderRect{along_from, across_from, along_to, across_to};
}

SliderRect SliderGeometry::Track() const {
    const int across = track_centre_ - kGroove / 2;
    return Oriented(first_centre_ - 1, last_centre_ + 2, across, across + kGroove);
}

SliderRect SliderGeometry::Thumb(int stop) const {
    const int along = StopCentre(stop) - thumb_along_ / 2;
    const int across = track_centre_ - thumb_across_ / 2;
    return Oriented(along, along + thumb_along_, across, across + thumb_across_);
}

SliderRect SliderGeometry::Zone(int stop) const {
    const int s = Clamp(stop);
    const int length = vertical_ ? height_ : width_;
    const int breadth = vertical_ ? width_ : height_;
    const int from = s == 0 ? 0 : (StopCentre(s - 1) + StopCentre(s) + 1) / 2;
    const int to = s == stops_ - 1 ? length : (StopCentre(s) + StopCentre(s + 1) + 1) / 2;
    return Oriented(from, to, 0, breadth);
}

SliderRect SliderGeometry::Label(int stop) const {
    if (label_width_ == 0)
        return SliderRect{};
    const int breadth = vertical_ ? width_ : height_;
    const int from =
        std::min(track_centre_ + thumb_across_ - thumb_across_ / 2 + kLabelGap, breadth);
    // Centred on the stop, so the name sits level with the thumb standing
    // there; as tall as the room between two stops.
    const int centre = StopCentre(stop);
    const int half = std::max((StopCentre(1) - StopCentre(0)) / 2, kMinLabelHalf);
    return Oriented(centre - half, centre + half, from, breadth);
}

SliderRect SliderGeometry::Tick(int stop) const {
    const int centre = StopCentre(stop);
    const int across = track_centre_ + thumb_across_ - thumb_across_ / 2 + 1;
    return Oriented(centre, centre + 1, across, across + kTickLength);
}

int SliderGeometry::StopAt(int x, int y) const {
    const int span = last_centre_ - first_centre_;
    if (span <= 0)
        return 0;
    const int along = Along(x, y) - first_centre_;
    const int intervals = stops_ - 1;
    if (along <= 0)
        return 0;
    if (along >= span)
        return intervals;
    return Clamp((2 * along * intervals + span) / (2 * span));
}

int SliderGeometry::Step(int stop, SliderStep step) const {
    switch (step) {
        case SliderStep::kLineUp:
        case SliderStep::kPageUp:
            return Clamp(stop - 1);
        case SliderStep::kLineDown:
        case SliderStep::kPageDown:
            return Clamp(stop + 1);
        case SliderStep::kTop:
            return 0;
        case SliderStep::kBottom:
            return stops_ - 1;
    }
    return Clamp(stop);
}

}  // namespace velk::controls
