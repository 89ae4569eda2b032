#!/usr/bin/env python3
"""Every wrong class or shape of every input of fopen, fclose, fgets, fseek,
ftell, feof and ferror, run through `tw`, ends in its identifier.

    files_bad_arguments_test.py BUILD_DIR

The table below is the whole test: one call and the identifier it must
raise. All rows run in one tw process, each inside its own try block.
"""

import json
import os
import subprocess
import sys
import tempfile

# `f` is an open file (read), `w` a file open for writing only.
CASES = [
    # fopen: the first input picks the form
    ('fopen({})', 'KORVAN:fopen:InvalidInput'),
    ('fopen(int8(3))', 'KORVAN:fopen:InvalidInput'),
    ('fopen(true)', 'KORVAN:fopen:InvalidInput'),
    ('fopen(3.5)', 'KORVAN:fopen:NotScalarIntValued'),
    ('fopen([1 2])', 'KORVAN:fopen:NotScalarIntValued'),
    ('fopen([])', 'KORVAN:fopen:NotScalarIntValued'),
    ('fopen(NaN)', 'KORVAN:fopen:NotScalarIntValued'),
    ('fopen(1, "r")', 'KORVAN:legacy_two_part:badfilename_mx'),
    ('fopen(["ab"; "cd"])', 'KORVAN:fopen:NotVectorChar'),
    ('fopen(char(zeros(2, 0)))', 'KORVAN:fopen:NotVectorChar'),
    # fopen: permission, machine format, encoding, checked in that order
    ('fopen("x.txt", 5)', 'KORVAN:legacy_two_part:badpermission_mx'),
    ('fopen("x.txt", {})', 'KORVAN:legacy_two_part:badpermission_mx'),
    ('fopen("x.txt", "")', 'KORVAN:legacy_two_part:badpermission_mx'),
    ('fopen("x.txt", "z")', 'KORVAN:legacy_two_part:badpermission_mx'),
    ('fopen("x.txt", "rz")', 'KORVAN:fopen:IncorrectFileMode'),
    ('fopen("x.txt", "rw")', 'KORVAN:fopen:ConflictingExclusiveFileModes'),
    ('fopen("x.txt", "r", "x")', 'KORVAN:legacy:34'),
    ('fopen("x.txt", "r", 1)', 'KORVAN:legacy:34'),
    ('fopen("x.txt", "r", "")', 'KORVAN:legacy:34'),
    ('fopen("x.txt", "r", "n", 5)', 'KORVAN:fopen:EncodingString'),
    ('fopen("exists.txt", "r", "n", "no-such")', 'KORVAN:iofun:InvalidEncoding'),
    ('fopen("x.txt", 5, "x", 5)', 'KORVAN:legacy_two_part:badpermission_mx'),
    ('fopen("x.txt", "r", "x", 5)', 'KORVAN:legacy:34'),
    ('fopen()', 'KORVAN:minrhs'),
    ('fopen("x.txt", "r", "n", "UTF-8", 1)', 'KORVAN:maxrhs'),
    # fclose
    ('fclose("ALL")', 'KORVAN:legacy:30'),
    ('fclose("x")', 'KORVAN:legacy:30'),
    ('fclose(1)', 'KORVAN:legacy:26'),
    ('fclose(0)', 'KORVAN:legacy:26'),
    ('fclose(99)', 'KORVAN:legacy:26'),
    ('fclose(3.5)', 'KORVAN:FileIO:InvalidFid'),
    ('fclose(-1)', 'KORVAN:FileIO:InvalidFid'),
    ('fclose(NaN)', 'KORVAN:FileIO:InvalidFid'),
    ('fclose(1e300)', 'KORVAN:FileIO:InvalidFid'),
    ('fclose(int32(3))', 'KORVAN:FileIO:InvalidFid'),
    ('fclose([3 4])', 'KORVAN:FileIO:InvalidFid'),
    ('fclose({})', 'KORVAN:FileIO:InvalidFid'),
    ('fclose("")', 'KORVAN:FileIO:InvalidFid'),
    ('fclose(true)', 'KORVAN:FileIO:InvalidFid'),
    # fgets
    ('fgets(99)', 'KORVAN:legacy:26'),
    ('fgets("x")', 'KORVAN:FileIO:InvalidFid'),
    ('fgets(int8(3))', 'KORVAN:FileIO:InvalidFid'),
    ('fgets(f, "3")', 'KORVAN:fgets:ncharMustBeDouble'),
    ('fgets(f, int8(3))', 'KORVAN:fgets:ncharMustBeDouble'),
    ('fgets(f, {})', 'KORVAN:fgets:ncharMustBeDouble'),
    ('fgets(f, true)', 'KORVAN:fgets:ncharMustBeDouble'),
    ('fgets(f, [])', 'KORVAN:legacy:36'),
    ('fgets(f, -1)', 'KORVAN:fgets:InvalidSize'),
    ('fgets(f, NaN)', 'KORVAN:fgets:InvalidSize'),
    ('fgets(f, -Inf)', 'KORVAN:fgets:InvalidSize'),
    ('fgets(f, 1, 2)', 'KORVAN:maxrhs'),
    ('fgetl("x")', 'KORVAN:FileIO:InvalidFid'),
    # fseek: fid, offset, origin
    ('fseek(99, 0, 0)', 'KORVAN:legacy:26'),
    ('fseek("x", 0, 0)', 'KORVAN:FileIO:InvalidFid'),
    ('fseek(f, "1", 0)', 'KORVAN:fseek:offsetMustBeDouble'),
    ('fseek(f, {}, 0)', 'KORVAN:fseek:offsetMustBeDouble'),
    ('fseek(f, true, 0)', 'KORVAN:fseek:offsetMustBeDouble'),
    ('fseek(f, 0, {})', 'KORVAN:fseek:originMustBeDouble'),
    ('fseek(f, 0, int8(0))', 'KORVAN:fseek:originMustBeDouble'),
    ('fseek(f, 0, true)', 'KORVAN:fseek:originMustBeDouble'),
    ('fseek(f, [1 2], 0)', 'KORVAN:legacy:28'),
    ('fseek(f, [], 0)', 'KORVAN:legacy:28'),
    ('fseek(f, 1i, 0)', 'KORVAN:legacy:28'),
    ('fseek(f, 0, 2)', 'KORVAN:legacy:29'),
    ('fseek(f, 0, -2)', 'KORVAN:legacy:29'),
    ('fseek(f, 0, 0.5)', 'KORVAN:legacy:29'),
    ('fseek(f, 0, [])', 'KORVAN:legacy:29'),
    ('fseek(f, 0, "BOF")', 'KORVAN:legacy:29'),
    ('fseek(f, 0, "start")', 'KORVAN:legacy:29'),
    ('fseek(f, 0)', 'KORVAN:minrhs'),
    ('fseek(f, 0, 0, 0)', 'KORVAN:minrhs'),
    ('frewind("x")', 'KORVAN:FileIO:InvalidFid'),
    # ftell, feof
    ('ftell(99)', 'KORVAN:legacy:26'),
    ('ftell("x")', 'KORVAN:FileIO:InvalidFid'),
    ('ftell(f, 1)', 'KORVAN:minrhs'),
    ('feof(2.5)', 'KORVAN:FileIO:InvalidFid'),
    ('feof(99)', 'KORVAN:legacy:26'),
    ('feof({})', 'KORVAN:FileIO:InvalidFid'),
    # ferror
    ('ferror(99)', 'KORVAN:legacy:26'),
    ('ferror({})', 'KORVAN:FileIO:InvalidFid'),
    ('ferror(f, 1)', 'KORVAN:legacy:32'),
    ('ferror(f, {})', 'KORVAN:legacy:32'),
    ('ferror(f, "clean")', 'KORVAN:legacy:33'),
    ('ferror(f, "CLEAR")', 'KORVAN:legacy:33'),
    ('ferror(f, "clear", 1)', 'KORVAN:maxrhs'),
    # every built-in that takes a fid refuses integer classes
    ('fread(int32(3))', 'KORVAN:FileIO:InvalidFid'),
]


def main(argv):
    build = argv[1]
    tw = os.path.join(build, 'tw')
    lines = [
        'fid = fopen("exists.txt", "w"); fprintf(fid, "line\\n"); fclose(fid);',
        'f = fopen("exists.txt");',
        'w = fopen("written.txt", "w");',
    ]
    for k, (code, _) in enumerate(CASES):
        lines.append(f'try, {code}; r{k} = "no error"; catch err, r{k} = err.identifier; end, r{k}')
    with tempfile.TemporaryDirectory(prefix='tw_files_args_') as work:
        script = os.path.join(work, 'table.tw')
        out = os.path.join(work, 'out.jsonl')
        with open(script, 'w') as s:
            s.write('\n'.join(lines) + '\n')
        proc = subprocess.run([tw, '--json', out, script], cwd=work, capture_output=True,
                              text=True, timeout=120, stdin=subprocess.DEVNULL)
        records = []
        if os.path.exists(out):
            with open(out) as o:
                records = [json.loads(line) for line in o if line.strip()]
    got = {}
    for rec in records:
        if 'name' in rec and rec['name'].startswith('r'):
            got[int(rec['name'][1:])] = ''.join(rec['value'].get('rows', []))
    failures = 0
    for k, (code, want) in enumerate(CASES):
        have = got.get(k, '(no record)')
        if have != want:
            failures += 1
            print(f'FAIL: {code}\n   expected {want}\n   got      {have}')
    if proc.returncode != 0:
        failures += 1
        print(f'FAIL: tw exited with {proc.returncode}\n{proc.stderr}')
    print(f'{len(CASES) - failures} of {len(CASES)} bad-argument cases raise their identifier')
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
