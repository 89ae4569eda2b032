#!/usr/bin/env python3
"""Peer check of textscan's %D and %C against pandas.

    datetime_pandas_test.py BUILD_DIR

Dates: 100,000 random instants from 1900 to 2100, with nanoseconds, are
written in each of five patterns (fractions of 9, 6, 3 and 7 digits, and
minutes alone), read by textscan with the pattern (through the Python module
of BUILD_DIR/python, which turns each double-double into datetime64[ns]),
and by pandas.to_datetime with the equivalent explicit format. Every instant
must agree to the nanosecond.

Categories: two CSV columns of random values (quoted ones with commas and
doubled quotes, non-ASCII letters, empty fields) are read by textscan's %C
and by pandas.read_csv(dtype='category') from the same file: the categories
must be the same, and the codes must agree once mapped to their names.

The last line printed is "N passed, M failed"; the exit status is 1 when any
failed.
"""

import os
import random
import sys
import tempfile

try:
    import numpy as np
    import pandas as pd
except ImportError:
    system = "/usr/bin/python3"
    if os.path.exists(system) and os.path.realpath(sys.executable) != os.path.realpath(system):
        os.execv(system, [system] + sys.argv)
    raise

sys.dont_write_bytecode = True  # nothing written beside the scripts
from sanitizer_preload import preload_sanitizer  # noqa: E402

preload_sanitizer(sys.argv[1])
sys.path.insert(0, os.path.join(sys.argv[1], "python"))
import twfileio  # noqa: E402

SEED = 14
INSTANTS = 100_000
CATEGORY_FIELDS = 50_000

# Our pattern, pandas' format, and how the fraction is written (digits, or 0
# for none and no seconds).
PATTERNS = [
    ("yyyy-MM-dd HH:mm:ss.SSSSSSSSS", "%Y-%m-%d %H:%M:%S.%f", 9),
    ("dd/MM/yyyy HH:mm:ss.SSSSSS", "%d/%m/%Y %H:%M:%S.%f", 6),
    ("yyyy-MM-dd'T'HH:mm:ss.SSS", "%Y-%m-%dT%H:%M:%S.%f", 3),
    ("yyyyMMdd HHmmss.SSSSSSS", "%Y%m%d %H%M%S.%f", 7),
    ("MM/dd/yyyy HH:mm", "%m/%d/%Y %H:%M", 0),
]


def date_texts(stamps, pattern_format, digits):
    """The instants written in pandas' format, fraction cut to `digits`."""
    parts = pd.DatetimeIndex(stamps)
    nanos = (parts.microsecond * 1000 + parts.nanosecond).to_numpy()
    base = pd.Series(parts).dt.strftime(pattern_format.replace(".%f", "")).to_numpy()
    if digits == 0:
        return list(base)
    scale = 10 ** (9 - digits)
    return [f"{b}.{n // scale:0{digits}d}" for b, n in zip(base, nanos)]


def read_dates(path, pattern):
    fid = twfileio.fopen(path)
    try:
        return twfileio.textscan(fid, "%{" + pattern + "}D", "Delimiter", ",")[0]
    finally:
        twfileio.fclose(fid)


def check_dates(rng, folder, tally):
    low = np.datetime64("1900-01-01T00:00:00", "ns").astype(np.int64)
    high = np.datetime64("2100-12-31T23:59:59", "ns").astype(np.int64)
    stamps = rng.integers(low, high, size=INSTANTS, dtype=np.int64).astype("datetime64[ns]")
    for pattern, fmt, digits in PATTERNS:
        texts = date_texts(stamps, fmt, digits)
        path = os.path.join(folder, "dates.csv")
        with open(path, "w", encoding="utf-8") as f:
            f.write("\n".join(texts) + "\n")
        ours = np.asarray(read_dates(path, pattern)).reshape(-1)
        theirs = pd.to_datetime(texts, format=fmt).to_numpy()
        same = ours.astype(np.int64) == theirs.astype(np.int64)
        bad = np.flatnonzero(~same)
        if len(ours) == len(theirs) and not len(bad):
            tally.passed(f"{pattern}: {len(texts)} instants agree to the nanosecond")
        else:
            first = bad[0] if len(bad) else 0
            tally.failed(f"{pattern}: {len(bad)} differ; {texts[first]!r}: ours {ours[first]}, "
                         f"pandas {theirs[first]}")


def category_value(rng):
    roll = rng.random()
    if roll < 0.05:
        return ""
    if roll < 0.15:
        return '"with, comma"'
    if roll < 0.2:
        return '"say ""hi"""'
    names = ["apple", "Apple", "pear", "ÿber", "Zürich", "kiwi", "fig", "a b", "10", "ñ"]
    return names[rng.integers(len(names))]


def check_categories(rng, folder, tally):
    # Two columns, so that a line never is blank (textscan passes blank
    # lines over): a key that is never empty, and the value.
    path = os.path.join(folder, "categories.csv")
    keys = [f"k{rng.integers(20)}" for _ in range(CATEGORY_FIELDS)]
    values = [category_value(rng) for _ in range(CATEGORY_FIELDS)]
    with open(path, "w", encoding="utf-8") as f:
        f.write("".join(f"{k},{v}\n" for k, v in zip(keys, values)))
    fid = twfileio.fopen(path)
    try:
        columns = twfileio.textscan(fid, "%C %C", "Delimiter", ",")
    finally:
        twfileio.fclose(fid)
    frame = pd.read_csv(path, header=None, dtype="category", keep_default_na=False,
                        na_values=[""])
    for index, (codes, categories) in enumerate(columns):
        ours = pd.Categorical.from_codes(np.asarray(codes).reshape(-1), categories)
        theirs = frame[index]
        if list(ours.categories) == list(theirs.cat.categories):
            tally.passed(f"column {index + 1}: {len(categories)} categories, in the same order")
        else:
            tally.failed(f"column {index + 1}: categories differ: {list(ours.categories)} vs "
                         f"{list(theirs.cat.categories)}")
        ours_names = pd.Series(ours).astype(object).where(pd.notna(ours), None).tolist()
        theirs_names = theirs.astype(object).where(theirs.notna(), None).tolist()
        if ours_names == theirs_names:
            tally.passed(f"column {index + 1}: {len(ours_names)} codes agree once mapped")
        else:
            first = next(i for i, (a, b) in enumerate(zip(ours_names, theirs_names)) if a != b)
            tally.failed(f"column {index + 1}, field {first}: ours {ours_names[first]!r}, "
                         f"pandas {theirs_names[first]!r}")


class Tally:
    def __init__(self):
        self.good = 0
        self.bad = 0

    def passed(self, what):
        self.good += 1
        print("ok:", what)

    def failed(self, what):
        self.bad += 1
        print("FAILED:", what)


def main():
    rng = np.random.default_rng(SEED)
    random.seed(SEED)
    tally = Tally()
    with tempfile.TemporaryDirectory() as folder:
        check_dates(rng, folder, tally)
        check_categories(rng, folder, tally)
    print(f"{tally.good} passed, {tally.bad} failed")
    return 1 if tally.bad else 0


if __name__ == "__main__":
    sys.exit(main())
