#!/bin/sh
# Installs the Debian packages the build, tests, benchmarks and fuzz targets need.
# Text is drawn with FreeType, HarfBuzz and the DejaVu fonts; the picture tests read
# files back with ImageMagick; the line benchmark measures against Cairo. The Windows lane
# (make wine-test) cross-builds with mingw-w64 and runs the tests under Wine.
# Idempotent: checks each package first and runs apt-get update only when something
# is missing. Also provides the comma-decimal locale the number-text tests switch to.
set -eu

PACKAGES="cmake ninja-build g++ make googletest libgtest-dev libgmock-dev libbenchmark-dev \
libfmt-dev libcli11-dev libpng-dev libboost-dev clang libclang-rt-14-dev libxml2-utils python3 locales gcovr \
libpugixml-dev libfreetype-dev libharfbuzz-dev fonts-dejavu-core imagemagick libcairo2-dev pkg-config \
libgdal-dev gdal-bin libproj-dev proj-bin \
mingw-w64 g++-mingw-w64-x86-64-posix wine64"

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

if [ -n "$missing" ]; then
    echo "install-deps: installing$missing"
    $SUDO apt-get update -qq
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
