"""Writes the still images and other files that the sequence tests load."""
import sys

import numpy as np
from PIL import Image

out = sys.argv[1] + "/"
ramp = (np.arange(20, dtype=np.uint8) * 10 + 3).reshape(4, 5)
rgb = np.stack([ramp, ramp + 1, ramp + 2], axis=2)

Image.fromarray(ramp, "L").save(out + "gray8.png")
# 16-bit values 1000..1019 so the stretch shows truncation.
Image.fromarray((np.arange(20, dtype=np.uint16) + 1000).reshape(4, 5)).save(out + "gray16.png")
Image.fromarray(rgb, "RGB").save(out + "rgb.png")
Image.fromarray(np.dstack([rgb, np.full((4, 5), 7, np.uint8)]), "RGBA").save(out + "rgba.png")
Image.fromarray(np.dstack([ramp, ramp]), "LA").save(out + "gray_alpha.png")
Image.fromarray(rgb, "RGB").convert("CMYK").save(out + "cmyk.tif")

palette = Image.new("P", (5, 4))
palette.putpalette([200, 0, 0, 0, 200, 0, 0, 0, 200, 90, 90, 90])
palette.putdata([i % 4 for i in range(20)])
for ext in ("png", "bmp", "tif"):
    palette.save(out + "palette." + ext)
# Large enough to be stored interlaced, with 16 colours for longer LZW codes.
wide = Image.new("P", (40, 20))
wide.putpalette([v for i in range(16) for v in (i * 16, 255 - i * 16, i * 8)])
wide.putdata([(x * 3 + y * 7) % 16 for y in range(20) for x in range(40)])
wide.save(out + "palette.gif")

bits = Image.fromarray((np.arange(20) % 3 == 0).reshape(4, 5))
for ext in ("png", "bmp", "pbm", "tif"):
    bits.save(out + "bilevel." + ext)
Image.new("1", (5, 4), 1).save(out + "white_bilevel.png")

Image.fromarray(np.linspace(-1, 1, 20, dtype=np.float32).reshape(4, 5), "F").save(out + "float.tif")

with open(out + "text.txt", "w", newline="") as f:
    f.write("first line\r\nsecond\rthird\u2028fourth\n")
with open(out + "binary.bin", "wb") as f:
    f.write(bytes(range(250, 256)) + bytes(range(20)))
open(out + "empty.png", "wb").close()
with open(out + "rgb.png", "rb") as f:
    whole = f.read()
with open(out + "truncated.png", "wb") as f:
    f.write(whole[: len(whole) // 2])
