#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the PNGs from the SVG sources beside them, for screens of scale 1, 2 and 3. Needs rsvg-convert (Debian:
# librsvg2-bin). Run it after every change of a source and commit what it made.
set -euo pipefail
cd "$(dirname "$0")"

for source in *.svg; do
    name=${source%.svg}
    rsvg-convert --zoom 1 -o "$name.png" "$source"
    rsvg-convert --zoom 2 -o "$name@2x.png" "$source"
    rsvg-convert --zoom 3 -o "$name@3x.png" "$source"
done
