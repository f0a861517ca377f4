#!/usr/bin/env python3
"""Runs the tests of a Windows build in Wine and prints a table.

usage: scripts/wine_tests.py BUILD [FOLDER...]

A process runs several cases. A case that does not pass there runs again, alone, and that result counts.

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

LIMIT_S = int(os.environ.get("KV_LIMIT_S", "180"))
CASES = int(os.environ.get("KV_CASES", "12"))  # of one process
SLOW = ("host", "jobs", "objects")  # folders that run first, so that both cores are busy to the end
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


def batches(names, fails):
    """Cases that run in one process; those that Wine answers wrongly may end theirs, so they keep to themselves."""
    for group in ([n for n in names if n not in fails], [n for n in names if n in fails]):
        for at in range(0, len(group), CASES):
            yield group[at:at + CASES]


VERDICT = re.compile(r"\[ +(OK|SKIPPED|FAILED) +\] ([^\s,]+)(?:.*?\((\d+) ms\))?")


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

    def results(folder, names):
        """(case, verdict, text, seconds) of each. Without a verdict the process has ended before the case's end."""
        code, text = run(build / f"bin/test_{folder}.exe", ["--gtest_filter=" + ":".join(names)], LIMIT_S)
        found = {name: (verdict, int(ms or 0) / 1000) for verdict, name, ms in VERDICT.findall(text)}
        if len(names) == 1 and code != 0 and found.get(names[0], ("",))[0] != "FAILED":
            found = {}  # it ends the process
        end = f"no end after {LIMIT_S} s" if code is None else f"exit code {code}"
        return [(name, *found.get(name, ("", 0.0)), f"{end}\n{text[-3000:]}") for name in names]

    def judged(folder, names):
        rows = []
        for name, verdict, seconds, text in results(folder, names):
            wanted = ["FAILED"] if name in fails else ["OK", "SKIPPED"]
            if verdict not in wanted and len(names) > 1:
                again = results(folder, [name])[0]
                if verdict and again[1] in wanted:
                    print(f"note: {name} has another result among other cases than alone", flush=True)
                name, verdict, seconds, text = again
            rows.append((name, verdict, seconds, text))
        return rows

    rows, bad, slow, known, running = {}, [], [], set(), []
    with concurrent.futures.ThreadPoolExecutor(int(os.environ.get("KV_JOBS", os.cpu_count()))) as pool:
        listed = pool.map(lambda folder: cases_of(run, build / f"bin/test_{folder}.exe"), folders)
        for folder, names in zip(folders, listed):
            if not names:
                bad.append((f"test_{folder}", "it lists no cases"))
            known.update(names)
            run_here = [n for n in names if n not in linux_only]
            rows[folder] = dict(cases=len(run_here), passed=0, expected=0, failed=0, skipped=0,
                                hangs=sum(n in hangs for n in run_here),
                                left=len(names) - len(run_here) + not_built(folder, linux_only))
            for batch in batches([n for n in run_here if n not in hangs], fails):
                running.append((folder, batch))
        running.sort(key=lambda piece: piece[0] not in SLOW)
        for (folder, _), done in zip(running, list(pool.map(lambda piece: judged(*piece), running))):
            row = rows[folder]
            for name, verdict, seconds, text in done:
                slow.append((seconds, folder, name))
                if name in fails and verdict in ("OK", "SKIPPED"):
                    row["failed"] += 1
                    bad.append((f"{folder}: {name}", "passes, though tests/wine_expected.txt lists it"))
                elif name in fails:
                    row["expected"] += 1
                elif verdict == "SKIPPED":
                    row["skipped"] += 1
                elif verdict == "OK":
                    row["passed"] += 1
                else:
                    row["failed"] += 1
                    bad.append((f"{folder}: {name}", text))

    if len(sys.argv) == 2:
        for name in sorted((fails.keys() | hangs.keys()) - known):
            bad.append((name, "is listed in tests/wine_expected.txt and does not exist"))
    for name, text in bad:
        print(f"FAILED {name}: {text}\n")
    columns = ["cases", "passed", "expected", "hangs", "skipped", "failed", "left"]
    titles = ["cases", "passed", "Wine wrong", "not run", "skipped", "failed", "Linux only"]
    rows["all"] = {c: sum(row[c] for row in rows.values()) for c in columns}
    print(f"{'tests in Wine':14}" + "".join(f"{t:>11}" for t in titles))
    for folder, row in rows.items():
        print(f"{folder:14}" + "".join(f"{row[c]:11}" for c in columns))
    print("slowest: " + ", ".join(f"{n} {s:.0f} s" for s, f, n in sorted(slow, reverse=True)[:5]))
    sys.exit(1 if bad else 0)


main()
