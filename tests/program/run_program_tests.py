#!/usr/bin/env python3
"""Tests the finished vesk.

    run_program_tests.py --vesk PROGRAM --children DIRECTORY [--wine SCRIPT PREFIX] [--jobs NUMBER]
                         [--keep check] [PATTERN...]

--children names the directory with the programs that the tests' commands run, as the build made
them; --wine runs a Windows program with scripts/run-in-wine; --keep sets VESK_KEEP (see docs/cache.md). A pattern selects the tests that have
it in their name. The slowest tests are named; the last line reads "N passed, N failed, N skipped".
"""

import argparse
import os
import signal
import sys
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
sys.dont_write_bytecode = True

from harness import SETTINGS  # noqa: E402


def parse_arguments():
    parser = argparse.ArgumentParser(description="Tests the finished vesk.")
    parser.add_argument("--vesk", type=Path, required=True)
    parser.add_argument("--children", type=Path, required=True)
    parser.add_argument("--wine", nargs=2, metavar=("SCRIPT", "PREFIX"))
    # Tests wait for processes much of the time.
    parser.add_argument("--jobs", type=int, default=2 * os.cpu_count())
    parser.add_argument("--keep")
    parser.add_argument("patterns", nargs="*")
    return parser.parse_args()


def flattened(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from flattened(test)
        else:
            yield test


def selected(patterns):
    tests = flattened(unittest.defaultTestLoader.discover(Path(__file__).parent, "test_*.py"))
    return [test for test in tests if not patterns or any(p in test.id() for p in patterns)]


SLOWEST = 30  # tests that are named

# Now and then the emulator fails to start a process. vesk says the first, the interpreter the other;
# Windows itself has no such failure. A fault of vesk's own shows again in the second run.
EMULATOR_FAULTS = ("Internal error (code 1359)", "as an internal or external")


def run_one(test):
    """The result of a test, and the seconds it took."""
    started = time.monotonic()
    result = unittest.TestResult()
    test.run(result)
    if SETTINGS.wine and any(fault in trace for fault in EMULATOR_FAULTS
                             for _, trace in result.failures):
        print(f"again {test.id()}: the emulator could not start a process", flush=True)
        result = unittest.TestResult()
        test.run(result)
    return result, time.monotonic() - started


def runs_alone(test):
    return hasattr(getattr(test, test._testMethodName, None), "alone")


def run_all(tests, jobs):
    together = [test for test in tests if not runs_alone(test)]
    with ThreadPoolExecutor(jobs) as pool:
        yield from zip(together, pool.map(run_one, together))
    for test in filter(runs_alone, tests):
        yield test, run_one(test)


def report(test, result):
    """Prints what went wrong with one test. Returns "passed", "failed" or "skipped"."""
    faults = result.failures + result.errors
    for case, trace in faults:
        print(f"--- {case}\n{trace}")
    if faults or result.unexpectedSuccesses:
        print(f"FAILED {test.id()}", flush=True)
        return "failed"
    if result.skipped:
        print(f"skipped {test.id()}: {result.skipped[0][1]}", flush=True)
        return "skipped"
    return "passed"


def main():
    arguments = parse_arguments()
    SETTINGS.vesk = arguments.vesk.resolve()
    SETTINGS.children = arguments.children.resolve()
    SETTINGS.wine = [str(Path(part).resolve()) for part in arguments.wine or []]
    SETTINGS.keep = arguments.keep
    # Under nohup or in the background of a script the tested program would inherit that it is deaf.
    signal.signal(signal.SIGHUP, signal.SIG_DFL)
    signal.signal(signal.SIGINT, signal.default_int_handler)
    tests = selected(arguments.patterns)
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    times = []
    for test, (result, seconds) in run_all(tests, arguments.jobs):
        counts[report(test, result)] += 1
        times.append((seconds, test.id()))
    for seconds, name in sorted(times, reverse=True)[:SLOWEST]:
        print(f"{seconds:6.1f} s  {name}")
    print(", ".join(f"{count} {what}" for what, count in counts.items()))
    return 0 if counts["failed"] == 0 and counts["passed"] > 0 else 1


if __name__ == "__main__":
    sys.exit(main())
