#!/usr/bin/env bash
# Usage: settings_ui/take-screenshots.sh [BUILD_TREE]   (default build/windows)
#
# Shows the advanced page and the updates, proxy, cloud-feedback and About
# dialogs on the virtual display and saves them as docs/advanced_page.png,
# docs/updates.png, docs/proxy.png, docs/cloud_feedback.png, docs/about.png.
# Set LOGPIXELS=120 to see them at 120 DPI (written as docs/*_120dpi.png).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
tree=${1:-$here/build/windows}
cmake --build "$tree" --target settings_dialogs_shots
shots=$(mktemp -d)
trap 'rm -rf "$shots"' EXIT
dpi=${LOGPIXELS:-96}
suffix=$([ "$dpi" = 96 ] && echo "" || echo "_${dpi}dpi")
# Wine draws the frames itself (there is no window manager on the display),
# and at the asked resolution; the prefix is put back to 96 DPI afterwards.
"$here/scripts/wine-session.sh" "$tree" sh -c '
  "$WINE" reg add "HKCU\\Software\\Wine\\AppDefaults\\settings_dialogs_shots.exe\\X11 Driver" /v Managed /d N /f >/dev/null 2>&1
  "$WINE" reg add "HKCU\\Control Panel\\Desktop" /v LogPixels /t REG_DWORD /d '"$dpi"' /f >/dev/null 2>&1
  "$WINE" "'"$tree"'/settings_ui/settings_dialogs_shots.exe" "Z:'"$shots"'" </dev/null
  status=$?
  "$WINE" reg add "HKCU\\Control Panel\\Desktop" /v LogPixels /t REG_DWORD /d 96 /f >/dev/null 2>&1
  exit $status'
for name in updates proxy cloud_feedback about advanced_page; do
  /usr/bin/convert "$shots/$name.bmp" "$here/docs/$name$suffix.png"
  echo "docs/$name$suffix.png"
done
