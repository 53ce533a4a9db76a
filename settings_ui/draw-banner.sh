#!/usr/bin/env bash
# Usage: settings_ui/draw-banner.sh   (writes settings_ui/about_banner.bmp)
#
# Draws the About box's built-in banner as a 24-bit BMP3, ready to commit;
# the build only compiles the committed file (rerun it, then commit the bitmap). The background is one flat
# colour: the About box centres the banner and fills the rest of its strip
# with the banner's top-left pixel, so a wider or taller strip (120 DPI, a
# translation's font) shows no seam.
set -euo pipefail
CONVERT=${CONVERT:-/usr/bin/convert}
FONT=${FONT:-/usr/share/fonts/truetype/dejavu/DejaVuSansCondensed-Bold.ttf}
here=$(cd "$(dirname "$0")" && pwd)
"$CONVERT" -size 420x72 xc:'rgb(227,106,28)' \
    -fill white -stroke none \
    -draw 'path "M 130,14 L 152,20 L 152,36 C 152,48 142,56 130,60 C 118,56 108,48 108,36 L 108,20 Z"' \
    -fill 'rgb(227,106,28)' \
    -draw 'path "M 130,19 L 147,24 L 147,36 C 147,45 140,51 130,55 C 120,51 113,45 113,36 L 113,24 Z"' \
    -stroke white -strokewidth 4 -fill none -draw 'polyline 120,36 128,44 141,28' \
    -stroke none -fill white -font "$FONT" -pointsize 34 -annotate +162+48 'NUVEXA' \
    -define bmp:format=bmp3 -type TrueColor +set date:create +set date:modify \
    "BMP3:$here/about_banner.bmp"
# The build does not see a bitmap change through the script that names it.
touch "$here/dialogs.rc"
