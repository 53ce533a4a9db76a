#!/usr/bin/env bash
# Usage: scripts/demo.sh BUILD_ROOT        (what `make demo` runs)
#
# Runs the demo in BUILD_ROOT/windows's Wine prefix on a virtual display: the
# mail-client stand-in loads a copy of the staged installation (log on), the
# scanning-process stand-in plays demo/scenario.txt against the sample
# mailbox through the message-store stand-in, Report Spam is clicked, the
# filtering sheet is opened from the logo menu and a sender blocked in it,
# the statistics dialog shows the session's counts, the client is closed.
# Everything the run leaves is in BUILD_ROOT/demo; the summary is printed.
# DEMO_MODE=oe runs the client as Outlook Express (Wine reports XP x64 to
# it), DEMO_MODE=wmail as Windows Mail; the default follows the prefix
# (Windows 7: Windows Mail). DEMO_LANG=de-DE runs the whole Wine session as
# on a system of that language.
#
# Exit status: 0 the run did what the scenario says; 1 it did not; 2 usage or
# missing build; 3 the add-in is not built yet.
set -u
if [ $# -ne 1 ]; then
  echo "usage: $0 BUILD_ROOT" >&2
  exit 2
fi
here=$(cd "$(dirname "$0")" && pwd)
root=$(mkdir -p "$1" && cd "$1" && pwd)
win="$root/windows"
out="$root/demo"
driver="$win/demo/demo_driver.exe"
mode="${DEMO_MODE:-auto}"
started=$(date +%s%N)

if [ ! -f "$driver" ]; then
  echo "demo: $driver is missing (make demo builds it)" >&2
  exit 2
fi
rm -rf "$out"
mkdir -p "$out"

if [ -n "${DEMO_LANG:-}" ]; then
  export VELK_LOCALE="$DEMO_LANG"
fi
# The driver sees the Unix root as drive Z:.
VELK_WINE_TIMEOUT=150 "$here/wine-session.sh" "$win" "$here/wine-run.sh" "$driver" \
  --out "Z:${out//\//\\}" --mode "$mode"
status=$?

for shot in screenshot sheet statistics; do
  if [ -f "$out/$shot.bmp" ]; then
    # ImageMagick's own convert: the one first on PATH may be a stand-in that
    # writes only PPM.
    if /usr/bin/convert "$out/$shot.bmp" "$out/$shot.png"; then
      rm -f "$out/$shot.bmp"
    fi
  fi
done

ms=$(( ($(date +%s%N) - started) / 1000000 ))
if [ -f "$out/summary.txt" ]; then
  echo "files: $out/ (screenshot.png, sheet.png, statistics.png, mailbox/ after the run, mailbox-before/,"
  echo "       VELKAgent.*.log, BlackList.dat, store-journal.txt, client-events.txt, scanner-messages.txt,"
  echo "       scanner-report.txt, summary.txt)"
fi
printf 'demo: %d.%01d s in all (Wine session, client, session, settings, close, report)\n' \
  $((ms / 1000)) $((ms % 1000 / 100))
exit $status
