#!/bin/sh
# A short tour of kivutil: what `make run` shows. Files it makes go to a temporary folder.
set -eu
K=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
run() {
    echo "\$ kivutil $*"
    "$K" "$@" || true
    echo
}
cd "$WORK"
run length 12.3456 --unit USft --decimals 3 --adaptive
run length 1500 --unit m --decimals 2 --adaptive
run length 1.7 --unit USfti --decimals 3
run length --parse "12,5m" --unit m
run length --parse "5'6\"3/8" --unit USfti
run angle 123.456789 --unit dms --precision 2
run angle --parse "N 47 30 15.5" --unit dms
run angle 90 --unit grd --left
run calc "todms(12°30'36\" + 0:29:24)"
run area 10000 --unit acres
run volume 100 --unit USyds
run vector sample -o site.vec
run vector info site.vec
run vector index site.vec
run vector pick site.vec 5100 8070 --tolerance 20
run history append job-history.xml Note "Station set up"
run history append job-history.xml Note "Backsight checked"
run history verify job-history.xml
printf '123456789' > check.txt
run crc16 check.txt
