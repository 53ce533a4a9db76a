#!/usr/bin/env bash
# Usage: scripts/wine-session.sh BUILD_TREE COMMAND [ARGS...]
#
# Runs COMMAND with the build tree's private Wine prefix (BUILD_TREE/wineprefix,
# never ~/.wine) and one virtual X display for the whole run. The prefix is
# prepared once and reused. Every Wine and X process started here is ended
# when the command ends, whatever its outcome.
#
# VELK_LOCALE=de-DE (a Windows locale name) runs the session as on a system of
# that language: Wine takes the system and user locale from the Unix locale,
# which is compiled once into BUILD_TREE/locale (no root, nothing system-wide).
set -u
if [ $# -lt 2 ]; then
  echo "usage: $0 BUILD_TREE COMMAND [ARGS...]" >&2
  exit 2
fi
tree=$(mkdir -p "$1" && cd "$1" && pwd)
shift

export WINEPREFIX="$tree/wineprefix"
export WINEARCH=win64
export WINEDEBUG="${WINEDEBUG:--all}"
# No Mono/Gecko install prompts, no desktop menu entries.
# A crash ends its process at once instead of waiting in the debugger.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d;winedbg.exe=d"
export WINE=/usr/lib/wine/wine64
export WINESERVER=/usr/lib/wine/wineserver
export VELK_WINE_SESSION=1

if [ -n "${VELK_LOCALE:-}" ]; then
  unix_locale="${VELK_LOCALE/-/_}.UTF-8"
  if [ ! -d "$tree/locale/$unix_locale" ]; then
    mkdir -p "$tree/locale"
    if ! localedef -i "${VELK_LOCALE/-/_}" -f UTF-8 "$tree/locale/$unix_locale" >/dev/null 2>&1; then
      rm -rf "${tree:?}/locale/$unix_locale"
      echo "wine-session: no locale data for '$VELK_LOCALE' (package locales)" >&2
      exit 2
    fi
  fi
  export LOCPATH="$tree/locale"
  # bash itself cannot load the private locale (it reads LOCPATH only at
  # start); its warning says nothing about the Wine processes, which can.
  export LC_ALL="$unix_locale" 2>/dev/null
fi

xvfb_pid=
displayfile=$(mktemp)
cleanup() {
  # Only this prefix's server: other Wine users on the machine are left alone.
  "$WINESERVER" -k </dev/null >/dev/null 2>&1
  if [ -n "$xvfb_pid" ]; then
    kill "$xvfb_pid" 2>/dev/null
    wait "$xvfb_pid" 2>/dev/null
  fi
  rm -f "$displayfile"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# One X display; -displayfd lets Xvfb pick a free number itself.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -nolisten unix-abstract \
  3>"$displayfile" </dev/null >/dev/null 2>&1 &
xvfb_pid=$!
for _ in $(seq 1 100); do
  [ -s "$displayfile" ] && break
  sleep 0.05
done
if [ ! -s "$displayfile" ]; then
  echo "wine-session: Xvfb did not start" >&2
  exit 1
fi
export DISPLAY=":$(head -n1 "$displayfile")"

# The server and the boot get /dev/null on all three streams: the services
# they spawn would otherwise hold the caller's pipes open and hang the run.
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  echo "wine-session: preparing the Wine prefix $WINEPREFIX (once)"
  "$WINE" wineboot -i </dev/null >/dev/null 2>&1
  "$WINESERVER" -w </dev/null >/dev/null 2>&1
fi
"$WINESERVER" -p </dev/null >/dev/null 2>&1
"$WINE" wineboot </dev/null >/dev/null 2>&1
# With no window manager on the virtual display, Wine waits about 2 s each time
# a visible captioned window is destroyed unless its windows are unmanaged.
if [ ! -f "$WINEPREFIX/.velk-unmanaged" ]; then
  "$WINE" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f </dev/null >/dev/null 2>&1 &&
    touch "$WINEPREFIX/.velk-unmanaged"
fi

"$@"
