#!/usr/bin/env python3
"""fgets against Python's codecs: random text in each encoding, written by
Python with mixed line terminators, read back line by line through `tw`.

    files_encoding_peer_test.py BUILD_DIR

Python decodes the same bytes and splits them by this system's rule (LF,
CR, CR LF and LF CR each end a line and stay in it). A character beyond
U+FFFF arrives as the one unit 26 in every encoding but the single-byte-clean
ones, none of which can hold such characters here.
"""

import json
import os
import random
import subprocess
import sys
import tempfile

# (ICU name given to fopen, Python codec, characters to draw from)
ASCII = [chr(c) for c in range(0x20, 0x7F)]
ENCODINGS = [
    ('UTF-8', 'utf-8', ASCII + ['é', 'ß', '€', 'あ', '漢', '\u0800', '\uFFFD', '😀', '\U00010000', '\U0010FFFF']),
    ('ISO-8859-1', 'latin-1', ASCII + [chr(c) for c in range(0xA0, 0x100)] + ['\x80', '\x9f']),
    ('windows-1252', 'cp1252', ASCII + ['é', '€', '–', '“', '”', 'Ÿ', 'ž', '\xa0']),
    # Hiragana, katakana and common kanji: the region where every Shift_JIS
    # table agrees (the yen and overline variants of 0x5C and 0x7E differ).
    ('Shift_JIS', 'shift_jis', [c for c in ASCII if c not in '\\~'] + list('あいうえおアイウエオ漢字東京日本')),
    ('UTF-16LE', 'utf-16-le', ASCII + ['é', '€', 'あ', '😀']),
    ('UTF-16BE', 'utf-16-be', ASCII + ['é', '€', 'あ', '😀']),
    ('US-ASCII', 'ascii', ASCII),
]
TERMINATORS = ['\n', '\r', '\r\n', '\n\r']


def split_lines(text):
    lines, start, i = [], 0, 0
    while i < len(text):
        c = text[i]
        if c in '\r\n':
            end = i + 1
            if end < len(text) and text[end] in '\r\n' and text[end] != c:
                end += 1
            lines.append(text[start:end])
            start = i = end
        else:
            i += 1
    if start < len(text):
        lines.append(text[start:])
    return lines


def as_units(text):
    """The UTF-16 units fgets gives: supplementary characters become 26."""
    return ''.join('\x1a' if ord(c) > 0xFFFF else c for c in text)


def main(argv):
    tw = os.path.join(argv[1], 'tw')
    rng = random.Random(4)
    failures = 0
    with tempfile.TemporaryDirectory(prefix='tw_files_peer_') as work:
        script_lines = []
        expected = []
        for index, (icu, codec, alphabet) in enumerate(ENCODINGS):
            parts = []
            for _ in range(200):
                parts.append(''.join(rng.choice(alphabet) for _ in range(rng.randrange(0, 40))))
                parts.append(rng.choice(TERMINATORS))
            if rng.random() < 0.5:
                parts.pop()  # sometimes no terminator at the end
            text = ''.join(parts)
            name = f'peer{index}.txt'
            with open(os.path.join(work, name), 'wb') as f:
                f.write(text.encode(codec))
            expected.append((icu, [as_units(line) for line in split_lines(text)]))
            script_lines += [
                f'fid = fopen("{name}", "r", "n", "{icu}");',
                'while true',
                '  l = fgets(fid);',
                '  if isequal(class(l), "double"), break, end',
                f'  e{index} = l',
                'end',
                'fclose(fid);',
            ]
        script = os.path.join(work, 'peer.tw')
        out = os.path.join(work, 'out.jsonl')
        with open(script, 'w') as f:
            f.write('\n'.join(script_lines) + '\n')
        proc = subprocess.run([tw, '--json', out, script], cwd=work, capture_output=True,
                              text=True, timeout=300, stdin=subprocess.DEVNULL)
        if proc.returncode != 0:
            print(f'FAIL: tw exited with {proc.returncode}\n{proc.stderr}')
            return 1
        got = {i: [] for i in range(len(ENCODINGS))}
        with open(out) as f:
            for line in f:
                rec = json.loads(line)
                if rec.get('name', '').startswith('e'):
                    got[int(rec['name'][1:])].append(''.join(rec['value']['rows']))
    for index, (icu, lines) in enumerate(expected):
        have = got[index]
        if have != lines:
            failures += 1
            first = next((k for k in range(min(len(have), len(lines))) if have[k] != lines[k]),
                         min(len(have), len(lines)))
            print(f'FAIL: {icu}: {len(have)} lines, expected {len(lines)}; first difference at '
                  f'line {first}: {have[first:first + 1]!r} vs {lines[first:first + 1]!r}')
        else:
            print(f'ok: {icu}: {len(lines)} lines agree with Python')
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
