#!/usr/bin/env python3
"""Peer check of fread against numpy.frombuffer.

    transfer_numpy_test.py BUILD_DIR

Random bytes are read by `BUILD_DIR/tw` with every whole-byte precision name
in both byte orders, keeping the class ("*name") and converting to double
("name"), plainly and in groups with a skip, and every result must equal what
numpy.frombuffer makes of the same bytes with the matching dtype. The last
line printed is "N passed, M failed"; the exit status is 1 when any failed.
"""

import json
import os
import subprocess
import sys
import tempfile

try:
    import numpy as np
except ImportError:
    # numpy comes from Debian's python3-numpy; another Python found first on
    # the PATH (a pyenv one, say) hands over to the system's.
    system = "/usr/bin/python3"
    if os.path.exists(system) and os.path.realpath(sys.executable) != os.path.realpath(system):
        os.execv(system, [system] + sys.argv)
    raise

# Precision names and the numpy type of their elements (byte order added).
NAMES = {
    "bool": "bool", "logical": "bool",
    "schar": "i1", "signed char": "i1", "int8": "i1", "integer*1": "i1",
    "uchar": "u1", "unsigned char": "u1", "uint8": "u1",
    "short": "i2", "int16": "i2", "integer*2": "i2",
    "ushort": "u2", "unsigned short": "u2", "uint16": "u2",
    "int": "i4", "long": "i4", "int32": "i4", "integer*4": "i4",
    "uint": "u4", "unsigned int": "u4", "ulong": "u4", "unsigned long": "u4", "uint32": "u4",
    "int64": "i8", "integer*8": "i8",
    "uint64": "u8",
    "float": "f4", "single": "f4", "float32": "f4", "real*4": "f4",
    "double": "f8", "float64": "f8", "real*8": "f8",
}
CLASSES = {"bool": "logical", "i1": "int8", "u1": "uint8", "i2": "int16", "u2": "uint16",
           "i4": "int32", "u4": "uint32", "i8": "int64", "u8": "uint64", "f4": "single",
           "f8": "double"}
ORDERS = {"l": "<", "b": ">"}
REPEAT, SKIP = 3, 5


def peer(data, code, order):
    """What numpy makes of the bytes, as fread's class would hold it."""
    if code == "bool":
        return np.frombuffer(data, dtype="u1") != 0
    dtype = np.dtype(ORDERS[order] + code)
    usable = len(data) - len(data) % dtype.itemsize
    return np.frombuffer(data[:usable], dtype=dtype)


def grouped(data, code, order):
    """The elements of groups of REPEAT with SKIP bytes after each."""
    size = 1 if code == "bool" else np.dtype(code).itemsize
    kept = bytearray()
    step = REPEAT * size + SKIP
    for start in range(0, len(data), step):
        kept += data[start:start + REPEAT * size]
    return peer(bytes(kept), code, order)


def decode(value):
    """A JSON value record of tw as a numpy array (column-major order kept)."""
    real = [float(x) if isinstance(x, str) else x for x in value["real"]]
    cls = value["class"]
    if cls == "logical":
        return np.array(real, dtype=bool)
    dtype = {v: k for k, v in CLASSES.items()}[cls] if cls in CLASSES.values() else "f8"
    dtype = "bool" if dtype == "bool" else "=" + dtype
    return np.array(real, dtype=dtype)


def same(got, want):
    if got.shape != want.shape:
        return False
    if got.dtype.kind == "f" or want.dtype.kind == "f":
        g = got.astype(np.float64)
        w = want.astype(np.float64)
        nan = np.isnan(w)
        return bool(np.array_equal(np.isnan(g), nan) and np.array_equal(g[~nan], w[~nan]))
    return bool(np.array_equal(got.astype(want.dtype), want))


def main():
    # Random bytes make signalling NaNs, which numpy warns about when it
    # widens them; they are compared as NaN all the same.
    np.seterr(invalid="ignore")
    build = sys.argv[1]
    tw = os.path.join(build, "tw")
    rng = np.random.default_rng(20261121)
    passed = failed = 0
    with tempfile.TemporaryDirectory() as folder:
        data = rng.integers(0, 256, 4099, dtype=np.uint8).tobytes()
        path = os.path.join(folder, "random.bin")
        with open(path, "wb") as f:
            f.write(data)
        lines, checks = [], []
        for k, (name, code) in enumerate(NAMES.items()):
            for order in ORDERS:
                for form in ("keep", "double", "grouped"):
                    var = f"v{k}_{order}_{form}"
                    prec = {"keep": "*" + name, "double": name,
                            "grouped": f"{REPEAT}*{name}=>{CLASSES[code]}"}[form]
                    skip = SKIP if form == "grouped" else 0
                    lines.append(f"f = fopen('{path}', 'r', '{order}');")
                    lines.append(f"{var} = fread(f, Inf, '{prec}', {skip})")
                    lines.append("fclose(f);")
                    if form == "grouped":
                        want = grouped(data, code, order)
                    else:
                        want = peer(data, code, order)
                    if form == "double":
                        want = want.astype(np.float64)
                    checks.append((var, want, f"{prec} order {order}"))
        # "noconvert" moves bytes as they stand, whatever the byte order.
        for order in ORDERS:
            var = f"raw_{order}"
            lines.append(f"f = fopen('{path}', 'r', '{order}');")
            lines.append(f"{var} = fread(f, 4096, 'noconvert')")
            lines.append("fclose(f);")
            want = np.frombuffer(data[:4096], dtype="=f8")
            checks.append((var, want, f"noconvert order {order}"))

        script = os.path.join(folder, "peer.tw")
        out = os.path.join(folder, "out.json")
        with open(script, "w") as f:
            f.write("\n".join(lines) + "\n")
        run = subprocess.run([tw, "--json", out, script], capture_output=True, text=True,
                             timeout=600)
        if run.returncode != 0:
            print(run.stdout, run.stderr)
        records = {}
        with open(out) as f:
            for line in f:
                record = json.loads(line)
                if "name" in record:
                    records[record["name"]] = record["value"]
                else:
                    print("unexpected record:", line.strip())
        for var, want, what in checks:
            value = records.get(var)
            shape = [want.size, 1] if want.size else [0, 0]
            ok = (value is not None and value["size"] == shape
                  and same(decode(value).reshape(-1), want.reshape(-1)))
            if ok:
                passed += 1
            else:
                failed += 1
                print("FAILED:", what, "got", None if value is None else value["size"])
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
