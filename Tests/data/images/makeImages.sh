#!/usr/bin/env bash
# Makes the files of this folder with other programs (imagemagick, python3-pil), each by the command below.
# The picture is 13 x 7: red 20 x, green 36 y, blue 3 x y; alpha, where there is one, 255 - 10 x. The icons
# and blocks are 16 x 12 of the same.
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
rm -rf tga bmp pcx ico dds
mkdir tga bmp pcx ico dds

WORK=$work /usr/bin/python3 - <<'PYTHON'
import os
from PIL import Image

def picture(width, height):
    image = Image.new("RGBA", (width, height))
    image.putdata([(15 * x, 20 * y, x * y, 255 - 10 * x) if width == 16 else
                   (20 * x, 36 * y, 3 * x * y, 255 - 10 * x) for y in range(height) for x in range(width)])
    return image

work = os.environ["WORK"]
small, even = picture(13, 7), picture(16, 12)
indexed = small.convert("RGB").convert("P", palette=Image.ADAPTIVE, colors=256)
small.save(work + "/alpha.png")
small.convert("RGB").save(work + "/plain.png")
even.save(work + "/evenAlpha.png")
even.convert("RGB").save(work + "/even.png")

small.convert("RGB").save("tga/pil24.tga")
small.save("tga/pil32runs.tga", compression="tga_rle")
small.convert("RGB").save("tga/pil24top.tga", orientation=1)
indexed.save("tga/pilPalette.tga")
small.convert("L").save("tga/pilGray.tga")
small.convert("RGB").save("bmp/pil24.bmp")
small.save("bmp/pil32.bmp")
indexed.save("bmp/pil8.bmp")
small.convert("1").save("bmp/pil1.bmp")
small.convert("RGB").save("pcx/pil24.pcx")
indexed.save("pcx/pil8.pcx")
small.convert("1").save("pcx/pil1.pcx")
even.save("ico/pilPng.ico", sizes=[(16, 12)])
even.save("ico/pil32.ico", sizes=[(16, 12)], bitmap_format="bmp")
even.save("dds/pil32.dds")
PYTHON

convert "$work/plain.png" -compress None tga/im24.tga
convert "$work/plain.png" -compress RLE tga/im24runs.tga
convert "$work/alpha.png" -compress None tga/im32.tga
convert "$work/plain.png" -colors 16 -type Palette -compress None tga/imPalette.tga
convert "$work/plain.png" -colors 16 -type Palette -compress RLE tga/imPaletteRuns.tga
convert "$work/plain.png" BMP3:bmp/im24.bmp
convert "$work/alpha.png" bmp/imFields32.bmp
convert "$work/plain.png" -define bmp:subtype=RGB565 bmp/im565.bmp
convert "$work/plain.png" -define bmp:subtype=RGB555 bmp/im555.bmp
convert "$work/plain.png" -colors 200 -type Palette -compress None BMP3:bmp/im8.bmp
convert "$work/plain.png" -colors 200 -type Palette -compress RLE BMP3:bmp/im8runs.bmp
convert "$work/plain.png" -colors 16 -type Palette -compress None BMP3:bmp/im4.bmp
convert "$work/plain.png" -monochrome BMP3:bmp/im1.bmp
convert "$work/plain.png" BMP2:bmp/imOs2.bmp
convert "$work/plain.png" pcx/im24.pcx
convert "$work/plain.png" -colors 200 -type Palette pcx/im8.pcx
convert "$work/even.png" -colors 16 -type Palette ico/im4.ico
convert "$work/even.png" -colors 200 -type Palette ico/im8.ico
convert "$work/even.png" -colors 200 -type Palette "$work/alpha.png" ico/imTwo.ico
convert "$work/even.png" -define dds:compression=dxt1 -define dds:mipmaps=0 dds/imDxt1.dds
convert "$work/evenAlpha.png" -define dds:compression=dxt5 -define dds:mipmaps=2 dds/imDxt5.dds
convert "$work/evenAlpha.png" -define dds:compression=none -define dds:mipmaps=0 dds/im32.dds
convert "$work/alpha.png" -define dds:compression=dxt5 -define dds:mipmaps=0 dds/imOdd.dds
