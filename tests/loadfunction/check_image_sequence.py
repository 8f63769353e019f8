"""Runs generated load_image_sequence functions on a folder of small images.

Usage: check_image_sequence.py FOLDER ALL_FILES_MODULE A_AND_B_MODULE, where the
first module filters with "*.*" and the second keeps a.png and b.png only.
"""
import os
import runpy
import sys

import numpy as np
import PIL.Image

folder = sys.argv[1]
gray = np.arange(6, dtype=np.uint8).reshape(2, 3) * 40
rgb = np.arange(48, dtype=np.uint8).reshape(4, 4, 3)
rgba = (np.arange(24, dtype=np.uint8) + 100).reshape(3, 2, 4)
deep = np.array([[0, 1000], [2000, 3000]], dtype=np.uint16)
for name, pixels in {"a.png": gray, "b.png": rgb, "c.png": rgba, "d.png": deep}.items():
    PIL.Image.fromarray(pixels).save(os.path.join(folder, name))
with open(os.path.join(folder, "notes.txt"), "w") as f:
    f.write("not an image")


def load(module_path):
    return runpy.run_path(module_path)["load_image_sequence"](folder)


stack = load(sys.argv[2])
assert stack.shape == (4, 4, 4, 3) and stack.dtype == np.uint8, (stack.shape, stack.dtype)
# Gray repeats to three channels, centred: one row above and below, the odd column right.
assert (stack[0, 1:3, 0:3] == gray[:, :, None]).all() and stack[0].sum() == 3 * gray.sum(), stack[0]
assert (stack[1] == rgb).all()
# Alpha goes; the odd row goes to the bottom.
assert (stack[2, 0:3, 1:3] == rgba[:, :, :3]).all() and stack[2].sum() == rgba[:, :, :3].sum(), stack[2]
# 16 bits scale from their minimum to their maximum.
assert (stack[3, 1:3, 1:3] == np.array([[0, 85], [170, 255]])[:, :, None]).all(), stack[3]

assert load(sys.argv[3]).shape == (2, 4, 4, 3)
