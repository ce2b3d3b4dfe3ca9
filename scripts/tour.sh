#!/bin/sh
# A short tour of kivutil: what `make run` shows.
set -eu
K="$1"
run() {
    echo "\$ kivutil $*"
    "$K" "$@" || true
    echo
}
run length 12.3456 --unit USft --decimals 3 --adaptive
run length 1500 --unit m --decimals 2 --adaptive
run length 1.7 --unit USfti --decimals 3
run length --parse "12,5m" --unit m
run length --parse "5'6\"3/8" --unit USfti
run angle 123.456789 --unit dms --precision 2
run angle --parse "N 47 30 15.5" --unit dms
run angle 90 --unit grd --left
run area 10000 --unit acres
run volume 100 --unit USyds
