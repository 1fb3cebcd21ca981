#!/usr/bin/env python3
"""Tests the finished vesk.

    run_program_tests.py --vesk PROGRAM --children DIRECTORY [--wine SCRIPT PREFIX] [PATTERN...]

--children names the directory with the programs that the tests' commands run, as the build made
them; --wine runs a Windows program with scripts/run-in-wine. A pattern selects the tests that have
it in their name. The last line reads "N passed, N failed, N skipped".
"""

import argparse
import signal
import sys
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
    parser.add_argument("--jobs", type=int, default=2)
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


# Now and then, on a busy machine, the emulator fails to start a process and says this; Windows
# itself has no such failure. A fault of vesk's own shows again in the second run.
EMULATOR_FAULT = "Internal error (code 1359)"


def run_one(test):
    result = unittest.TestResult()
    test.run(result)
    if SETTINGS.wine and any(EMULATOR_FAULT in trace for _, trace in result.failures):
        print(f"again {test.id()}: the emulator could not start a process", flush=True)
        result = unittest.TestResult()
        test.run(result)
    return result


def runs_alone(test):
    return hasattr(getattr(test, test._testMethodName, None), "alone")


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
    # Under nohup the tested program would inherit that it is deaf to this one.
    signal.signal(signal.SIGHUP, signal.SIG_DFL)
    tests = selected(arguments.patterns)
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    together = [test for test in tests if not runs_alone(test)]
    with ThreadPoolExecutor(arguments.jobs) as pool:
        for test, result in zip(together, pool.map(run_one, together)):
            counts[report(test, result)] += 1
    for test in filter(runs_alone, tests):
        counts[report(test, run_one(test))] += 1
    print(", ".join(f"{count} {what}" for what, count in counts.items()))
    return 0 if counts["failed"] == 0 and counts["passed"] > 0 else 1


if __name__ == "__main__":
    sys.exit(main())
