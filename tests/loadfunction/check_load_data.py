"""Runs generated load_data functions on raw files of known bytes.

Usage: check_load_data.py CASES_JSON, a list of {"module": path, "params": {...}}.
Each expected array comes from the raw decoders' layout rules (row-major
pixels), moved as the axis transfer and the import's reformatting say.
Exits 1 with a report if any case differs.
"""
import json
import random
import runpy
import sys

import numpy as np

GRAY = {"8-bit": "u1", "16-bit Signed": "i2", "16-bit Unsigned": "u2", "32-bit Signed": "i4",
        "32-bit Unsigned": "u4", "16-bit Real": "f2", "32-bit Real": "f4", "64-bit Real": "f8"}
COLOR = {"24-bit RGB": "rgb", "24-bit BGR": "bgr", "32-bit ARGB": "argb", "32-bit ABGR": "abgr"}
# Byte of an interleaved pixel, by colour type and little-endian flag, and plane of a planar frame, that give R, G, B, A.
INTERLEAVED = {("rgb", True): (2, 1, 0), ("rgb", False): (0, 1, 2), ("bgr", True): (0, 1, 2), ("bgr", False): (2, 1, 0),
               ("argb", True): (2, 1, 0, 3), ("argb", False): (1, 2, 3, 0),
               ("abgr", True): (0, 1, 2, 3), ("abgr", False): (3, 2, 1, 0)}
PLANAR = {"rgb": (0, 1, 2), "bgr": (2, 1, 0), "argb": (1, 2, 3, 0), "abgr": (3, 2, 1, 0)}


def pixel_bytes(p):
    t = p["imgType"]
    return np.dtype(GRAY[t]).itemsize if t in GRAY else len(COLOR[t]) if t in COLOR else 1 / 8


def decoded(p, raw):
    """The (D, H, W, C) stack. Gray elements keep their bytes: a little-endian host reads both orders alike."""
    t, H, W, k = p["imgType"], p["height"], p["width"], pixel_bytes(p)
    d, y, x = np.ogrid[:p["frame"], :H, :W]
    start = p["offset"] + d * (int(H * W * k) + p["gap"])
    n = y * W + x
    if t in GRAY:
        return raw[(start + n * k)[..., None] + np.arange(k)].view("<" + GRAY[t])
    if t in COLOR:
        ct = COLOR[t]
        if p["colorOrder"] == "ABCABC":
            return raw[(start + n * k)[..., None] + np.array(INTERLEAVED[ct, p["littleEndian"]])]
        return raw[start[..., None] + np.array(PLANAR[ct]) * H * W + n[..., None]]
    bit = 8 * start + n
    return (raw[bit // 8] >> (7 - bit % 8) & 1).astype(np.uint8)[..., None]


def transferred(a, p):
    """Output axis k shows input axis permute[k]; flips then reverse the shown columns (2) and rows (1)."""
    permute = [int(v) for v in p["permute"].split(",")]
    shape = [a.shape[axis] for axis in permute] + [a.shape[3]]
    shown = list(np.indices(shape))
    if p["hflip"]:
        shown[2] = shape[2] - 1 - shown[2]
    if p["vflip"]:
        shown[1] = shape[1] - 1 - shown[1]
    source = [None] * 3 + [shown[3]]
    for k, axis in enumerate(permute):
        source[axis] = shown[k]
    return a[tuple(source)]


def reformatted(a, p):
    """HWCD moves the frame axis last; without keep_c a single channel axis goes."""
    a, channel_axis = (np.moveaxis(a, 0, -1), 2) if p["data_format"] == "HWCD" else (a, 3)
    if not p["keep_c_on_gray"] and a.shape[channel_axis] == 1:
        a = a.squeeze(channel_axis)
    return a


def problem_of(module_path, p, seed):
    load_data = runpy.run_path(module_path)["load_data"]
    frame_bytes = int(p["height"] * p["width"] * pixel_bytes(p))
    # Exactly the bytes the layout needs: no gap behind the last frame.
    data = random.Random(seed).randbytes(p["offset"] + (p["frame"] - 1) * (frame_bytes + p["gap"]) + frame_bytes)
    expected = reformatted(transferred(decoded(p, np.frombuffer(data, np.uint8)), p), p)
    for size in (len(data), len(data) - 1):
        with open(module_path + ".raw", "wb") as f:
            f.write(data[:size])
        try:
            actual = load_data(module_path + ".raw")
        except ValueError as e:
            return None if size < len(data) and "File too small" in str(e) else repr(e)
        if size < len(data):
            return "a file one byte short was read"
        if actual.shape != expected.shape or actual.dtype != expected.dtype or actual.tobytes() != expected.tobytes():
            return f"got {actual.dtype}{actual.shape}\n{actual}\nwant {expected.dtype}{expected.shape}\n{expected}"


failures = [f"{case['params']}: {problem}" for seed, case in enumerate(json.load(open(sys.argv[1])))
            if (problem := problem_of(case["module"], case["params"], seed))]
print("\n\n".join(failures), file=sys.stderr)
sys.exit(1 if failures else 0)
