#!/bin/sh
# Installs the Debian packages the build, tests, benchmarks and fuzz targets need.
# Text is drawn with FreeType, HarfBuzz and the DejaVu fonts; the picture tests read
# files back with ImageMagick; the line benchmark measures against Cairo.
# Idempotent: checks each package first and runs apt-get update only when something
# is missing. The live display shows windows through SDL2; its test types with xdotool
# into a private Xvfb server. Also provides the comma-decimal locale the number-text
# tests switch to.
set -eu

PACKAGES="cmake ninja-build g++ make googletest libgtest-dev libgmock-dev libbenchmark-dev \
libfmt-dev libcli11-dev libpng-dev libboost-dev clang libclang-rt-14-dev libxml2-utils python3 locales gcovr \
libpugixml-dev libfreetype-dev libharfbuzz-dev fonts-dejavu-core imagemagick libcairo2-dev pkg-config \
libgdal-dev gdal-bin libproj-dev proj-bin libsdl2-dev xvfb xdotool"

# With --i386, also what the 32-bit lane (make test32) needs from the system: the
# multilib compilers and apt's i386 package index, from which the lane unpacks its own
# sysroot (scripts/fetch-i386-sysroot.sh) without installing anything. With --wine, the
# cross compilers and Wine of the Windows lane (make wine-test).
I386=0
for arg in "$@"; do
    case "$arg" in
        --i386) I386=1; PACKAGES="$PACKAGES gcc-multilib g++-multilib" ;;
        --wine) PACKAGES="$PACKAGES mingw-w64 g++-mingw-w64-x86-64-posix wine64" ;;
        *) echo "install-deps: unknown option $arg (accepted: --i386, --wine)" >&2; exit 2 ;;
    esac
done

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null 2>&1; then SUDO="sudo"; fi
fi

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done

if [ "$I386" -eq 1 ] && ! dpkg --print-foreign-architectures | grep -qx i386; then
    echo "install-deps: adding the i386 architecture"
    $SUDO dpkg --add-architecture i386
    # A mirror whose security index lags must not stop the lane: it needs only the
    # main index's i386 packages, which the sysroot script checks for itself.
    $SUDO apt-get update -qq || echo "install-deps: apt-get update reported errors; going on" >&2
fi

if [ -n "$missing" ]; then
    echo "install-deps: installing$missing"
    $SUDO apt-get update -qq || [ "$I386" -eq 1 ]
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends $missing
fi

# The locale tests switch the process to de_DE.UTF-8 to prove number text ignores it.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    echo "install-deps: generating de_DE.UTF-8"
    if [ -f /etc/locale.gen ]; then
        $SUDO sed -i 's/^# *de_DE.UTF-8 UTF-8/de_DE.UTF-8 UTF-8/' /etc/locale.gen
        grep -q '^de_DE.UTF-8 UTF-8' /etc/locale.gen || echo 'de_DE.UTF-8 UTF-8' | $SUDO tee -a /etc/locale.gen >/dev/null
        $SUDO locale-gen >/dev/null
    else
        $SUDO localedef -i de_DE -f UTF-8 de_DE.UTF-8
    fi
fi
