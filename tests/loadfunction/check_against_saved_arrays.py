"""Runs generated load functions and compares what they return with arrays the window made.

Usage: check_against_saved_arrays.py CASES_JSON, a list of
{"label": text, "module": path, "function": name, "argument": path, "expected": path of a .npy}.
Element type, shape and every byte must match (bytes, so that NaNs compare too).
Exits 1 with a report if any case differs.
"""
import json
import runpy
import sys

import numpy as np


def problem_of(case):
    try:
        actual = runpy.run_path(case["module"])[case["function"]](case["argument"])
    except Exception as e:
        return repr(e)
    expected = np.load(case["expected"])
    if actual.dtype != expected.dtype or actual.shape != expected.shape or actual.tobytes() != expected.tobytes():
        return f"got {actual.dtype}{actual.shape}\n{actual}\nwant {expected.dtype}{expected.shape}\n{expected}"
    return None


failures = [f"{case['label']}: {problem}" for case in json.load(open(sys.argv[1]))
            if (problem := problem_of(case))]
print("\n\n".join(failures), file=sys.stderr)
sys.exit(1 if failures else 0)
