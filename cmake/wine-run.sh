#!/bin/sh
# Runs a cross-built Windows program under Wine, headless: the prefix lives in the build
# folder (KIV_WINEPREFIX, else ./wineprefix above the program's folder is found by
# walking up to the folder holding CMakeCache.txt), no X display is opened, Wine's own
# debug channels are quiet, and the first run does not try to install Mono or Gecko. A
# program that faults ends there instead of waiting in Wine's debugger for ever.
set -eu
if [ -z "${KIV_WINEPREFIX:-}" ]; then
    # From the program's folder when it names one (the cross-check runs from the source
    # tree), else from the current one (wineboot and other Wine commands).
    dir=$(pwd)
    if [ -f "${1:-}" ] && [ "${1#*/}" != "$1" ]; then dir=$(cd "$(dirname "$1")" && pwd); fi
    while [ "$dir" != "/" ] && [ ! -f "$dir/CMakeCache.txt" ]; do dir=$(dirname "$dir"); done
    [ "$dir" = "/" ] && dir=$(pwd)
    KIV_WINEPREFIX="$dir/wineprefix"
fi
mkdir -p "$KIV_WINEPREFIX"
WINE=${KIV_WINE:-}
if [ -z "$WINE" ]; then
    for candidate in wine64 /usr/lib/wine/wine64 wine; do
        if command -v "$candidate" >/dev/null 2>&1; then WINE=$candidate; break; fi
    done
fi
unset DISPLAY WAYLAND_DISPLAY
export WINEPREFIX="$KIV_WINEPREFIX" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d" WINEARCH=win64
# Without a display no graphics driver loads and every CreateWindowEx fails; the null
# driver gives real windows that draw into memory only. The desktop reads the choice when
# it starts, so a new prefix is told once and its session ended before the program runs.
if ! grep -qs '^"Graphics"="null"' "$KIV_WINEPREFIX/user.reg"; then
    "$WINE" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
    server=$(dirname "$(command -v "$WINE")")/wineserver
    [ -x "$server" ] || server=$(command -v wineserver || echo /usr/lib/wine/wineserver)
    "$server" -w 2>/dev/null || true
fi
exec "$WINE" "$@"
