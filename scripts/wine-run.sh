#!/usr/bin/env bash
# Usage: scripts/wine-run.sh EXE [ARGS...]
# Runs one Windows executable as one Wine process with a hard time limit
# (VELK_WINE_TIMEOUT seconds, default 280), inside scripts/wine-session.sh.
set -u
if [ -z "${VELK_WINE_SESSION:-}" ]; then
  echo "wine-run: run through scripts/wine-session.sh (no Wine prefix/display set)" >&2
  exit 2
fi
exe=$(readlink -f "$1")
shift
cd "$(dirname "$exe")" || exit 2
exec timeout --kill-after=5 "${VELK_WINE_TIMEOUT:-280}" "$WINE" "$exe" "$@"
