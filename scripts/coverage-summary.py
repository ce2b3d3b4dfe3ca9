#!/usr/bin/env python3
"""Line and branch coverage per folder of platform/ and utils/, from gcovr's JSON summary.

Usage: coverage-summary.py SUMMARY.json
"""
import json
import sys
from collections import defaultdict

TOPS = ("platform/", "utils/")


def folder_of(path):
    parts = path.split("/")
    return "/".join(parts[:2]) if len(parts) > 2 else parts[0]


def main():
    with open(sys.argv[1]) as f:
        summary = json.load(f)
    per = defaultdict(lambda: [0, 0, 0, 0])  # lines covered, lines, branches covered, branches
    for entry in summary["files"]:
        path = entry["filename"]
        if not path.startswith(TOPS):
            continue
        for key in (folder_of(path), path.split("/")[0]):
            c = per[key]
            c[0] += entry["line_covered"]
            c[1] += entry["line_total"]
            c[2] += entry["branch_covered"]
            c[3] += entry["branch_total"]

    def pct(a, b):
        return f"{100.0 * a / b:5.1f}%" if b else "   --"

    print(f"{'folder':<22} {'lines':>16} {'line %':>7} {'branches':>16} {'branch %':>8}")
    for top in ("platform", "utils"):
        for key in sorted(k for k in per if k.startswith(top + "/")):
            c = per[key]
            print(f"{key:<22} {c[0]:>7}/{c[1]:<8} {pct(c[0], c[1]):>7} {c[2]:>7}/{c[3]:<8} {pct(c[2], c[3]):>8}")
        c = per.get(top)
        if c:
            print(f"{top + '/ (all)':<22} {c[0]:>7}/{c[1]:<8} {pct(c[0], c[1]):>7} {c[2]:>7}/{c[3]:<8} {pct(c[2], c[3]):>8}")


if __name__ == "__main__":
    main()
