#!/usr/bin/env python3
"""Shows what it costs to see a build (docs/see-the-build.md).

    bench/seeing.py --vesk build/release/bin/vesk [--targets 1000] [--rounds 9]

A project of targets that copy a file each is built, and run again with nothing to do, without any
option and with each option in turns. Processor times are those of vesk and its commands, in
milliseconds: the least of all rounds. Ratios are to the run without an option in the same rounds. A
run that only repeats an earlier one has nothing to show of targets, so --graph, --stats and --report
are compared with --summary, which visits targets too. Only the Python standard library is used.
"""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

OPTIONS = {
    "--events": "--events=e.jsonl",
    "--trace": "--trace=t.json",
    "--graph": "--graph=g.json",
    "--stats": "--stats",
    "--report": "--report=r.html",
}


def processor_time(command, directory):
    environment = dict(os.environ, APPDATA=str(directory / "appdata"), NO_COLOR="1")
    with open(os.devnull, "wb") as nowhere:
        child = subprocess.Popen(command, cwd=directory, stdout=nowhere, env=environment)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"{command} ended with status {child.returncode}")
    return (usage.ru_utime + usage.ru_stime) * 1000


def write_project(directory, count):
    names = [f"t{i}" for i in range(count)]
    (directory / "in.txt").write_text("text\n")
    unit = ["unit main", "all: " + " ".join(names) + " { NO_TOOL }"]
    for name in names:
        unit.append(f'{name}: {{ ^OUT = P"(made/{name})" from = P"(in.txt)" '
                    'cmdline = "cp ${from} ${OUT}" }')
    (directory / "vesk.txt").write_text("\n".join(unit) + "\n")


def measure(run, variants, rounds):
    best = {name: float("inf") for name in variants}
    for _ in range(rounds):
        for name, options in variants.items():
            best[name] = min(best[name], run(options))
    return best


def show(title, best, base):
    print(f"\n{title}")
    for name, time in best.items():
        ratio = "" if name == base else f"{time / best[base]:6.2f}  {time - best[base]:+7.1f} ms"
        print(f"  {name:<10} {time:8.1f} ms {ratio}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--vesk", type=pathlib.Path, required=True)
    parser.add_argument("--targets", type=int, default=1000)
    parser.add_argument("--rounds", type=int, default=9)
    arguments = parser.parse_args()
    vesk = str(arguments.vesk.resolve())
    with tempfile.TemporaryDirectory(prefix="vesk-seeing-") as name:
        directory = pathlib.Path(name)
        write_project(directory, arguments.targets)

        def again(options):
            return processor_time([vesk, *options, "all"], directory)

        def rebuild(options):
            return processor_time([vesk, "--rebuild", *options, "all"], directory)

        plain = {"nothing": [], **{name: [option] for name, option in OPTIONS.items()}}
        show(f"{arguments.targets} commands run", measure(rebuild, plain, 3), "nothing")
        for _ in range(3):  # the first runs after a build keep what the next ones repeat
            for options in plain.values():
                again(options)
        repeated = {name: plain[name] for name in ("nothing", "--events", "--trace")}
        show("nothing to do, repeated", measure(again, repeated, arguments.rounds), "nothing")
        visited = {"--summary": ["--summary"],
                   **{name: plain[name] for name in ("--graph", "--stats", "--report")}}
        show("nothing to do, visited", measure(again, visited, arguments.rounds), "--summary")


if __name__ == "__main__":
    main()
