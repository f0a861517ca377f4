#!/usr/bin/env python3
"""Measures which faults the tests find: builds hundreds of small faults into a copy of the product and tests each.

    scripts/mutate.py                                        all of it, with the tests of HEAD
    scripts/mutate.py --tests-from REV --name second --compare first
                                                             the faults that the first suite found, with the tests of a
                                                             commit (or of a folder); those not found are printed

The steps; each is kept in the work folder (build/mutants) and not repeated by the next call:
1. tree/     A copy of the tracked files. Lines are drawn with the printed seed, in proportion to each file's lines, and
             get a switch: "if (kv_mutant(17) ? bool(a <= b) : bool(a < b))". One build holds all mutants; KV_MUTANT in
             the environment chooses one at run time. Mutants that do not compile are dropped.
2. build/    The library, the command line and the test binaries, except test_house, which reads the sources.
3. NAME/FOLDER.json    Each test case runs alone without a mutant: its time and the mutants that it reaches.
4. NAME/results.jsonl  Each mutant runs with the cases that reach it, quick ones first, until one fails, crashes or
             takes ten times its usual time and 20 s more. A failure among other cases counts only if the case fails
             alone too.

A line of results.jsonl: id, file and line, the original and the mutated line, and the verdict: "unreached" (no case
runs the line), "survived" (all cases that run it pass), or "found by FOLDER.SUITE.CASE".

A mutant may delete files or end processes. So every run has a mount and a process namespace of its own, in which the
file system is read-only except for temporary folders. This needs root and a checkout outside /tmp and /mnt."""
import argparse, collections, concurrent.futures, hashlib, json, os, pathlib, random, re, shutil, subprocess, sys, time
import threading

from mutants_of_line import SWITCH, masked, variants

ROOT = pathlib.Path(__file__).resolve().parent.parent
LAYERS = ("platform", "framework", "companions", "share", "host")
FOLDERS = "platform framework companions objects utilities settings env machine jobs host".split()
HEADER = """#pragma once
#include <type_traits>
extern "C" __attribute__((visibility("default"))) bool kv_mutant_on(int id);
constexpr bool kv_mutant(int id) { return !std::is_constant_evaluated() && kv_mutant_on(id); }
"""
SOURCE = """#include "kv_mutant.h"
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <cstdlib>
static volatile char* Trace() {
  const char* name = std::getenv("KV_MUTANT_TRACE");
  const int file = name ? open(name, O_RDWR | O_CLOEXEC) : -1;
  if (file < 0) return nullptr;
  void* bytes = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return bytes == MAP_FAILED ? nullptr : static_cast<volatile char*>(bytes);
}
bool kv_mutant_on(int id) {
  static const int chosen = std::getenv("KV_MUTANT") ? std::atoi(std::getenv("KV_MUTANT")) : 0;
  static volatile char* const trace = Trace();
  if (trace) trace[id] = 1;
  return id == chosen;
}
"""
SANDBOX = """mount -t tmpfs -o size=64m tmpfs /mnt && mount -t tmpfs -o size=3g tmpfs /tmp &&
mount -t tmpfs -o size=2g tmpfs /dev/shm && mount --bind "$KV_RUN" "$KV_RUN" && mount -o remount,bind,ro / || exit 99
mkdir /tmp/home; cd /tmp/home; export HOME=/tmp/home; ulimit -v 16000000; ulimit -c 0
"$@" >/mnt/out 2>&1 </dev/null; code=$?; tail -c 30000 /mnt/out; exit $code"""

# ---- the plan: which lines are mutated

def make_plan(tree, seed, count):
    random.seed(seed)
    offers = {}
    for layer in LAYERS:
        for path in sorted((tree / layer).rglob("*")):
            name = str(path.relative_to(tree))
            if path.suffix not in (".cpp", ".h") or name.startswith("platform/windows/"):
                continue
            lines, before, found = path.read_text().split("\n"), "", []
            for number, line in enumerate(lines, 1):
                code = masked(line).strip()
                options = variants(line, before, path.suffix == ".h")
                if options:
                    found.append((number, line, *random.choice(options)))
                before = code or before
            if found:
                random.shuffle(found)
                offers[name] = (len(lines), found)
    taken = collections.Counter()
    for _ in range(count):  # each file of some size gets one, then shares in proportion to the lines
        open_files = [n for n in offers if taken[n] < len(offers[n][1])]
        name = max(open_files, key=lambda n: (not taken[n] and offers[n][0] >= 25, offers[n][0] / (2 * taken[n] + 1)))
        taken[name] += 1
    chosen = sorted((name, *m) for name, n in taken.items() for m in offers[name][1][:n])
    return [dict(id=i, file=f, line=n, original=o.strip(), mutated=m.strip(), code=c, drop=False)
            for i, (f, n, o, m, c) in enumerate(chosen, 1)]


def instrument(tree, source, plan):
    """Writes the mutated files into the tree; a file that stays the same keeps its time."""
    by_file = collections.defaultdict(list)
    for mutant in plan:
        by_file[mutant["file"]].append(mutant)
    texts = {"kv_mutant.h": HEADER, "platform/kv_mutant.cpp": SOURCE}
    for name, mutants in by_file.items():
        lines = (source / name).read_text().split("\n")
        for m in mutants:
            if not m["drop"]:
                lines[m["line"] - 1] = m["code"].replace(SWITCH, f"kv_mutant({m['id']})")
        texts[name] = f'#include "kv_mutant.h"\n#line 1 "{name}"\n' + "\n".join(lines)
    for name, text in texts.items():
        if not (tree / name).exists() or (tree / name).read_text() != text:
            (tree / name).write_text(text)


def build(work, plan):
    """Builds until it is clean; mutants on lines that do not compile are dropped."""
    tree, out = work / "tree", work / "build"
    levels = tree / "tests/CMakeLists.txt"  # the tests are compiled once and run for seconds
    levels.write_text(levels.read_text().replace("PUBLIC -O1", "PUBLIC -O0"))
    flags = "-O1 -DNDEBUG -w -Wno-narrowing"
    subprocess.run(["cmake", "-S", tree, "-B", out, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DKV_TESTS=ON",
                    f"-DCMAKE_CXX_FLAGS_RELEASE={flags}"], check=True, stdout=subprocess.DEVNULL)
    entries = json.loads((out / "compile_commands.json").read_text())
    words = next(e["command"] for e in entries if e["file"].endswith("host/module/main_module.cpp")).split()
    everything = work / "headers.cpp"  # a header's mutant that does not compile is found before all of its users fail
    headers = sorted({mutant["file"] for mutant in plan if mutant["file"].endswith(".h")})
    everything.write_text("".join(f'#include "{name}"\n' for name in headers))
    compiler = next(i for i, word in enumerate(words) if word.endswith("++"))
    flags = [word for word in words[compiler:words.index("-o")] if word != "-c"]
    steps = [[*flags, "-include", "cmake/precompiled.h", "-fsyntax-only", str(everything)]]
    ninja = ["nice", "ninja", "-C", out, "-k", "0"]
    steps += [[*ninja, "kestrova"], [*ninja, *(f"test_{folder}" for folder in FOLDERS)]]
    for step in steps:
        while True:
            instrument(tree, work / "source", plan)
            made = subprocess.run(step, cwd=tree, capture_output=True, text=True)
            text = made.stdout + made.stderr
            (work / "build.log").write_text(text)
            if made.returncode == 0:
                break
            switched = {(m["file"], m["line"]): m for m in plan if not m["drop"]}
            places = lambda pattern: {(f, int(n)) for f, n in re.findall(pattern, text, re.M)}
            bad = places(r"^([\w/]+\.(?:cpp|h)):(\d+):\d+: (?:fatal )?error:") & set(switched)
            bad = bad or places(r"([\w/]+\.(?:cpp|h)):(\d+):\d+:") & set(switched)
            if not bad:
                sys.exit(f"the build fails not only at mutants: {work}/build.log")
            for place in bad:
                switched[place]["drop"] = True
            print(f"  {len(bad)} mutants do not compile", flush=True)
            (work / "plan.json").write_text(json.dumps(plan, indent=1))


# ---- runs

class Suite:
    """The cases of one tests folder, with the mutants that each reaches, and their runs."""

    def __init__(self, work, name, jobs, slowest):
        self.place, self.jobs, self.slowest, self.cases, self.lock = work / name, jobs, slowest, {}, threading.Lock()
        self.place.mkdir(exist_ok=True)
        self.results = self.place / "results.jsonl"
        self.library = (work / "build/lib/libKVSHAREu.so").read_bytes()
        for folder in FOLDERS:  # the next suite's build replaces the binaries
            shutil.copy2(work / f"build/bin/test_{folder}", self.place)

    def run(self, folder, names, timeout, mutant=0, trace=None):
        """Runs cases of one folder in one process: (exit code or None for too long, output, seconds)."""
        env = dict(os.environ, KV_RUN=str(trace or self.place), KV_MUTANT=str(mutant))
        if trace:
            env["KV_MUTANT_TRACE"] = str(trace / "reached")
        command = ["nice", "unshare", "-m", "-p", "--fork", "--kill-child", "--mount-proc", "sh", "-c", SANDBOX, "sh",
                   self.place / f"test_{folder}", "--gtest_filter=" + ":".join(names), "--gtest_fail_fast",
                   "--gtest_color=no"]
        start, code, text = time.monotonic(), None, ""
        try:
            done = subprocess.run(command, env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=timeout)
            code, text = done.returncode, done.stdout.decode(errors="replace")
        except subprocess.TimeoutExpired:
            pass
        if code == 99:
            raise RuntimeError("a run gets no namespace: " + text)
        return code, text, time.monotonic() - start

    def trace_case(self, folder, name):
        trace = self.place / f"trace-{threading.get_ident()}"
        trace.mkdir(exist_ok=True)
        (trace / "reached").write_bytes(bytes(4096))
        code, text, seconds = self.run(folder, [name], 60 + 10 * self.slowest, trace=trace)
        reached = [i for i, byte in enumerate((trace / "reached").read_bytes()) if byte]
        if code:
            print(f"  not used, it fails without a mutant: {folder}.{name}\n{text[-600:]}", flush=True)
        return name, dict(seconds=round(seconds, 3), reached=reached, passes=not code)

    def trace(self):
        for folder in FOLDERS:
            binary, kept = self.place / f"test_{folder}", self.place / f"{folder}.json"
            key = hashlib.sha256(self.library + binary.read_bytes()).hexdigest()
            known = json.loads(kept.read_text()) if kept.exists() else {}
            if known.get("key") != key:
                names, suite = [], ""
                listed = subprocess.run([binary, "--gtest_list_tests"], capture_output=True, text=True).stdout
                for line in listed.splitlines():
                    word = line.split("#")[0].strip()
                    if line.startswith("  "):
                        names.append(suite + word)
                    else:
                        suite = word if word.endswith(".") else ""
                with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
                    cases = dict(pool.map(lambda name: self.trace_case(folder, name), [n for n in names if "." in n]))
                known = dict(key=key, cases=cases)
                kept.write_text(json.dumps(known))
            self.cases.update({(folder, name): facts for name, facts in known["cases"].items() if facts["passes"]})
            print(f"  {folder}: {len(known['cases'])} cases", flush=True)

    def fails(self, case, mutant):
        return self.run(case[0], [case[1]], 10 * self.cases[case]["seconds"] + 20, mutant["id"])[0] != 0

    def judge(self, mutant, hint):
        """The verdict on one mutant. hint: the case to try first."""
        seconds = {case: facts["seconds"] for case, facts in self.cases.items() if mutant["id"] in facts["reached"]}
        if not seconds:
            return "unreached"
        if hint in seconds and self.fails(hint, mutant):
            return "found by %s.%s" % hint
        own = re.sub("^share/", "", mutant["file"]).split("/")[0]
        slow = lambda case: seconds[case] if seconds[case] >= 0.5 else 0
        left = [case for case in seconds if seconds[case] <= self.slowest]
        left.sort(key=lambda case: (slow(case), case[0] != own, case[0], seconds[case]))
        while left:  # quick cases of a folder share a process
            batch = [case for case in left[:60] if case[0] == left[0][0] and (slow(case) == 0 or case == left[0])]
            usual = sum(seconds[case] for case in batch)
            code, text, _ = self.run(left[0][0], [case[1] for case in batch], 10 * usual + 20, mutant["id"])
            if code == 0:
                left = [c for c in left if c not in batch]
                continue
            failed = re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", text, re.M)
            failed = failed[:1] or re.findall(r"^\[ RUN +\] (\S+)", text, re.M)[-1:]
            suspects = [case for case in batch if case[1] in failed] or batch
            for case in suspects:
                if self.fails(case, mutant):
                    return "found by %s.%s" % case
            left = [c for c in left if c not in suspects]
        return "survived"

    def judge_all(self, plan, hints):
        """Judges each mutant that has no result yet. hints: the case to try first; if given, only their mutants run."""
        seen = read_results(self.results)
        wanted = [m for m in plan if not m["drop"] and m["id"] not in seen and (m["id"] in hints or not hints)]
        slow = sorted(f"{c[0]}.{c[1]}" for c, facts in self.cases.items() if facts["seconds"] > self.slowest)
        print(f"  not run, over {self.slowest} s: {', '.join(slow) or 'no case'}", flush=True)

        def one(mutant):
            verdict = self.judge(mutant, hints.get(mutant["id"]))
            row = {k: mutant[k] for k in ("id", "file", "line", "original", "mutated")} | dict(verdict=verdict)
            with self.lock, open(self.results, "a") as out:
                out.write(json.dumps(row) + "\n")
                print(f"  {mutant['id']:4} {mutant['file']}:{mutant['line']} {verdict}", flush=True)

        with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
            list(pool.map(one, wanted))


# ---- the whole

def read_results(path):
    return {r["id"]: r for r in map(json.loads, path.read_text().splitlines())} if path.exists() else {}


def is_found(row):
    return row is not None and row["verdict"].startswith("found")


def report(plan, results):
    table = collections.defaultdict(collections.Counter)
    for m in plan:
        parts, row = m["file"].split("/"), results.get(m["id"])
        for line in ("/".join(parts[:2]) if parts[0] == "share" else parts[0], "whole product"):
            table[line].update(candidates=1, compiled=not m["drop"], found=is_found(row),
                               reached=row is not None and row["verdict"] != "unreached")
    print(f"{'folder':20} candidates compiled reached found")
    for line in sorted(table):
        t = table[line]
        print(f"{line:20} {t['candidates']:10} {t['compiled']:8} {t['reached']:7} {t['found']:5}")


def unpack(rev, target, *paths):
    target.mkdir(parents=True, exist_ok=True)
    archive = subprocess.run(["git", "-C", ROOT, "archive", rev, *paths], check=True, capture_output=True).stdout
    subprocess.run(["tar", "-x", "-C", target], input=archive, check=True)


def take_tests(work, origin):
    """Puts the tests of a commit or of a folder in place of the copy's own; equal files keep their time."""
    fresh, target = work / "tests", work / "tree/tests"
    shutil.rmtree(fresh, ignore_errors=True)
    if pathlib.Path(origin).is_dir():
        shutil.copytree(origin, fresh)
    else:
        unpack(origin, work, "tests")
    for path in [*target.rglob("*.cpp"), *target.rglob("*.h")]:
        if not (fresh / path.relative_to(target)).exists():
            path.unlink()
    for path in filter(pathlib.Path.is_file, fresh.rglob("*")):
        here = target / path.relative_to(fresh)
        if not here.exists() or here.read_bytes() != path.read_bytes():
            here.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, here)


def main():
    ask = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ask.add_argument("--work", default=str(ROOT / "build/mutants"), help="the work folder")
    ask.add_argument("--seed", type=int, default=20, help="draws the lines")
    ask.add_argument("--count", type=int, default=400, help="how many lines are drawn")
    ask.add_argument("--product-from", default="HEAD", metavar="REV", help="whose product is mutated")
    ask.add_argument("--tests-from", metavar="REV-OR-FOLDER", help="whose tests run; as the product by default")
    ask.add_argument("--name", default="first", help="the suite's own folder in the work folder")
    ask.add_argument("--compare", metavar="NAME", help="run only what this suite found, its case first")
    ask.add_argument("--slowest", type=float, default=10, help="cases that take more seconds are not run")
    ask.add_argument("--jobs", type=int, default=2)
    options = ask.parse_args()
    work = pathlib.Path(options.work).resolve()
    print(f"seed {options.seed}, {work}", flush=True)
    for place in (work / "source", work / "tree"):
        if not place.exists():
            unpack(options.product_from, place)
    if options.tests_from:
        take_tests(work, options.tests_from)
    kept = work / "plan.json"
    plan = json.loads(kept.read_text()) if kept.exists() else make_plan(work / "source", options.seed, options.count)
    build(work, plan)
    kept.write_text(json.dumps(plan, indent=1))
    suite = Suite(work, options.name, options.jobs, options.slowest)
    suite.trace()
    other = read_results(work / options.compare / "results.jsonl") if options.compare else {}
    suite.judge_all(plan, {i: tuple(r["verdict"][9:].split(".", 1)) for i, r in other.items() if is_found(r)})
    results = read_results(suite.results)
    report(plan, results)
    lost = [r for i, r in other.items() if is_found(r) and not is_found(results.get(i))]
    for r in lost:
        print(f"  {r['id']:4} {r['file']}:{r['line']} {r['original']}\n       -> {r['mutated']}")
        here = results.get(r["id"], {}).get("verdict", "not run")
        print(f"       {r['verdict']} in {options.compare}, {here} in {options.name}")
    if options.compare:
        print(f"{len(lost)} found by {options.compare} and not by {options.name}")
    sys.exit(bool(lost))


if __name__ == "__main__":
    main()
