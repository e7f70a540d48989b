#!/bin/sh
# Renders the plug-in's four logos from their vector sources; needs rsvg-convert (librsvg2-bin).
set -eu

artwork=$(cd "$(dirname "$0")" && pwd)
pictures=$artwork/../SourceFiles

# render SOURCE NAME WIDTH HEIGHT TOP: the drawing keeps its proportions, and a canvas that is
# slightly taller than it gets the rest as a transparent margin, half of it at the TOP.
render() {
    rsvg-convert --width "$3" --keep-aspect-ratio --page-width "$3" --page-height "$4" \
        --top "$5" --output "$pictures/$2" "$artwork/$1"
}

render logo-dark.svg orv_transparent.png 640 241 0
render logo-bright.svg orv_transparent-brightmode.png 640 241 0
render logo-dark.svg orv_transparent02.png 274 105 0.9
render logo-bright.svg orv_transparent02-brightmode.png 274 105 0.9
