#!/usr/bin/env python3
"""Peer check of textscan against pandas.read_csv, numpy.loadtxt and strtod.

    textscan_peer_test.py BUILD_DIR

CSV files are made with numbers in every notation, empty fields, NaN and Inf
words, quoted strings with commas and doubled quotes, comments, header lines,
CRLF and CR line ends, UTF-8 and Latin-1 text. textscan (through the Python
module of BUILD_DIR/python) reads each from a file and from a char array, and
what it returns must equal what pandas.read_csv and numpy.loadtxt read from
the same bytes, every double bit for bit. Then a million random numeric
fields are read and compared with the C library's strtod. The last line
printed is "N passed, M failed"; the exit status is 1 when any failed.
"""

import ctypes
import io
import os
import random
import struct
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

SEED = 13
STRTOD_FIELDS = 1_000_000


class Tally:
    def __init__(self):
        self.passed = 0
        self.failed = 0

    def check(self, ok, what):
        if ok:
            self.passed += 1
        else:
            self.failed += 1
            print("FAIL:", what)


def column(x):
    """A textscan column as a flat numpy array (1-by-1 results are scalars)."""
    return np.atleast_1d(np.asarray(x)).ravel()


def strings(x):
    return [x] if isinstance(x, str) else list(x)


def same_doubles(a, b):
    """Bit for bit, except that every NaN equals every NaN."""
    a = np.asarray(a, dtype=np.float64)
    b = np.asarray(b, dtype=np.float64)
    if a.shape != b.shape:
        return False
    nan = np.isnan(a)
    if not np.array_equal(nan, np.isnan(b)):
        return False
    return np.array_equal(a[~nan].view(np.uint64), b[~nan].view(np.uint64))


def as_doubles(series):
    """A pandas column as doubles. pandas leaves a column of text when one of
    its words is no number to it ("+Inf"); Python's float, correctly rounded
    like strtod, reads those."""
    if series.dtype == object:
        return np.array([float(v) if v != "" else np.nan for v in series], dtype=np.float64)
    return series.to_numpy(dtype=np.float64)


def random_number(rng):
    """One field in one of many notations, and never a word pandas reads as missing."""
    kind = rng.randrange(12)
    x = rng.choice([rng.uniform(-1e6, 1e6), rng.gauss(0, 1), 10 ** rng.uniform(-300, 300),
                    rng.randrange(-10**6, 10**6), struct.unpack("d", struct.pack("Q", rng.getrandbits(63)))[0]])
    if isinstance(x, float) and not np.isfinite(x):
        x = 1.0
    if kind == 0:
        return repr(float(x))
    if kind == 1:
        return "%.17g" % x
    if kind == 2:
        return "%e" % x
    if kind == 3:
        return "%.3f" % x
    if kind == 4:
        return "%d" % int(x)
    if kind == 5:
        return "%.25g" % x
    if kind == 6:
        return ("%.6E" % x)
    if kind == 7:
        return "+" + ("%.10g" % abs(x))
    if kind == 8:
        return "." + str(rng.randrange(10**9))
    if kind == 9:
        return str(rng.randrange(10**6)) + "."
    if kind == 10:
        return rng.choice(["NaN", "nan", "Inf", "-Inf", "inf", "-inf", "+Inf"])
    return "%.*g" % (rng.randrange(1, 18), x)


def numeric_table(rng, rows, cols, empty_share=0.05):
    table = []
    for _ in range(rows):
        table.append(["" if rng.random() < empty_share else random_number(rng) for _ in range(cols)])
    return table


def write_bytes(folder, name, data):
    path = os.path.join(folder, name)
    with open(path, "wb") as f:
        f.write(data)
    return path


def textscan_file(path, fmt, *options, encoding=None):
    fid = twfileio.fopen(path, "r", "n", encoding) if encoding else twfileio.fopen(path, "r")
    try:
        return twfileio.textscan(fid, fmt, *options)
    finally:
        twfileio.fclose(fid)


def check_numbers(folder, rng, tally):
    """Numbers in every notation, with each line end, header lines and comments."""
    cols = 6
    for line_end in ["\n", "\r\n", "\r"]:
        table = numeric_table(rng, 400, cols)
        body = line_end.join(",".join(r) for r in table) + line_end
        header = "first,header,line" + line_end + "second" + line_end
        data = (header + body).encode()
        path = write_bytes(folder, "numbers.csv", data)
        fmt = "%f" * cols
        ours_file = textscan_file(path, fmt, "Delimiter", ",", "HeaderLines", 2)
        ours_text = twfileio.textscan(data.decode(), fmt, "Delimiter", ",", "HeaderLines", 2)
        peer = pd.read_csv(io.BytesIO(data), header=None, skiprows=2, float_precision="round_trip",
                           keep_default_na=False, na_values=[""])
        for k in range(cols):
            expected = as_doubles(peer[k])
            tally.check(same_doubles(column(ours_file[k]), expected),
                        f"numbers, line end {line_end!r}, column {k}, from a file")
            tally.check(same_doubles(column(ours_text[k]), expected),
                        f"numbers, line end {line_end!r}, column {k}, from text")

    # numpy.loadtxt reads no empty fields; comments and blank lines it skips.
    table = numeric_table(rng, 300, cols, empty_share=0)
    lines = []
    for r in table:
        lines.append(",".join(r))
        if rng.random() < 0.1:
            lines.append("# a comment, 1, 2")
        if rng.random() < 0.05:
            lines.append("")
    data = ("\n".join(lines) + "\n").encode()
    path = write_bytes(folder, "commented.csv", data)
    ours = textscan_file(path, "%f" * cols, "Delimiter", ",", "CommentStyle", "#")
    peer = np.loadtxt(path, delimiter=",", comments="#", ndmin=2)
    for k in range(cols):
        tally.check(same_doubles(column(ours[k]), peer[:, k]), f"loadtxt, column {k}")

    # Whitespace-separated, as numpy.loadtxt reads by default.
    data = "\n".join("  ".join(r) for r in table).encode()
    path = write_bytes(folder, "spaced.txt", data)
    ours = textscan_file(path, "%f" * cols, "CollectOutput", True)
    peer = np.loadtxt(path, ndmin=2)
    tally.check(same_doubles(np.asarray(ours[0]), peer), "loadtxt, spaces, CollectOutput")


def check_integers(folder, rng, tally):
    values = [rng.randrange(-2**63, 2**63) for _ in range(300)]
    values += [2**63 - 1, -2**63, 0, 2**53 + 1, -(2**53 + 1)]
    data = "\n".join(str(v) for v in values).encode()
    path = write_bytes(folder, "ints.csv", data)
    ours = column(textscan_file(path, "%d64")[0])
    peer = pd.read_csv(io.BytesIO(data), header=None, dtype=np.int64)[0].to_numpy()
    tally.check(ours.dtype == np.int64 and np.array_equal(ours, peer), "int64 column")


def random_text(rng, alphabet):
    return "".join(rng.choice(alphabet) for _ in range(rng.randrange(0, 8)))


def check_strings(folder, rng, tally):
    """Quoted strings with commas and doubled quotes, in UTF-8 and Latin-1."""
    for encoding, alphabet in [("UTF-8", "ab ,\"xyz\u00e9\u20ac\u4e2d"), ("ISO-8859-1", "ab ,\"xyz\u00e9\u00fc")]:
        rows = []
        texts = []
        for i in range(300):
            t = random_text(rng, alphabet)
            texts.append(t)
            rows.append('"' + t.replace('"', '""') + '",' + str(i))
        data = ("\n".join(rows) + "\n").encode(encoding)
        path = write_bytes(folder, "quoted.csv", data)
        ours = textscan_file(path, "%q %d", "Delimiter", ",", encoding=encoding)
        peer = pd.read_csv(io.BytesIO(data), header=None, encoding=encoding, dtype={0: str},
                           keep_default_na=False)
        got = strings(ours[0])
        tally.check(got == list(peer[0]), f"quoted strings in {encoding}")
        tally.check(np.array_equal(column(ours[1]), peer[1].to_numpy()), f"numbers after quotes in {encoding}")

    # Unquoted text with a tab delimiter: every field as it stands.
    rows = [[random_text(rng, "ab xy\u00e9") or "z" for _ in range(3)] for _ in range(200)]
    data = ("\n".join("\t".join(r) for r in rows) + "\n").encode()
    path = write_bytes(folder, "tabbed.tsv", data)
    ours = textscan_file(path, "%s %s %s", "Delimiter", "\\t", "Whitespace", "")
    peer = pd.read_csv(io.BytesIO(data), header=None, sep="\t", dtype=str, keep_default_na=False)
    for k in range(3):
        tally.check(strings(ours[k]) == list(peer[k]), f"tab-separated text, column {k}")


def check_strtod(rng, tally):
    """A million random fields, from a char array, against the C library."""
    libc = ctypes.CDLL(None)
    libc.strtod.restype = ctypes.c_double
    libc.strtod.argtypes = [ctypes.c_char_p, ctypes.POINTER(ctypes.c_char_p)]
    fields = []
    for _ in range(STRTOD_FIELDS):
        digits = "".join(rng.choice("0123456789") for _ in range(rng.randrange(1, 25)))
        point = rng.randrange(len(digits) + 1)
        text = digits[:point] + "." + digits[point:] if rng.random() < 0.7 else digits
        if rng.random() < 0.5:
            text += "e" + str(rng.randrange(-330, 310))
        if rng.random() < 0.3:
            text = "-" + text
        fields.append(text)
    ours = column(twfileio.textscan("\n".join(fields), "%f")[0])
    expected = np.array([libc.strtod(f.encode(), None) for f in fields])
    bad = np.nonzero(ours.view(np.uint64) != expected.view(np.uint64))[0]
    tally.check(len(ours) == len(fields) and len(bad) == 0,
                f"strtod on {len(fields)} fields: {len(bad)} differ, first {[fields[i] for i in bad[:5]]}")


def main():
    rng = random.Random(SEED)
    tally = Tally()
    with tempfile.TemporaryDirectory() as folder:
        check_numbers(folder, rng, tally)
        check_integers(folder, rng, tally)
        check_strings(folder, rng, tally)
    check_strtod(rng, tally)
    print(f"{tally.passed} passed, {tally.failed} failed")
    return 1 if tally.failed else 0


if __name__ == "__main__":
    sys.exit(main())
