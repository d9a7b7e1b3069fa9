#!/usr/bin/env bash
# Makes the sample images in examples/: small pictures drawn by ImageMagick,
# with EXIF and IPTC written by ExifTool (its IPTC text is Windows-1252, as
# vliptc stores it). The results are committed; run this only to change them.
#   harbour.jpg  JPEG with EXIF and IPTC (non-ASCII text, several keywords)
#   meadow.tif   TIFF (Intel byte order) with IPTC
#   sketch.psd   Photoshop document with IPTC
#   street.jpg   JPEG with EXIF and no IPTC
set -euo pipefail
cd "$(dirname "$0")/.."
for tool in convert exiftool; do
  command -v "$tool" >/dev/null || { echo "make-examples: $tool is missing (scripts/bootstrap.sh installs it)" >&2; exit 1; }
done
out=examples
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
et() { exiftool -q -overwrite_original -charset iptc=Latin "$@"; }

convert -size 96x64 gradient:'#8ec5ee'-'#16427a' -fill '#f6d55c' -draw 'circle 72,16 78,16' \
  -fill '#5b3a29' -draw 'polygon 10,50 50,50 44,58 16,58' -strip -quality 80 "$work/harbour.jpg"
et -EXIF:Make=Velora -EXIF:Model='Sample Camera' -EXIF:DateTimeOriginal='2024:06:21 21:40:00' \
  -EXIF:Artist='Example Photographer' -EXIF:ImageDescription='Harbour at dusk' \
  -IPTC:ObjectName='Harbour at dusk' -IPTC:Keywords=harbour -IPTC:Keywords=boats -IPTC:Keywords=sea \
  -IPTC:Caption-Abstract='Fishing boats in the harbour of Ålesund.' -IPTC:By-line='Example Photographer' \
  -IPTC:City='Ålesund' -IPTC:Country-PrimaryLocationName=Norway -IPTC:DateCreated=2024:06:21 \
  -IPTC:CopyrightNotice='© 2024 vliptc examples' "$work/harbour.jpg"

convert -size 64x48 gradient:'#d9ed92'-'#52b69a' -fill '#ffffff' -draw 'circle 20,20 23,20' \
  -strip -compress lzw -define tiff:endian=lsb "$work/meadow.tif"
et -IPTC:ObjectName=Meadow -IPTC:Keywords=meadow -IPTC:Keywords=flowers -IPTC:Category=NAT \
  -IPTC:Headline='A meadow in June' -IPTC:Credit='vliptc examples' -IPTC:Urgency=5 "$work/meadow.tif"

convert -size 48x48 xc:'#fdfcdc' -fill '#0081a7' -draw 'rectangle 8,8 40,40' \
  -alpha off -depth 8 -strip -compress rle "$work/sketch.psd"
et -IPTC:ObjectName=Sketch -IPTC:Headline='Blue square' -IPTC:Writer-Editor='Example Editor' \
  -IPTC:SpecialInstructions='Not for publication' "$work/sketch.psd"

convert -size 96x64 gradient:'#adb5bd'-'#343a40' -strip -quality 80 "$work/street.jpg"
et -EXIF:Make=Velora -EXIF:Model='Sample Camera' -EXIF:DateTimeOriginal='2024:03:02 08:15:30' \
  -EXIF:ExposureTime=1/250 -EXIF:FNumber=5.6 -EXIF:ISO=200 "$work/street.jpg"

for f in "$work"/*; do
  size=$(stat -c %s "$f")
  [ "$size" -lt 20480 ] || { echo "make-examples: $(basename "$f") is $size bytes (limit 20 KB)" >&2; exit 1; }
  cp "$f" "$out/"
done
ls -l "$out"
