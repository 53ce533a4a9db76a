#!/usr/bin/env bash
# Installs every Debian package the build and the tests need. Safe to run
# again: it only calls apt-get when something is missing, and says which
# package failed when one cannot be installed.
set -u

# package:probe pairs; the probe is a file that the package installs.
needs=(
  "cmake:/usr/bin/cmake"
  "make:/usr/bin/make"
  "clang:/usr/bin/clang++"
  "libclang-rt-14-dev:/usr/lib/llvm-14/lib/clang/14.0.6/lib/linux/libclang_rt.fuzzer-x86_64.a"
  "g++-mingw-w64-x86-64-posix:/usr/bin/x86_64-w64-mingw32-g++-posix"
  "binutils-mingw-w64-x86-64:/usr/bin/x86_64-w64-mingw32-windres"
  "mingw-w64-x86-64-dev:/usr/share/mingw-w64/include/windows.h"
  "wine64:/usr/lib/wine/wine64"
  "fonts-wine:/usr/share/wine/fonts/tahoma.ttf"
  "xvfb:/usr/bin/Xvfb"
  "xauth:/usr/bin/xauth"
  "x11-utils:/usr/bin/xwininfo"
  "googletest:/usr/src/googletest/CMakeLists.txt"
  "imagemagick:/usr/bin/convert-im6.q16"
  "clang-format:/usr/bin/clang-format"
  "ccache:/usr/bin/ccache"
  "locales:/usr/share/i18n/locales/de_DE"
)

missing=()
for pair in "${needs[@]}"; do
  pkg=${pair%%:*}
  probe=${pair#*:}
  [ -e "$probe" ] || missing+=("$pkg")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "bootstrap: installing ${missing[*]}"
if [ "$(id -u)" -ne 0 ]; then
  SUDO=sudo
else
  SUDO=
fi
export DEBIAN_FRONTEND=noninteractive
if ! $SUDO apt-get update -qq >/tmp/velk-apt-update.log 2>&1; then
  echo "bootstrap: apt-get update failed; see /tmp/velk-apt-update.log" >&2
  tail -5 /tmp/velk-apt-update.log >&2
  exit 1
fi
failed=()
# One call for speed; when it fails, retry one by one to name the culprit.
if ! $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/tmp/velk-apt-install.log 2>&1; then
  for pkg in "${missing[@]}"; do
    $SUDO apt-get install -y -qq --no-install-recommends "$pkg" >>/tmp/velk-apt-install.log 2>&1 || failed+=("$pkg")
  done
fi
if [ ${#failed[@]} -ne 0 ]; then
  echo "bootstrap: could not install: ${failed[*]} (log: /tmp/velk-apt-install.log)" >&2
  exit 1
fi
for pair in "${needs[@]}"; do
  pkg=${pair%%:*}
  probe=${pair#*:}
  if [ ! -e "$probe" ]; then
    echo "bootstrap: package $pkg installed but $probe is missing" >&2
    exit 1
  fi
done
echo "bootstrap: done"
