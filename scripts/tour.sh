#!/bin/sh
# A short tour of kivutil: what `make run` shows.
set -eu
K="$1"
echo "\$ kivutil length 12.3456 --unit USft --decimals 3 --adaptive"
"$K" length 12.3456 --unit USft --decimals 3 --adaptive
