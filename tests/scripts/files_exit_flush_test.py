#!/usr/bin/env python3
"""What a script writes reaches the file even when it never calls fclose, and
new files get mode 0666 less the umask.

    files_exit_flush_test.py BUILD_DIR
"""

import os
import stat
import subprocess
import sys
import tempfile

SCRIPT = '''
a = fopen("buffered.txt", "W");
fprintf(a, "no flush until the end");
b = fopen("bits.bin", "w");
fwrite(b, [7 1], "ubit3");
'''


def main(argv):
    tw = os.path.join(argv[1], 'tw')
    failures = []
    for umask in (0o022, 0o077):
        with tempfile.TemporaryDirectory(prefix='tw_files_exit_') as work:
            old = os.umask(umask)
            try:
                proc = subprocess.run([tw, '-e', SCRIPT], cwd=work, capture_output=True,
                                      text=True, timeout=60, stdin=subprocess.DEVNULL)
            finally:
                os.umask(old)
            if proc.returncode != 0:
                failures.append(f'tw exited with {proc.returncode}: {proc.stderr}')
                continue
            with open(os.path.join(work, 'buffered.txt'), 'rb') as f:
                if f.read() != b'no flush until the end':
                    failures.append('text written with "W" was lost at exit')
            with open(os.path.join(work, 'bits.bin'), 'rb') as f:
                # 3-bit fields 111 and 001, low bits first: the part-byte
                # left waiting for more bits is written at exit.
                if f.read() != b'\x0f':
                    failures.append('bits waiting in the carry were lost at exit')
            mode = stat.S_IMODE(os.stat(os.path.join(work, 'buffered.txt')).st_mode)
            if mode != 0o666 & ~umask:
                failures.append(f'umask {umask:o}: mode {mode:o}, expected {0o666 & ~umask:o}')
    for f in failures:
        print('FAIL:', f)
    print('ok' if not failures else f'{len(failures)} failures')
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
