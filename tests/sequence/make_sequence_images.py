"""Writes the still images and other files that the sequence tests load."""
import base64
import struct
import sys
import zlib

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

# Damaged headers. A PNG that claims 30000 x 30000 RGBA pixels (3.6 GB) in a few
# bytes, and a GIF header over a broken PNG that makes the GIF reader give up
# with a logic error instead of a read error.
def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
with open(out + "claims_huge.png", "wb") as f:
    f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 30000, 30000, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(bytes(64))) + chunk(b"IEND", b""))
with open(out + "damaged.gif", "wb") as f:
    f.write(base64.b64decode("R0lGODdhTWluZ0xpNDOJUE5HDQoaCgJJtEkqAAAAAA1JSERSAHcAAAD1//v2BAABAAAIAAAABggrAAA="))
