// Sizing and look of the band's owner-drawn buttons: the arithmetic and the
// state table, free of any window so they are tested natively.
#pragma once

#include <cstdint>

namespace velk::toolbar {

constexpr int kButtonMargin = 4;
// The cell an icon occupies: a 16-pixel icon with a margin on both sides.
constexpr int kIconCellWidth = 2 * kButtonMargin + 16;
constexpr int kMinButtonHeight = 24;
// What a drop-down adds for its arrow.
constexpr int kDropDownArrowWidth = 9;

// ToolBarButtonRecord::nKind.
enum ButtonKind : std::int32_t { kKindPushButton = 1, kKindSeparator = 2 };
// ToolBarButtonRecord::nVariant.
enum ButtonVariant : std::int32_t {
    kVariantPlain = 0,      // gets a tooltip
    kVariantSeparator = 1,  // no tooltip, created disabled
    kVariantDropDown = 2,   // caption plus arrow; stays pressed while its menu is open
};
enum ButtonState : std::int32_t { kStateEnabled = 1, kStateDisabled = 2 };

struct Extent {
    int cx = 0;
    int cy = 0;
};

// What a button shows, measured: the normal bitmap's size when it has one,
// and the caption's text extent ({0, 0} for an empty caption).
struct ButtonContent {
    std::int32_t variant = kVariantPlain;
    bool has_bitmap = false;
    Extent bitmap;
    Extent text;
};

Extent MeasureButton(const ButtonContent& content, int min_height = kMinButtonHeight);

enum class FrameLook {
    kNone,    // separators draw no frame
    kFlat,    // a frame in the face colour: invisible
    kSunken,  // shadow top-left, highlight bottom-right
    kRaised,  // highlight top-left, shadow bottom-right
};
FrameLook ChooseFrame(std::int32_t variant, bool disabled, bool hot, bool pressed);

// 0x00BBGGRR, the layout of COLORREF.
using Colour = std::uint32_t;
constexpr Colour Rgb(int r, int g, int b) {
    return static_cast<Colour>(r) | (static_cast<Colour>(g) << 8) | (static_cast<Colour>(b) << 16);
}
constexpr Colour kWMailFace = Rgb(24, 61, 118);
constexpr Colour kWMailDisabledText = Rgb(150, 150, 150);
constexpr Colour kWhite = Rgb(255, 255, 255);
// Bitmap pixels of this colour are not drawn (and are mapped so on loading).
constexpr Colour kTransparentKey = Rgb(255, 0, 255);

struct Palette {
    Colour face = 0;
    Colour shadow = 0;
    Colour highlight = 0;
    Colour gray_text = 0;
    Colour text = kWhite;
};

// Windows Mail's band is dark blue whatever the system colours are.
Palette ClientPalette(const Palette& system, bool wmail);

Colour CaptionColour(const Palette& palette, bool wmail, std::int32_t variant, bool disabled);

// Where things go inside a button of `size`.
int CaptionLeft(const ButtonContent& content);
int ArrowLeft(const Extent& size, int arrow_width);

}  // namespace velk::toolbar
