// Where the parts of the bitmap slider go: the track, the stops, the thumb,
// each stop's tooltip zone, and which stop a point or a key leads to. Free of
// any window so the arithmetic is tested natively; bitmap_slider.cpp draws
// and hit-tests with it.
//
// A slider has a fixed number of stops (three for every level slider of the
// settings windows), laid out along its long axis: top to bottom when it is
// taller than wide, left to right otherwise, stop 0 first, as a trackbar.
#pragma once

namespace velk::controls {

struct SliderRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool Contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
};

// How the trackbar keys move the thumb (TB_LINEUP ... TB_BOTTOM).
enum class SliderStep { kLineUp, kLineDown, kPageUp, kPageDown, kTop, kBottom };

class SliderGeometry {
public:
    // A control of `width` x `height` pixels with `stops` stops (at least
    // 2) and a thumb of `thumb_width` x `thumb_height` pixels as drawn (a
    // bitmap is never turned). `label_width` pixels beside the track (right
    // of a vertical one, below a horizontal one) are kept for the stop
    // names; 0 puts the track in the middle of the control.
    SliderGeometry(int width, int height, int stops, int thumb_width, int thumb_height,
                   int label_width = 0);

    bool vertical() const { return vertical_; }
    int stops() const { return stops_; }

    // The centre of stop `stop` along the long axis (clamped to the stops).
    int StopCentre(int stop) const;
    // The centre of the track across the long axis.
    int TrackCentre() const { return track_centre_; }

    // The groove the thumb runs in, and the thumb standing on `stop`.
    SliderRect Track() const;
    SliderRect Thumb(int stop) const;
    // The part of the control that belongs to `stop`: halfway to each
    // neighbour, the whole breadth. The zones tile the control exactly.
    SliderRect Zone(int stop) const;
    // Where the name of `stop` is written, beside the track and centred on
    // the stop (it may reach past the ends of the control, where drawing
    // is clipped); empty without a label width.
    SliderRect Label(int stop) const;
    // A tick mark beside the track at `stop`.
    SliderRect Tick(int stop) const;

    // The stop nearest to the point (x, y) of the client area; points
    // outside the control clamp to the first or last stop.
    int StopAt(int x, int y) const;

    // The stop a key leads to from `stop`. Every key moves one stop at most
    // (a page of a three-stop slider is one stop), and never past the ends.
    int Step(int stop, SliderStep step) const;

    int Clamp(int stop) const;

private:
    int Along(int x, int y) const { return vertical_ ? y : x; }
    SliderRect Oriented(int along_from, int along_to, int across_from, int across_to) const;

    int width_;
    int height_;
    bool vertical_;
    int stops_;
    int thumb_along_;   // thumb size along the long axis
    int thumb_across_;  // and across it
    int label_width_;
    int first_centre_;
    int last_centre_;
    int track_centre_;
};

}  // namespace velk::controls
