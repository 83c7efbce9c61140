#!/usr/bin/env bash
# Draws the tool-bar icons and the program logo (PNG files in resources/icons) with ImageMagick.
# The PNG files are kept in the repository; run this only to change them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../resources/icons"

# Each icon is drawn at 96 px on a transparent canvas and scaled to 24 px, which smooths the edges.
draw() {
  local name=$1
  shift
  convert -size 96x96 xc:none "$@" -resize 24x24 "$name"
}

ink='#2f4f6f'
draw i_importData.png \
  -fill none -stroke "$ink" -strokewidth 8 -draw "polyline 14,52 14,84 82,84 82,52" \
  -stroke '#1f6fb2' -strokewidth 10 -draw "line 48,8 48,58" \
  -fill '#1f6fb2' -stroke none -draw "polygon 26,44 70,44 48,70"
draw i_exportData.png \
  -fill none -stroke "$ink" -strokewidth 8 -draw "polyline 14,52 14,84 82,84 82,52" \
  -stroke '#2e8b57' -strokewidth 10 -draw "line 48,70 48,26" \
  -fill '#2e8b57' -stroke none -draw "polygon 26,34 70,34 48,8"
draw i_open.png \
  -fill '#e0a030' -stroke '#9a6a10' -strokewidth 4 -draw "polygon 8,24 36,24 44,32 88,32 88,82 8,82" \
  -fill '#f4c460' -draw "polygon 8,82 20,44 94,44 84,82"
draw i_save.png \
  -fill '#3d5a80' -stroke '#22344d' -strokewidth 4 -draw "roundrectangle 10,10 86,86 8,8" \
  -fill '#e8eef5' -stroke none -draw "rectangle 24,14 72,40" \
  -fill '#ffffff' -draw "rectangle 22,56 74,84" -fill '#3d5a80' -draw "rectangle 58,18 66,36"
draw i_script.png \
  -fill '#ffffff' -stroke "$ink" -strokewidth 5 -draw "polygon 18,6 64,6 80,22 80,90 18,90" \
  -stroke '#1f6fb2' -strokewidth 6 -draw "line 30,34 68,34" -draw "line 30,50 60,50" \
  -draw "line 30,66 68,66" -draw "line 30,80 52,80"
draw i_data.png \
  -fill '#ffffff' -stroke "$ink" -strokewidth 5 -draw "rectangle 8,14 88,84" \
  -fill '#c9dcef' -stroke none -draw "rectangle 10,16 86,32" \
  -stroke "$ink" -strokewidth 3 -draw "line 8,32 88,32" -draw "line 8,50 88,50" -draw "line 8,67 88,67" \
  -draw "line 35,14 35,84" -draw "line 62,14 62,84"
draw i_stop.png \
  -fill '#c0392b' -stroke '#7b241c' -strokewidth 4 \
  -draw "polygon 30,6 66,6 90,30 90,66 66,90 30,90 6,66 6,30" \
  -fill '#ffffff' -stroke none -draw "rectangle 26,40 70,56"

# The logo: a rounded blue square holding a density curve over a baseline.
for size in 16 32 48 64 128 256; do
  convert -size 512x512 xc:none \
    -fill '#1f4e79' -draw "roundrectangle 16,16 496,496 96,96" \
    -fill none -stroke '#ffffff' -strokewidth 34 \
    -draw "path 'M 80,400 C 180,400 200,120 256,120 C 312,120 332,400 432,400'" \
    -stroke '#8fc1ea' -strokewidth 20 -draw "line 80,428 432,428" \
    -resize ${size}x${size} "Logo${size}.png"
done
