# command_line_test.py TORVEX: torvex --import --quit --script, headless, on raw files and a folder prints
# what NumPy reads there, and its status tells whether the script raised.
import hashlib, os, subprocess, sys, tempfile

import numpy as np
from PIL import Image

REPORT = ("import hashlib, numpy as np\n"
          "print(*[f'{k} {v.shape} {v.dtype} {hashlib.sha1(np.ascontiguousarray(v)).hexdigest()}'\n"
          "        for k, v in sorted(globals().items()) if isinstance(v, np.ndarray)], sep='\\n')\n")


def report(name, a):
    return f"{name} {a.shape} {a.dtype} {hashlib.sha1(np.ascontiguousarray(a)).hexdigest()}\n"


def main(torvex):
    folder = tempfile.mkdtemp()
    rng = np.random.default_rng(7)
    # The panel's first layout: 8 bits, 400 wide, 640 high, one frame, the file running down the columns.
    plain = rng.integers(0, 256, 400 * 640, dtype=np.uint8)
    plain.tofile(os.path.join(folder, "plain.raw"))
    z, y, x = np.mgrid[0:5, 0:30, 0:40]  # a smooth little-endian volume whose name tells its layout
    named = (1000 + 300 * z + 20 * y + 7 * x).astype("<u2")
    named.tofile(os.path.join(folder, "scan_40x30x5_16bit.raw"))
    os.mkdir(os.path.join(folder, "images"))
    frames = rng.integers(0, 256, (4, 20, 16), dtype=np.uint8)
    [Image.fromarray(f).save(os.path.join(folder, "images", f"img_{i}.png")) for i, f in enumerate(frames)]
    open(os.path.join(folder, "report.py"), "w").write(REPORT)
    open(os.path.join(folder, "raises.py"), "w").write(REPORT + "raise ValueError('on purpose')\n")

    failed = False
    for options, path, script, expected, status in [  # expected None: only the status counts
            ([], "plain.raw", "report", report("cdata", plain.reshape(1, 400, 640).transpose(0, 2, 1)), 0),
            (["--guess"], "scan_40x30x5_16bit.raw", "report", report("cdata", named), 0),
            ([], "images", "report", report("data_imgs", frames), 0),
            ([], "plain.raw", "raises", None, 1)]:
        command = [torvex, *options, "--import", "--quit", "--script", os.path.join(folder, script + ".py"),
                   os.path.join(folder, path)]
        run = subprocess.run(command, capture_output=True, text=True, timeout=120,
                             env=dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=folder))
        if run.returncode != status or expected not in (None, run.stdout):
            failed = True
            print(f"FAIL {command}: status {run.returncode}, printed {run.stdout!r}, expected {expected!r}\n"
                  f"{run.stderr}")
    return failed


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
