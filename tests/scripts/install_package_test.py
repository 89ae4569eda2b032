#!/usr/bin/env python3
"""The installed package works from outside the tree.

    install_package_test.py BUILD_DIR

Installs BUILD_DIR into a scratch prefix, checks the sonames and that no
RUNPATH points into the build, configures examples/embed against the prefix
with find_package, builds and runs it, builds the same program with the
pkg-config file, and imports the installed Python module (when it was built).
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

build = os.path.abspath(sys.argv[1])
source = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
example = os.path.join(source, "examples", "embed")

failures = []
checks = 0


def check(ok, what):
    global checks
    checks += 1
    if not ok:
        failures.append(what)
        print("FAILED:", what)


def cache(name):
    with open(os.path.join(build, "CMakeCache.txt")) as f:
        for line in f:
            m = re.match(rf"{name}:[A-Z]+=(.*)", line.strip())
            if m:
                return m.group(1)
    return ""


def run(cmd, **kw):
    return subprocess.run(cmd, check=True, capture_output=True, text=True, **kw)


def dynamic(path):
    """SONAME and RUNPATH entries of a shared object or program."""
    out = run(["readelf", "-d", path]).stdout
    soname = re.search(r"\(SONAME\)\s+Library soname: \[(.*)\]", out)
    runpath = re.search(r"\((?:RUNPATH|RPATH)\)\s+Library (?:runpath|rpath): \[(.*)\]", out)
    return (soname.group(1) if soname else None,
            runpath.group(1).split(":") if runpath else [])


sanitized = cache("TW_SANITIZE").upper() in ("ON", "1", "TRUE")
compiler = cache("CMAKE_CXX_COMPILER") or "g++"
sanitize_flags = "-fsanitize=address,undefined" if sanitized else ""
env = dict(os.environ)
if sanitized:
    # Programs of other runtimes (python) need the sanitizer loaded first.
    # libstdc++ too: the sanitizer looks for the C++ throw when it starts.
    env["LD_PRELOAD"] = ":".join(
        run([compiler, f"-print-file-name={lib}"]).stdout.strip()
        for lib in ("libasan.so", "libstdc++.so.6"))
    env["ASAN_OPTIONS"] = "detect_leaks=0"

scratch = tempfile.mkdtemp(prefix="tw_install_")
try:
    prefix = os.path.join(scratch, "prefix")
    run(["cmake", "--install", build, "--prefix", prefix])
    libdir = os.path.join(prefix, cache("CMAKE_INSTALL_LIBDIR") or "lib")

    for name in ("twfileio", "twhost"):
        real = os.path.join(libdir, f"lib{name}.so.1")
        check(os.path.exists(real), f"lib{name}.so.1 installed")
        check(os.path.islink(os.path.join(libdir, f"lib{name}.so")), f"lib{name}.so is a link")
        if os.path.exists(real):
            soname, runpath = dynamic(real)
            check(soname == f"lib{name}.so.1", f"lib{name} soname is lib{name}.so.1, not {soname}")
            leaks = [p for p in runpath if p.startswith((build, source))]
            check(not leaks, f"lib{name} has no RUNPATH into the tree: {leaks}")
    for header in ("twfileio/twfileio.h", "twhost/kx_array.h", "fileio/builtin_table.h"):
        check(os.path.exists(os.path.join(prefix, "include", header)), f"{header} installed")

    # find_package, as a user's project does it.
    out_file = os.path.join(scratch, "numbers.bin")
    example_build = os.path.join(scratch, "example")
    run(["cmake", "-S", example, "-B", example_build, "-G", "Ninja",
         f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_COMPILER={compiler}",
         f"-DCMAKE_CXX_FLAGS={sanitize_flags}"])
    run(["cmake", "--build", example_build])
    program = os.path.join(example_build, "embed_example")
    _, runpath = dynamic(program)
    check(all(not p.startswith(build) for p in runpath), "the example links the installed copy")
    result = subprocess.run([program, out_file], capture_output=True, text=True)
    check(result.returncode == 0, f"example runs: {result.stderr}")
    check("read 5 values: 0 1.5 3 4.5 6" in result.stdout, f"example reads back: {result.stdout}")
    check("KORVAN:legacy:26:" in result.stdout, f"example reports the error: {result.stdout}")
    check(os.path.getsize(out_file) == 5 * 8, "the file holds five doubles")

    # pkg-config, as a Makefile does it.
    pc_env = dict(os.environ, PKG_CONFIG_PATH=os.path.join(libdir, "pkgconfig"))
    flags = run(["pkg-config", "--cflags", "--libs", "twfileio"], env=pc_env).stdout.split()
    program = os.path.join(scratch, "embed_pc")
    run([compiler, *sanitize_flags.split(), os.path.join(example, "main.cc"), "-o", program,
         *flags, f"-Wl,-rpath,{libdir}"])
    result = subprocess.run([program, out_file], capture_output=True, text=True)
    check(result.returncode == 0 and "read 5 values" in result.stdout,
          f"pkg-config build runs: {result.stdout} {result.stderr}")

    modules = [os.path.join(root, f) for root, _, files in os.walk(prefix) for f in files
               if f.startswith("twfileio.") and f.endswith(".so")]
    if cache("TW_PYTHON").upper() in ("ON", "1", "TRUE"):
        check(len(modules) == 1, f"one Python module installed: {modules}")
    if modules:
        _, runpath = dynamic(modules[0])
        check(all(p.startswith("$ORIGIN") for p in runpath), f"module RUNPATH: {runpath}")
        code = ("import twfileio, numpy\n"
                "fid = twfileio.fopen(%r)\n"
                "data = twfileio.fread(fid, numpy.inf, 'double')\n"
                "twfileio.fclose(fid)\n"
                "maps = open('/proc/self/maps').read()\n"
                "print(data.ravel().tolist(), twfileio.__file__)\n"
                "print([l.split()[-1] for l in maps.splitlines() if 'libtwfileio' in l][0])\n"
                % out_file)
        py_env = dict(env, PYTHONPATH=os.path.dirname(modules[0]))
        result = subprocess.run(["/usr/bin/python3", "-c", code], capture_output=True, text=True,
                                env=py_env, cwd=scratch)
        check(result.returncode == 0, f"installed module imports: {result.stderr}")
        lines = result.stdout.splitlines()
        check(len(lines) == 2 and lines[0].startswith("[0.0, 1.5, 3.0, 4.5, 6.0] " + prefix),
              f"installed module reads the file: {result.stdout}")
        check(len(lines) == 2 and lines[1].startswith(prefix),
              f"installed module loads the installed library: {result.stdout}")
finally:
    shutil.rmtree(scratch)

print(f"{checks - len(failures)} passed, {len(failures)} failed")
sys.exit(1 if failures else 0)
