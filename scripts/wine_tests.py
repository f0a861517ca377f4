#!/usr/bin/env python3
"""Runs the tests of a Windows build in Wine, each case in a process of its own, and prints a table.

usage: scripts/wine_tests.py BUILD [FOLDER...]

tests/wine_expected.txt has the cases that Wine answers wrongly: "Suite.Test  reason". Such a case must fail; the run
fails if it passes. A line that begins with "hangs " names a case that is not run.
"""
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

LIMIT_S = int(os.environ.get("KV_LIMIT_S", "180"))
ROOT = pathlib.Path(__file__).resolve().parent.parent


def read_expected():
    fails, hangs = {}, {}
    path = ROOT / "tests/wine_expected.txt"
    for line in path.read_text().splitlines() if path.exists() else []:
        words = line.split(None, 1)
        if not words or line.startswith("#"):
            continue
        table = fails
        if words[0] == "hangs":
            table, words = hangs, words[1].split(None, 1)
        if len(words) < 2:
            sys.exit(f"{path}: no reason: {line}")
        table[words[0]] = words[1]
    return fails, hangs


def read_linux_only():
    """The sources and cases that only Linux has."""
    return {line.split()[0] for line in (ROOT / "tests/linux_only.txt").read_text().splitlines()
            if line and not line.startswith("#")}


def not_built(folder, listed):
    """The number of cases in the sources that this build leaves out."""
    cases = 0
    for source in (ROOT / "tests" / folder).glob("*.cpp"):
        if source.name.startswith("linux_") or f"{folder}/{source.name}" in listed:
            cases += len(re.findall(r"^TEST", source.read_text(), re.M))
    return cases


def cases_of(run, program):
    names, suite = [], ""
    for line in run(program, ["--gtest_list_tests"], LIMIT_S)[1].splitlines():
        line = line.split("#")[0].rstrip()
        if line.endswith(".") and not line.startswith(" "):
            suite = line
        elif line.startswith("  ") and suite:
            names.append(suite + line.strip())
    return names


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    build = pathlib.Path(sys.argv[1]).resolve()
    folders = sys.argv[2:] or sorted(p.stem[5:] for p in (build / "bin").glob("test_*.exe"))
    fails, hangs = read_expected()
    linux_only = read_linux_only()

    def run(program, arguments, limit):
        # Into a file: a pipe would stay open as long as the services of Wine that the program happens to start.
        with tempfile.TemporaryFile() as out:
            try:
                code = subprocess.run([build / "wine.sh", program, *arguments], stdin=subprocess.DEVNULL, stdout=out,
                                      stderr=subprocess.STDOUT, timeout=limit, cwd=build).returncode
            except subprocess.TimeoutExpired:
                code = None
            out.seek(0)
            return code, out.read().decode("utf-8", "replace").replace("\r", "")

    rows, bad, slow, known = [], [], [], set()
    with concurrent.futures.ThreadPoolExecutor(int(os.environ.get("KV_JOBS", os.cpu_count()))) as pool:
        for folder in folders:
            program = build / f"bin/test_{folder}.exe"
            names = cases_of(run, program)
            if not names:
                bad.append((f"test_{folder}", "it lists no cases"))
            known.update(names)
            left = [name for name in names if name in linux_only]
            names = [name for name in names if name not in linux_only]
            row = dict(folder=folder, cases=len(names), passed=0, expected=0, failed=0, skipped=0, hangs=0)

            def one(name):
                start = time.monotonic()
                code, text = run(program, [f"--gtest_filter={name}", "--gtest_brief=1"], LIMIT_S)
                return name, code, text, time.monotonic() - start

            row["hangs"] = sum(name in hangs for name in names)
            for name, code, text, seconds in pool.map(one, [n for n in names if n not in hangs]):
                slow.append((seconds, folder, name))
                # The exit code alone doesn't say it: a call that Wine lacks ends the process with 0x80000100, of which
                # the shell sees the last two digits.
                passed = code == 0 and "[  PASSED  ]" in text
                if passed and "[  SKIPPED ]" in text:
                    row["skipped"] += 1
                elif passed and name not in fails:
                    row["passed"] += 1
                elif passed:
                    row["failed"] += 1
                    bad.append((f"{folder}: {name}", "passes, though tests/wine_expected.txt lists it"))
                elif name in fails:
                    row["expected"] += 1
                else:
                    row["failed"] += 1
                    end = f"no end after {LIMIT_S} s" if code is None else f"exit code {code}"
                    bad.append((f"{folder}: {name}", f"{end}\n{text[-3000:]}"))
            row["left"] = len(left) + not_built(folder, linux_only)
            rows.append(row)

    if len(sys.argv) == 2:
        for name in sorted((fails.keys() | hangs.keys()) - known):
            bad.append((name, "is listed in tests/wine_expected.txt and does not exist"))
    for name, text in bad:
        print(f"FAILED {name}: {text}\n")
    columns = ["cases", "passed", "expected", "hangs", "skipped", "failed", "left"]
    titles = ["cases", "passed", "Wine wrong", "not run", "skipped", "failed", "Linux only"]
    rows.append(dict(folder="all", **{c: sum(r[c] for r in rows) for c in columns}))
    print(f"{'tests in Wine':14}" + "".join(f"{t:>11}" for t in titles))
    for row in rows:
        print(f"{row['folder']:14}" + "".join(f"{row[c]:11}" for c in columns))
    print("slowest: " + ", ".join(f"{n} {s:.0f} s" for s, f, n in sorted(slow, reverse=True)[:3]))
    sys.exit(1 if bad else 0)


main()
