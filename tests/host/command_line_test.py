"""torvex --import --quit --script run headless on a raw file and on a folder:
what the script prints of the imported array must be what NumPy reads there,
and the exit status must tell whether the script failed.
Usage: command_line_test.py TORVEX"""
import hashlib
import os
import subprocess
import sys
import tempfile

import numpy as np
from PIL import Image

REPORT = ("import hashlib, numpy as np\n"
          "for name, v in sorted(globals().items()):\n"
          "    if isinstance(v, np.ndarray):\n"
          "        print(name, v.shape, v.dtype, hashlib.sha1(np.ascontiguousarray(v).tobytes()).hexdigest())\n")


def report(name, array):
    return f"{name} {array.shape} {array.dtype} {hashlib.sha1(np.ascontiguousarray(array).tobytes()).hexdigest()}\n"


def main(torvex):
    folder = tempfile.mkdtemp()
    rng = np.random.default_rng(7)
    # The panel's first layout: 8 bits, 400 wide, 640 high, one frame, the file running down the columns.
    plain = rng.integers(0, 256, 400 * 640, dtype=np.uint8)
    plain.tofile(os.path.join(folder, "plain.raw"))
    # A smooth little-endian 16-bit volume whose name tells its layout.
    z, y, x = np.mgrid[0:5, 0:30, 0:40]
    named = (1000 + 300 * z + 20 * y + 7 * x).astype("<u2")
    named.tofile(os.path.join(folder, "scan_40x30x5_16bit.raw"))
    images = os.path.join(folder, "images")
    os.mkdir(images)
    frames = rng.integers(0, 256, (4, 20, 16), dtype=np.uint8)
    for i, frame in enumerate(frames):
        Image.fromarray(frame).save(os.path.join(images, f"img_{i:02d}.png"))
    scripts = {"report": REPORT, "raises": REPORT + "raise ValueError('on purpose')\n",
               "exits": "import sys\nsys.exit(0)\n"}
    for name, text in scripts.items():
        with open(os.path.join(folder, name + ".py"), "w") as f:
            f.write(text)

    cases = [  # options, path, script, expected stdout (None: not checked), exit status
        ([], "plain.raw", "report", report("cdata", plain.reshape(1, 400, 640).transpose(0, 2, 1)), 0),
        (["--guess"], "scan_40x30x5_16bit.raw", "report", report("cdata", named), 0),
        ([], "images", "report", report("data_imgs", frames), 0),
        (["--folder"], "images", "report", report("data_imgs", frames), 0),
        ([], "plain.raw", "raises", None, 1),
        ([], "plain.raw", "exits", None, 0),
    ]
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=folder)
    failures = 0
    for options, path, script, expected, status in cases:
        command = [torvex, *options, "--import", "--quit", "--script", os.path.join(folder, script + ".py"),
                   os.path.join(folder, path)]
        run = subprocess.run(command, env=env, capture_output=True, text=True, timeout=120)
        if run.returncode != status or (expected is not None and run.stdout != expected):
            failures += 1
            print(f"FAIL {' '.join(command)}\n status {run.returncode}, expected {status}\n"
                  f" printed {run.stdout!r}\n expected {expected!r}\n stderr {run.stderr}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
