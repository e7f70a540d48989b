#!/bin/sh
# Renders the frontend's pictures from their vector sources; needs rsvg-convert (librsvg2-bin).
set -eu

artwork=$(cd "$(dirname "$0")" && pwd)
frontend=$(dirname "$artwork")

rsvg-convert "$artwork/qmessagebox-info.svg" --output "$frontend/images/qmessagebox-info.png"
rsvg-convert "$artwork/qmessagebox-info-brightmode.svg" \
    --output "$frontend/images/qmessagebox-info-brightmode.png"
rsvg-convert "$artwork/cascade-progress.svg" \
    --output "$frontend/whats_new/images/cascade-progress.png"
