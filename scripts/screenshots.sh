#!/usr/bin/env bash
# Usage: scripts/screenshots.sh BUILD_TREE     (what `make screenshots` runs)
#
# Opens every window of the product on a virtual display, once per language,
# and writes docs/screens/<lang>/<window>.png: the band in both client modes,
# the logo menu, the filtering sheet's pages, the dialogs they open,
# statistics, updates, proxy, cloud feedback and About.
#   SCREENS_LANGS  the system languages to run as (default "en-US de-DE")
#   SCREENS_DPI    the screen's DPI (default 96); any other value writes
#                  docs/screens/<lang>-<dpi>dpi/ and puts the prefix back to
#                  96 afterwards
# Exit status: 0 every window was saved; 1 one could not be opened, captured
# or converted (named on stderr); 2 usage or missing build.
set -u
if [ $# -ne 1 ]; then
  echo "usage: $0 BUILD_TREE" >&2
  exit 2
fi
here=$(cd "$(dirname "$0")/.." && pwd)
tree=$(cd "$1" && pwd)
exe="$tree/tools/screenshots/velk_screens.exe"
if [ ! -f "$exe" ]; then
  echo "screenshots: $exe is missing (make screenshots builds it)" >&2
  exit 2
fi
dpi=${SCREENS_DPI:-96}
case "$dpi" in
  '' | *[!0-9]*) echo "screenshots: SCREENS_DPI must be a number" >&2; exit 2 ;;
esac
started=$(date +%s%N)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
status=0

for lang in ${SCREENS_LANGS:-en-US de-DE}; do
  shots="$scratch/$lang"
  mkdir -p "$shots"
  suffix=$([ "$dpi" = 96 ] || echo "-${dpi}dpi")
  target="$here/docs/screens/$lang$suffix"
  # The DPI is the prefix's, read by every Wine process at its start; it is
  # put back whatever the run's outcome, since the tests share the prefix.
  VELK_LOCALE="$lang" VELK_WINE_TIMEOUT=120 "$here/scripts/wine-session.sh" "$tree" sh -c '
    dpi=$1; shift
    "$WINE" reg add "HKCU\\Control Panel\\Desktop" /v LogPixels /t REG_DWORD /d "$dpi" /f >/dev/null 2>&1
    "$@"
    run=$?
    "$WINE" reg add "HKCU\\Control Panel\\Desktop" /v LogPixels /t REG_DWORD /d 96 /f >/dev/null 2>&1
    exit $run' sh "$dpi" "$here/scripts/wine-run.sh" "$exe" "Z:${shots//\//\\}"
  run=$?
  if [ $run -ne 0 ]; then
    echo "screenshots: $lang at $dpi dpi failed (exit $run); $target left as it was" >&2
    status=1
    continue
  fi
  rm -rf "$target"
  mkdir -p "$target"
  for bmp in "$shots"/*.bmp; do
    name=$(basename "$bmp" .bmp)
    # ImageMagick's own convert (another on PATH may write only PPM); no
    # time stamps, so an unchanged window gives an unchanged file.
    if ! /usr/bin/convert "$bmp" -strip -define png:exclude-chunks=date,time "$target/$name.png"; then
      echo "screenshots: $name could not be converted" >&2
      status=1
    fi
  done
  echo "screenshots: $(ls "$target" | wc -l) pictures in ${target#$here/}/"
done

ms=$(( ($(date +%s%N) - started) / 1000000 ))
printf 'screenshots: %d.%01d s in all\n' $((ms / 1000)) $((ms % 1000 / 100))
exit $status
