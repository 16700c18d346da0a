#!/bin/sh
# Makes app.png and app.ico from varnel.svg with rsvg-convert and icotool. Both are checked in, so run this only
# after changing the mark.
set -eu
cd "$(dirname "$0")"
sizes=$(mktemp -d)
trap 'rm -rf "$sizes"' EXIT
for size in 16 24 32 48 64 256; do
  rsvg-convert -w $size -h $size varnel.svg -o "$sizes/$size.png"
done
cp "$sizes/256.png" app.png
icotool -c -o app.ico "$sizes/16.png" "$sizes/24.png" "$sizes/32.png" "$sizes/48.png" "$sizes/64.png" --raw="$sizes/256.png"
