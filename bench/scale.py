#!/usr/bin/env python3
"""Shows how vesk's time and memory grow with the size of a project.

    bench/scale.py --vesk build/release/bin/vesk

targets  one unit with N trivial targets under one aggregate: everything that vesk does for a
         target but run a command, from parsing to its output context
units    a project of N units with 10 targets each: loading, then building one target

Each is measured as a first run, from which nothing is kept, and as one that repeats it. Where ninja
is installed, it reads and checks as many phony targets in the same run, so that each figure has a
peer. Times are the best of several runs, in milliseconds; memory is the largest resident size, in
MiB. Only the Python standard library is used.
"""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time


def measure(command, directory, runs, first=False):
    """Best wall time in ms and peak memory in MiB of a command; it must succeed. Before a `first`
    run all that vesk keeps is removed."""
    best, memory = float("inf"), 0.0
    environment = dict(os.environ, APPDATA=str(directory / "appdata"), NO_COLOR="1")
    for _ in range(runs):
        for kept in directory.glob(".vesk_cache*") if first else ():
            kept.unlink()
        start = time.perf_counter()
        with open(os.devnull, "wb") as nowhere:
            child = subprocess.Popen(command, cwd=directory, stdout=nowhere, env=environment)
            _, status, usage = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
        best = min(best, (time.perf_counter() - start) * 1000)
        memory = max(memory, usage.ru_maxrss / 1024)
        if child.returncode != 0:
            sys.exit(f"{command[0]} ended with status {child.returncode} in {directory}")
    return best, memory


def write_targets(directory, count):
    names = [f"t{i}" for i in range(count)]
    with open(directory / "vesk.txt", "w", encoding="utf-8") as unit:
        unit.write("unit main\nall: " + "\n".join(names) + " { NO_TOOL }\n")
        for name in names:
            unit.write(f'{name}: {{ NO_TOOL VALUE = "{name}" FLAGS = ["a", "b"] '
                       'TEXT = "n${VALUE}" }\n')
    write_phony(directory, names)
    return ["all"]


def write_units(directory, count):
    with open(directory / ".vesk_project.txt", "w", encoding="utf-8") as project:
        project.write("name many\nunits {\n")
        for i in range(count):
            project.write(f'  u{i} {{ "u{i}.txt" }}\n')
        project.write("}\n")
    names = []
    for i in range(count):
        with open(directory / f"u{i}.txt", "w", encoding="utf-8") as unit:
            unit.write(f"unit u{i}\n")
            for j in range(10):
                names.append(f"u{i}-t{j}")
                unit.write(f't{j}: {{ NO_TOOL VALUE = "u{i}" FLAGS = ["a", "b"] '
                           'TEXT = "n${VALUE}" }\n')
    write_phony(directory, names)
    return ["u0::t0"]


def write_phony(directory, names):
    with open(directory / "build.ninja", "w", encoding="utf-8") as build:
        for name in names:
            build.write(f"build {name}: phony\n  value = {name}\n  flags = a b\n")
        build.write("build all: phony " + " ".join(names) + "\ndefault all\n")


def report(kind, write, sizes, vesk, ninja, runs):
    print(f"{kind:>8} {'n':>8} {'first ms':>9} {'MiB':>7} {'us each':>8} {'then ms':>8} {'MiB':>7} "
          f"{'ninja ms':>9} {'ratios':>12}")
    for size in sizes:
        with tempfile.TemporaryDirectory() as name:
            directory = pathlib.Path(name)
            request = write(directory, size)
            first, memory = measure([vesk, *request], directory, runs, first=True)
            then, less = measure([vesk, *request], directory, runs)
            line = (f"{kind:>8} {size:>8} {first:>9.1f} {memory:>7.1f} {first * 1000 / size:>8.1f} "
                    f"{then:>8.1f} {less:>7.1f}")
            if ninja:
                peer, _ = measure([ninja], directory, runs)
                line += f" {peer:>9.1f} {first / peer:>5.2f} {then / peer:>6.2f}"
            print(line, flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--vesk", required=True, help="the executable, built for release")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--targets", type=int, nargs="*", default=[1000, 10000, 100000])
    parser.add_argument("--units", type=int, nargs="*", default=[10, 100, 1000])
    options = parser.parse_args()
    vesk = str(pathlib.Path(options.vesk).resolve())
    ninja = shutil.which("ninja")
    report("targets", write_targets, options.targets, vesk, ninja, options.runs)
    report("units", write_units, options.units, vesk, ninja, options.runs)


if __name__ == "__main__":
    main()
