#!/usr/bin/env python3
"""Mutation check: how many realistic slips in the core would the test suite notice?

Each mutation in mutations.txt changes one exact piece of text in one source
file. For each, the file is changed, the build is brought up to date and the
whole suite is run; a failing suite catches the mutation. The file is always
restored, even when the run is interrupted. Not part of the default test run:
it takes a build and a suite run per mutation.

    tests/mutation/run_mutations.py [--build build/default] [--only WORD]

mutations.txt holds one mutation per three lines, blocks separated by blank
lines, lines starting with '#' ignored:

    - what the slip is
    path/from/the/repository/root.cpp
    ORIGINAL TEXT  =>  REPLACEMENT TEXT

"\n" in either text stands for a line end. The original text must occur
exactly once in the file, else the mutation is reported as not applicable (the
code moved on: update the list).
"""
import argparse
import os
import signal
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def read_mutations(path):
    blocks, block = [], []
    for line in path.read_text().splitlines() + [""]:
        if line.startswith("#"):
            continue
        if line.strip():
            block.append(line)
            continue
        if block:
            if len(block) != 3 or not block[0].startswith("- ") or "  =>  " not in block[2]:
                sys.exit(f"malformed mutation: {block}")
            original, replacement = block[2].replace("\\n", "\n").split("  =>  ", 1)
            blocks.append({"what": block[0][2:], "file": block[1], "original": original,
                           "replacement": replacement})
            block = []
    return blocks


def run(command, timeout):
    try:
        done = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=timeout, env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
        return done.returncode, done.stdout.decode(errors="replace")
    except subprocess.TimeoutExpired:
        return -1, "timed out"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default="build/default")
    parser.add_argument("--only", help="run only mutations whose description holds this word")
    args = parser.parse_args()
    mutations = read_mutations(Path(__file__).with_name("mutations.txt"))
    if args.only:
        mutations = [m for m in mutations if args.only.lower() in m["what"].lower()]

    build = ["cmake", "--build", args.build, "-j2"]
    suite = ["ctest", "--test-dir", args.build, "-j2", "--timeout", "120"]
    code, output = run(build, 3600)
    if code != 0:
        sys.exit("the unchanged tree does not build:\n" + output[-3000:])

    restore = {}

    def put_back(*_):
        for path, text in restore.items():
            path.write_text(text)
        restore.clear()

    signal.signal(signal.SIGINT, lambda *a: (put_back(), sys.exit(130)))
    signal.signal(signal.SIGTERM, lambda *a: (put_back(), sys.exit(143)))

    caught, survived, skipped = [], [], []
    try:
        for number, mutation in enumerate(mutations, 1):
            path = ROOT / mutation["file"]
            text = path.read_text() if path.exists() else ""
            count = text.count(mutation["original"])
            label = f"{number:2}. {mutation['what']} ({mutation['file']})"
            if count != 1:
                skipped.append(f"{label}: original text found {count} times")
                print(f"not applicable  {label}", flush=True)
                continue
            restore[path] = text
            path.write_text(text.replace(mutation["original"], mutation["replacement"]))
            code, output = run(build, 1800)
            if code != 0:
                skipped.append(f"{label}: the mutated tree does not build")
                verdict = "does not build"
            else:
                code, output = run(suite, 1800)
                (caught if code != 0 else survived).append(label)
                verdict = "caught" if code != 0 else "SURVIVED"
            put_back()
            print(f"{verdict:15} {label}", flush=True)
    finally:
        put_back()
        run(build, 3600)

    counted = len(caught) + len(survived)
    score = 100.0 * len(caught) / counted if counted else 0.0
    print(f"\n{len(caught)} of {counted} mutations caught ({score:.0f} %); {len(skipped)} not counted")
    for label in survived:
        print(f"survived: {label}")
    for label in skipped:
        print(f"not counted: {label}")
    return 0 if not survived else 1


if __name__ == "__main__":
    sys.exit(main())
