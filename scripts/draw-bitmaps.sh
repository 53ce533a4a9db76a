#!/usr/bin/env bash
# Usage: scripts/draw-bitmaps.sh [OUTPUT_DIR]   (default: resources/bitmaps)
#
# Draws the toolbar and slider bitmaps of the language resource module and writes them
# as 24-bit BMP3 files, ready to commit. The build only compiles the
# committed files; it never needs ImageMagick. Rerun this after changing a
# drawing below and commit the results (the output is byte-for-byte
# reproducible).
#
# Every bitmap uses magenta (#FF00FF) as its transparent key: the band loads
# them with a magenta colour map and draws them with that key. So no drawn
# pixel may be magenta, and nothing is anti-aliased against the key colour
# (a blended edge would show as a pink fringe on the band).
#
# The icons are pixel art (one character per pixel, colours from a small
# palette); the logo's lettering is rendered with a font inside an opaque
# badge, so its anti-aliasing blends with the badge, never with the key.
set -euo pipefail

# The real ImageMagick, not the stand-in some machines put earlier in PATH.
CONVERT=${CONVERT:-/usr/bin/convert}
FONT=${FONT:-/usr/share/fonts/truetype/dejavu/DejaVuSansCondensed-Bold.ttf}
here=$(cd "$(dirname "$0")/.." && pwd)
out=${1:-$here/resources/bitmaps}
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Palette: character, red, green, blue, what it is for.
palette() {
    cat <<'EOF'
. 255 0 255   transparent key
k 70 78 96    envelope outline
e 250 250 246 paper
s 214 218 228 shaded fold of the paper
f 150 158 178 flap
o 150 24 24   rim of the spam badge
r 214 44 40   spam badge
p 24 102 44   rim of the not-spam badge
g 44 160 72   not-spam badge
a 32 32 32    arrow on the grey band
W 255 255 255 white: cross, tick, arrow on the dark blue band
EOF
}

# Pixel map (stdin: one row per line) -> plain PPM on stdout.
# With "disabled", every colour but the key becomes a light grey of its own
# brightness, the usual look of a greyed toolbar icon.
map_to_ppm() {
    local mode=$1
    awk -v mode="$mode" '
        NR == FNR { r[$1] = $2; g[$1] = $3; b[$1] = $4; next }
        { rows[++n] = $0; if (length($0) > w) w = length($0) }
        END {
            printf "P3\n%d %d\n255\n", w, n
            for (y = 1; y <= n; y++) {
                for (x = 1; x <= w; x++) {
                    c = substr(rows[y], x, 1)
                    if (!(c in r)) { print "unknown pixel " c > "/dev/stderr"; exit 1 }
                    R = r[c]; G = g[c]; B = b[c]
                    if (mode == "disabled" && c != ".") {
                        lum = 0.30 * R + 0.59 * G + 0.11 * B
                        R = G = B = int(120 + lum * 0.5)
                    }
                    printf "%d %d %d\n", R, G, B
                }
            }
        }' <(palette) -
}

to_bmp() {  # PPM/PNG file -> 24-bit BMP3
    "$CONVERT" "$1" -alpha off -type TrueColor "BMP3:$2"
}

# An envelope with a badge in its lower right corner; the badge is what tells
# the two report buttons apart (red cross: spam; green tick: not spam).
envelope_with() {
    local badge=$1
    overlay_badge "$badge" <<'EOF'
................
................
kkkkkkkkkkkkkk..
kfeeeeeeeeeefk..
kefeeeeeeeefek..
keefeeeeeefeek..
keeefeeeefeeek..
keeeeffffeeeek..
keeeeeeeeeeeek..
kssssssssssssk..
keeeeeeeeeeeek..
kkkkkkkkkkkkkk..
................
................
................
................
EOF
}

# Lays the 9x9 badge in file $1 over the 16x16 pixel map on stdin, at columns
# 7..15 and rows 7..15 ("." in the badge leaves the map as it is).
overlay_badge() {
    awk -v badgefile="$1" '
        BEGIN { while ((getline line < badgefile) > 0) badge[++nb] = line }
        {
            row = $0
            by = NR - 7
            if (by >= 1 && by <= nb) {
                for (i = 1; i <= 9; i++) {
                    c = substr(badge[by], i, 1)
                    if (c != ".") row = substr(row, 1, 6 + i) c substr(row, 8 + i)
                }
            }
            print row
        }'
}

cat >"$work/spam_badge" <<'EOF'
..ooooo..
.orrrrro.
orWWrWWro
orrWWWrro
orrrWrrro
orrWWWrro
orWWrWWro
.orrrrro.
..ooooo..
EOF
cat >"$work/fp_badge" <<'EOF'
..ppppp..
.pgggggp.
pggggggWp
pgggggWWp
pgWggWWgp
pgWWWWggp
pggWWgggp
.pgggggp.
..ppppp..
EOF

envelope_with "$work/spam_badge" >"$work/spam.txt"
envelope_with "$work/fp_badge" >"$work/fp.txt"

map_to_ppm normal <"$work/spam.txt" >"$work/spam.ppm"
map_to_ppm disabled <"$work/spam.txt" >"$work/spam_dis.ppm"
map_to_ppm normal <"$work/fp.txt" >"$work/fp.ppm"
map_to_ppm disabled <"$work/fp.txt" >"$work/fp_dis.ppm"
to_bmp "$work/spam.ppm" "$out/report_spam.bmp"             # 6006
to_bmp "$work/spam_dis.ppm" "$out/report_spam_disabled.bmp" # 6113
to_bmp "$work/fp.ppm" "$out/report_fp.bmp"                 # 6004
to_bmp "$work/fp_dis.ppm" "$out/report_fp_disabled.bmp"    # 6114

# Drop-down arrows: 7 px wide (the drop-down button reserves 9: arrow and a
# gap) and as tall as an icon, the arrow centred, so drawing it at the icon
# margin centres it on the caption.
arrow() {
    local c=$1
    printf '.......\n%.0s' 1 2 3 4 5 6
    echo "$c$c$c$c$c$c$c" | tr -d '\n'; echo
    echo ".$c$c$c$c$c." | tr -d '\n'; echo
    echo "..$c$c$c.." | tr -d '\n'; echo
    echo "...$c..." | tr -d '\n'; echo
    printf '.......\n%.0s' 1 2 3 4 5 6
}
arrow a | map_to_ppm normal >"$work/arrow_oe.ppm"
arrow W | map_to_ppm normal >"$work/arrow_wm.ppm"
to_bmp "$work/arrow_oe.ppm" "$out/dropdown_oe.bmp" # 6008: dark arrow on the grey band
to_bmp "$work/arrow_wm.ppm" "$out/dropdown_wm.bmp" # 6200: white arrow on the dark blue band

# The logo: an orange badge with a white shield and the company's name. The
# badge is opaque, so it reads on the grey band as well as on the dark blue
# one, and its rounded corners are drawn without anti-aliasing (the key must
# stay exact around it).
W=70
H=18
"$CONVERT" -size ${W}x${H} xc:'#FF00FF' \
    \( -size ${W}x${H} gradient:'#F7901E-#D2491A' \) \
    \( -size ${W}x${H} xc:black +antialias -fill white \
       -draw "roundrectangle 0,0 $((W - 1)),$((H - 1)) 4,4" \) \
    -composite "$work/badge.png"
# Shield outline (white) with a tick cut out in the badge colour.
"$CONVERT" "$work/badge.png" +antialias \
    -fill white -draw "polygon 4,3 9,2 14,3 14,9 9,15 4,9" \
    -fill '#E0641C' -draw "polygon 6,8 7,7 9,9 12,5 13,6 9,11" \
    -antialias -font "$FONT" -pointsize 11.5 -fill '#FFFFFF' \
    -annotate +18+13 'NUVEXA' "$work/logo.png"
to_bmp "$work/logo.png" "$out/logo.bmp" # 6002

# The level slider's thumb: four 15x15 frames side by side (normal, hot,
# pressed, disabled), a round knob in the logo's orange with a darker rim and
# a small highlight. Drawn without anti-aliasing: the key must stay exact.
knob() {  # fill rim highlight -> PNG on stdout path $4
    "$CONVERT" -size 15x15 xc:'#FF00FF' +antialias \
        -fill "$2" -stroke "$2" -draw "circle 7,7 7,0" \
        -fill "$1" -stroke "$1" -draw "circle 7,7 7,1" \
        -fill "$3" -stroke "$3" -draw "circle 5,5 5,3" "$4"
}
knob '#F08A24' '#B9501A' '#FBD3A8' "$work/knob_normal.png"
knob '#F8A850' '#C8641E' '#FFE6C8' "$work/knob_hot.png"
knob '#D2691E' '#97400F' '#EBA46A' "$work/knob_pressed.png"
knob '#D4D0C8' '#8C8C8C' '#ECEAE6' "$work/knob_disabled.png"
"$CONVERT" "$work/knob_normal.png" "$work/knob_hot.png" "$work/knob_pressed.png" \
    "$work/knob_disabled.png" +append "$work/slider_thumbs.png"
to_bmp "$work/slider_thumbs.png" "$out/slider_thumbs.bmp" # 6450

echo "bitmaps written to $out"
