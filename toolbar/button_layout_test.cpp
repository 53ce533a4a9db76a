#include "toolbar/button_layout.h"

#include <gtest/gtest.h>

namespace velk::toolbar {
namespace {

ButtonContent Content(std::int32_t variant, Extent bitmap, Extent text) {
    ButtonContent c;
    c.variant = variant;
    c.has_bitmap = bitmap.cx != 0 || bitmap.cy != 0;
    c.bitmap = bitmap;
    c.text = text;
    return c;
}

void ExpectExtent(int cx, int cy, Extent e) {
    EXPECT_EQ(cx, e.cx);
    EXPECT_EQ(cy, e.cy);
}

TEST(MeasureButton, MarginsArrowAndMinimumHeight) {
    // Icon and caption each with their margins; the taller decides the height.
    ExpectExtent(24 + 60 + 8, 24, MeasureButton(Content(kVariantPlain, {16, 16}, {60, 13})));
    ExpectExtent(24 + 60 + 8, 30, MeasureButton(Content(kVariantPlain, {16, 16}, {60, 22})));
    ExpectExtent(40, 68, MeasureButton(Content(kVariantPlain, {32, 60}, {})));
    // A caption measured with zero width adds nothing but still counts its height.
    ExpectExtent(9, 40, MeasureButton(Content(kVariantDropDown, {}, {0, 32})));
    ExpectExtent(8, 30, MeasureButton(Content(kVariantSeparator, {16, 16}, {50, 13}), 30));
    ExpectExtent(0, 24, MeasureButton(Content(7, {16, 16}, {40, 13})));
}

TEST(ChooseFrame, HotAndPressedStatesOfEveryVariant) {
    using F = FrameLook;
    EXPECT_EQ(F::kNone, ChooseFrame(kVariantSeparator, false, true, true));
    EXPECT_EQ(F::kFlat, ChooseFrame(kVariantPlain, false, false, true));
    EXPECT_EQ(F::kRaised, ChooseFrame(kVariantPlain, false, true, false));
    EXPECT_EQ(F::kSunken, ChooseFrame(kVariantPlain, false, true, true));
    EXPECT_EQ(F::kFlat, ChooseFrame(kVariantPlain, true, true, true)) << "disabled never lights";
    // A drop-down whose menu is open looks pressed without the mouse over it.
    EXPECT_EQ(F::kSunken, ChooseFrame(kVariantDropDown, false, false, true));
    EXPECT_EQ(F::kSunken, ChooseFrame(kVariantDropDown, true, true, true));
}

TEST(CaptionColour, WindowsMailAndOutlookExpressColours) {
    Palette system;
    system.face = Rgb(212, 208, 200);
    system.gray_text = Rgb(128, 128, 128);
    system.text = Rgb(0, 0, 0);
    const Palette oe = ClientPalette(system, false);
    const Palette wm = ClientPalette(system, true);
    EXPECT_EQ(system.face, oe.face);
    EXPECT_EQ(Rgb(24, 61, 118), wm.face);
    // Readable on both faces: the system's text colour on Outlook Express,
    // white on the dark Windows Mail band.
    EXPECT_EQ(Rgb(0, 0, 0), CaptionColour(oe, false, kVariantPlain, false));
    EXPECT_EQ(kWhite, CaptionColour(wm, true, kVariantPlain, false));
    EXPECT_EQ(Rgb(128, 128, 128), CaptionColour(oe, false, kVariantDropDown, true));
    EXPECT_EQ(Rgb(150, 150, 150), CaptionColour(wm, true, kVariantPlain, true));
    // The menu button stays readable on Windows Mail even when disabled.
    EXPECT_EQ(kWhite, CaptionColour(wm, true, kVariantDropDown, true));
}

}  // namespace
}  // namespace velk::toolbar
