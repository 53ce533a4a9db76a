#include "toolbar/button_layout.h"

#include <algorithm>

namespace velk::toolbar {

Extent MeasureButton(const ButtonContent& content, int min_height) {
    Extent size;
    if (content.variant == kVariantSeparator) {
        size = Extent{2 * kButtonMargin, kMinButtonHeight};
    } else if (content.variant == kVariantPlain || content.variant == kVariantDropDown) {
        if (content.has_bitmap) {
            size.cx = content.bitmap.cx + 2 * kButtonMargin;
            size.cy = content.bitmap.cy + 2 * kButtonMargin;
        }
        if (content.text.cx != 0)
            size.cx += content.text.cx + 2 * kButtonMargin;
        size.cy = std::max(content.text.cy + 2 * kButtonMargin, size.cy);
        if (content.variant == kVariantDropDown)
            size.cx += kDropDownArrowWidth;
    }
    size.cy = std::max(size.cy, min_height);
    return size;
}

FrameLook ChooseFrame(std::int32_t variant, bool disabled, bool hot, bool pressed) {
    if (variant == kVariantSeparator)
        return FrameLook::kNone;
    if (disabled || !hot) {
        // An open drop-down menu keeps its button looking pressed.
        return variant == kVariantDropDown && pressed ? FrameLook::kSunken : FrameLook::kFlat;
    }
    return pressed ? FrameLook::kSunken : FrameLook::kRaised;
}

Palette ClientPalette(const Palette& system, bool wmail) {
    Palette palette = system;
    if (wmail)
        palette.face = kWMailFace;
    return palette;
}

Colour CaptionColour(const Palette& palette, bool wmail, std::int32_t variant, bool disabled) {
    if (wmail && variant == kVariantDropDown)
        return kWhite;
    if (disabled)
        return wmail ? kWMailDisabledText : palette.gray_text;
    return wmail ? kWhite : palette.text;
}

int CaptionLeft(const ButtonContent& content) {
    return (content.has_bitmap ? content.bitmap.cx + 2 * kButtonMargin : 0) + kButtonMargin;
}

int ArrowLeft(const Extent& size, int arrow_width) {
    return size.cx - kButtonMargin + 2 - arrow_width;
}

}  // namespace velk::toolbar
