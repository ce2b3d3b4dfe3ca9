#!/bin/sh
# Builds the private i386 sysroot of the 32-bit lane: the 32-bit libraries the build
# links (FreeType, HarfBuzz, libpng, {fmt}, GoogleTest) and what they load, unpacked
# from Debian's i386 packages with `apt-get download` and `dpkg -x`. Nothing is
# installed into the system, so no dpkg lock is taken and Multi-Arch version skews
# between the amd64 and i386 indexes do not matter.
# A kernel built without 32-bit support cannot start i386 programs at all; then qemu's
# user-mode emulator (from the qemu-user-static package, unpacked the same way) is put
# at <sysroot>/host/qemu-i386, and the toolchain file runs every test through it.
# usage: fetch-i386-sysroot.sh <sysroot folder>
# Idempotent: the folder records the packages and versions it holds and is rebuilt
# only when that list changes.
set -eu

sysroot=${1:?usage: fetch-i386-sysroot.sh <sysroot folder>}

# Link-time and run-time closure of the libraries the lane links, by package; the -dev
# packages of the libraries HarfBuzz and FreeType load carry the pkg-config files that
# the installed package's pkg-config check resolves through.
PACKAGES_I386="libfreetype-dev libfreetype6 libharfbuzz-dev libharfbuzz0b libgraphite2-3 libgraphite2-dev \
libglib2.0-0 libglib2.0-dev libpcre2-8-0 libpcre2-dev libpng-dev libpng16-16 zlib1g zlib1g-dev \
libbrotli1 libbrotli-dev libfmt-dev libfmt9 libgtest-dev libgmock-dev"
# Architecture-independent headers whose CMake package must be found inside the sysroot.
PACKAGES_ALL="libcli11-dev"

# Can this kernel start an i386 program? (Any C compiler with -m32 makes one.)
probe=$(mktemp -d)
printf 'int main(void) { return 0; }\n' >"$probe/probe.c"
if ! ${CC:-cc} -m32 "$probe/probe.c" -o "$probe/probe" 2>/dev/null; then
    rm -rf "$probe"
    echo "fetch-i386-sysroot: cc -m32 cannot link; run scripts/install-deps.sh --i386" >&2
    exit 1
fi
if "$probe/probe" 2>/dev/null; then
    PACKAGES_EMULATOR=""
else
    PACKAGES_EMULATOR="qemu-user-static"
fi
rm -rf "$probe"

# The package list with the candidate versions apt would download now, asked in one go.
names=""
for p in $PACKAGES_I386; do names="$names $p:i386"; done
names="$names $PACKAGES_ALL $PACKAGES_EMULATOR"
wanted=$(apt-cache policy $names 2>/dev/null | awk '
    /^[^ ].*:$/ { name = substr($1, 1, length($1) - 1) }
    /^ *Candidate:/ { printf " %s=%s", name, $2 }')
for p in $names; do
    case "$wanted " in
        *" $p=(none) "*) ;;
        *" $p="*) continue ;;
    esac
    echo "fetch-i386-sysroot: no candidate for $p; run scripts/install-deps.sh --i386" >&2
    exit 1
done

stamp="$sysroot/.packages"
if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$wanted" ]; then
    exit 0
fi

echo "fetch-i386-sysroot: unpacking$wanted into $sysroot"
rm -rf "$sysroot"
mkdir -p "$sysroot"
debs=$(mktemp -d)
trap 'rm -rf "$debs"' EXIT
# apt's download user must be able to write the folder, or apt warns on every file.
chmod 0777 "$debs"
(cd "$debs" && apt-get download -qq $wanted)
for deb in "$debs"/*.deb; do
    case "$deb" in
        */qemu-user-static_*)
            # Only the i386 emulator is kept of the package's many.
            dpkg -x "$deb" "$debs/qemu"
            mkdir -p "$sysroot/host"
            cp "$debs/qemu/usr/bin/qemu-i386-static" "$sysroot/host/qemu-i386"
            rm -rf "$debs/qemu"
            ;;
        *) dpkg -x "$deb" "$sysroot" ;;
    esac
done

# Absolute symbolic links (zlib's libz.so names /lib/...) point into the sysroot.
find "$sysroot" -type l | while read -r link; do
    target=$(readlink "$link")
    case "$target" in
        /*) ln -sfn "$sysroot$target" "$link" ;;
    esac
done

# Package files that spell absolute /usr paths are rooted at the sysroot.
for f in "$sysroot"/usr/lib/i386-linux-gnu/cmake/harfbuzz/*.cmake; do
    sed -i "s|\"/usr/|\"$sysroot/usr/|g" "$f"
done
for f in "$sysroot"/usr/lib/i386-linux-gnu/pkgconfig/*.pc "$sysroot"/usr/share/pkgconfig/*.pc; do
    [ -f "$f" ] && sed -i "s|^\\([a-z_]*\\)=/usr|\\1=$sysroot/usr|" "$f"
done

# Boost is header-only here and its headers do not depend on the architecture: the
# host's are used through the sysroot, so the build finds every package in one place.
if [ -d /usr/include/boost ]; then
    ln -sfn /usr/include/boost "$sysroot/usr/include/boost"
else
    echo "fetch-i386-sysroot: /usr/include/boost missing; run scripts/install-deps.sh" >&2
    exit 1
fi

printf '%s' "$wanted" >"$stamp"
