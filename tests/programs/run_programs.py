#!/usr/bin/env python3
"""Runs the real programs of programs.tbl twice each: on libqnl_rt.so with the
reference back-end, and on Debian's own OpenBLAS. The facade passes a program
when both runs count the same passes and the same failures and end alike.

    run_programs.py [--sample] BUILD_DIR [NAME...]

With --sample (the default when CI=true; --full overrides it) a row whose
letters include capitals runs only those letters, and a pytest suite runs
about one test in four, the same ones on both sides.

The facade is reached through links named as the programs' sonames, in a
folder of their own: the facade finds its back-ends beside the file the links
lead to. Exits 1 if any program differs.
"""
import os
import re
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HERE = Path(__file__).resolve().parent
DEBIAN = Path("/usr/lib/x86_64-linux-gnu")
# The sonames the programs need, LP64 and ILP64 (ldd of the programs).
SONAMES = ["libblas.so.3", "liblapack.so.3", "libcblas.so.3", "libblas64.so.3", "liblapack64.so.3",
           "libfftw3.so.3", "libfftw3f.so.3", "libfftw3_omp.so.3", "libfftw3f_omp.so.3", "libfftw3_threads.so.3",
           "libfftw3f_threads.so.3"]
# Debian's serial OpenBLAS builds: the same code the reference back-end forwards to.
STOCK_PATH = f"{DEBIAN}/openblas-serial:{DEBIAN}/openblas64-serial"


# One pytest test in this many runs in a sampled run.
PYTEST_SAMPLE = 4


def table(path, columns):
    """The rows of a table file, comments and blank lines left out, each row
    repeated per letter of its second column with "?" replaced by the letter."""
    for line in Path(path).read_text().splitlines():
        line = line.split("#", 1)[0].strip()
        if line:
            name, letters, *rest = line.split(None, columns - 1)
            yield name, letters, lambda letter, cells=[name, *rest]: [c.replace("?", letter) for c in cells]


def rows(path, sample):
    for _, letters, cells in table(path, 5):
        if sample and letters.lower() != letters:
            letters = "".join(c for c in letters if c.isupper())
        yield from (cells(letter) for letter in ([""] if letters == "-" else letters.lower()))


def deliberate(path):
    """Program name -> [(routine, complaint)] from deliberate.tbl."""
    found = {}
    for _, letters, cells in table(path, 4):
        for name, routine, complaint in (cells(c) for c in ([""] if letters == "-" else letters)):
            found.setdefault(name, []).append((routine, complaint))
    return found


def accept_deliberate(text, expected):
    """The output with each routine's error-exit failure turned into a pass where
    the routine's complaints are exactly the expected ones; the accepted ones."""
    accepted = []
    lines = text.splitlines()
    for routine in sorted({r for r, _ in expected}):
        want = {c for r, c in expected if r == routine}
        complaints = {s.strip(" *") for s in lines if s.strip().startswith("*****") and routine in s
                      and "ERROR-EXITS" not in s}
        if complaints != want:
            continue
        failed = f"{routine} FAILED THE TESTS OF ERROR-EXITS"
        lines = [s.replace(failed, f"{routine} PASSED THE TESTS OF ERROR-EXITS") for s in lines
                 if s.strip(" *") not in want]
        accepted.append(routine)
    return "\n".join(lines), accepted


def by_lines(passed, failed):
    """Counts the lines matching each of two patterns."""
    def count(text):
        lines = text.splitlines()
        return tuple(sum(bool(re.search(p, s)) for s in lines) for p in (passed, failed))
    return count


def count_lapack(text):
    passed = failed = 0
    for line in text.splitlines():
        if m := re.search(r"\(\s*(\d+) tests run\)", line):
            passed += int(m.group(1))
        elif m := re.search(r"(\d+) out of\s+(\d+) tests failed", line):
            failed += int(m.group(1))
            passed += int(m.group(2)) - int(m.group(1))
        elif "passed the tests of the error exits" in line:
            passed += 1
        elif "illegal" in line.lower() or " INFO" in line or "failed the tests of the error exits" in line:
            failed += 1
    return passed, failed


def count_pytest(text):
    summary = [s for s in text.splitlines() if re.search(r"\d+ (passed|failed)", s)]
    last = summary[-1] if summary else ""
    n = {w: int(m.group(1)) if (m := re.search(rf"(\d+) {w}", last)) else 0 for w in ("passed", "failed", "error")}
    return n["passed"], n["failed"] + n["error"]


PARSERS = {"blas1": by_lines("----- PASS -----", "FAIL"), "blas23": by_lines("PASSED", "FAILED|FATAL"),
           "marks": by_lines("^PASS", "^FAIL"), "wisdom": by_lines("^Planning transform:", r"(?i)\b(error|abort|fail)"),
           "lapack": count_lapack, "pytest": count_pytest}


def run(command, env):
    """Runs one program in a scratch folder; returns (exit code, everything it wrote, seconds)."""
    with tempfile.TemporaryDirectory(prefix="qnl-program-") as work:
        start = time.monotonic()
        p = subprocess.run(["bash", "-c", command], cwd=work, env=env, capture_output=True, text=True,
                           errors="replace", timeout=1800)
        seconds = time.monotonic() - start
        # The Netlib testers write their summaries to files named in their input.
        files = "".join(f.read_text(errors="replace") for f in sorted(Path(work).glob("*.out")))
        return p.returncode, p.stdout + p.stderr + files, seconds


def main(argv):
    sample = os.environ.get("CI") == "true"
    while argv and argv[0] in ("--sample", "--full"):
        sample = argv.pop(0) == "--sample"
    build = Path(argv[0]).resolve()
    only = set(argv[1:])
    facade = build / "lib" / "libqnl_rt.so"
    links = build / "programs" / "links"
    links.mkdir(parents=True, exist_ok=True)
    for soname in SONAMES:
        (links / soname).unlink(missing_ok=True)
        (links / soname).symlink_to(facade)
    # Names without their version ("cblas_dgemm@@QNL_RT_0").
    exported = {s.split("@")[0] for s in subprocess.run(
        ["nm", "-D", "--defined-only", "--format=just-symbols", str(facade)],
        check=True, capture_output=True, text=True).stdout.split()}

    base = dict(os.environ)
    base.update(BLAS_TESTS=str(DEBIAN / "blas"), LAPACK_TESTS=str(DEBIAN / "lapack"),
                PROGRAMS=str(build / "programs"), PROGRAM_SOURCES=str(HERE), PYTHON="/usr/bin/python3", OMP_NUM_THREADS="1",
                # The CBLAS testers read this data symbol of the reference CBLAS at start-up.
                LD_PRELOAD=str(build / "programs" / "libqnl_row_major_strg.so"))
    for var in ("QNL_VERBOSE", "QNL_INTERFACE_LAYER", "QNL_THREADING_LAYER"):
        base.pop(var, None)
    if sample:
        base.update(QNL_SAMPLE=str(PYTEST_SAMPLE), PYTHONPATH=str(HERE),
                    PYTEST_ADDOPTS=(base.get("PYTEST_ADDOPTS", "") + " -p qnl_sample").strip())
    # The sequential layer runs on the serial OpenBLAS build, as the stock run does.
    on_facade = dict(base, LD_LIBRARY_PATH=str(links), QNL_THREADING_LAYER="sequential")
    on_stock = dict(base, LD_LIBRARY_PATH=STOCK_PATH)

    allowed = deliberate(HERE / "deliberate.tbl")
    chosen = [r for r in rows(HERE / "programs.tbl", sample) if not only or r[0] in only]
    jobs = [(name, parser, command) for name, parser, needs, command in chosen if needs in exported | {"-"}]
    waiting = [(name, needs) for name, _, needs, _ in chosen if needs not in exported | {"-"}]
    start = time.monotonic()
    with ThreadPoolExecutor(max_workers=os.cpu_count() or 2) as pool:
        runs = [(job, pool.submit(run, job[2], on_facade), pool.submit(run, job[2], on_stock)) for job in jobs]
        differing = 0
        print(f"{'program':<14} {'facade passed/failed':>22} {'OpenBLAS passed/failed':>24}  seconds")
        for (name, parser, _), ours, theirs in runs:
            rc, text, seconds = ours.result()
            src, stext, sseconds = theirs.result()
            text, accepted = accept_deliberate(text, allowed.get(name, []))
            got, want = PARSERS[parser](text), PARSERS[parser](stext)
            same = got == want and rc == src and want[0] > 0
            differing += not same
            print(f"{name:<14} {got[0]:>15} / {got[1]:<4} {want[0]:>17} / {want[1]:<4}  {seconds:6.1f} {sseconds:6.1f}"
                  f"{'' if same else f'  DIFFERS (exit {rc} vs {src})'}"
                  f"{'  (by design: ' + ', '.join(accepted) + ')' if accepted else ''}", flush=True)
            if not same:
                print("---- output on libqnl_rt.so (last 40 lines):\n" + "\n".join(text.splitlines()[-40:]))
    for name, needs in waiting:
        print(f"{name:<14} waiting: libqnl_rt.so does not export {needs} yet")
    print(f"{len(jobs)} programs in {time.monotonic() - start:.1f} s, {differing} differing, {len(waiting)} waiting"
          f"{' (sampled; --full runs them all)' if sample else ''}")
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
