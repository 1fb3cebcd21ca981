#!/usr/bin/env python3
"""Damages the cache of a project, again and again, and looks whether a build is ever wrong.

    damage_caches.py --vesk PROGRAM [--rounds 10000] [--seed 1] [--large BYTES] [--kill]

The project has commands, a file writer and a C program; its compiler is a stand-in that works in a
moment: an object holds the text of its source and headers, a program that of its objects. In each
round something is edited, one of vesk's own files is damaged, and vesk builds. Then every output has
to hold what the sources say, and a cache in which something was changed has to be reported.
With a text of so many BYTES the cache file is large, and new records are appended to another one.
With --kill nothing is damaged; builds are killed at any moment, and every other one is finished.
"""

import argparse
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

COMPILER = r"""
#include <stdio.h>
#include <string.h>

static FILE *out, *rule;

static void copy(const char *name) {
    char line[4096], header[4096];
    FILE *in = fopen(name, "r");
    if (!in || !out) { fprintf(stderr, "cc: %s\n", name); _Exit(1); }
    if (rule) fprintf(rule, " %s", name);
    while (fgets(line, sizeof line, in)) {
        if (sscanf(line, "#include \"%[^\"]\"", header) == 1) copy(header);
        else fputs(line, out);
    }
    fclose(in);
}

int main(int count, char **arguments) {
    for (int i = 1; i < count; ++i) {
        if (!strcmp(arguments[i], "-o")) out = fopen(arguments[i + 1], "w");
        if (!strcmp(arguments[i], "-MF")) rule = fopen(arguments[i + 1], "w");
    }
    if (rule) fputs("object:", rule);
    for (int i = 1; i < count; ++i) {
        const char *suffix = strrchr(arguments[i], '.');
        if (!strcmp(arguments[i], "-o") || !strcmp(arguments[i], "-MF")) ++i;
        else if (suffix && (!strcmp(suffix, ".c") || !strcmp(suffix, ".o"))) copy(arguments[i]);
    }
    if (rule) fputs("\n", rule);
    return (rule && fclose(rule)) || fclose(out);
}
"""

UNIT = """
unit main
all: copied written program large { NO_TOOL = 1 }
large: { FILENAME = "large" TEXT = "%s" WRITE_FILE = 1 }
copied: { SRC = P"(command.txt)" ^DST = P"(copied)" cmdline = "cp command.txt copied" }
written: { FILENAME = "written" TEXT = "%s" WRITE_FILE = 1 }
program: { C_FILES = ["main.c"] OUTPUT_NAME = "program" OUTPUT_DIR = "." C_FLAGS = "-D%s" }
"""

REGISTRY = """
tools { quick { tool_type = "gnu-gcc" toolchain_name = "quick" toolchain_path = P"(%s)"
        toolchain_version = "12.0.0" toolchain_target = "x86_64-linux-gnu"
        toolchain_default = "machine" } }
"""


class Project:
    def __init__(self, vesk, base, dice, large):
        self.vesk, self.dice, self.dir = vesk, dice, base / "work"
        self.large = "x" * large
        tools = base / "tools"
        (base / "data/vesk").mkdir(parents=True)
        tools.mkdir()
        self.dir.mkdir()
        (base / "data/vesk/.vesk_registry.txt").write_text(REGISTRY % tools)
        (base / "cc.c").write_text(COMPILER)
        subprocess.run(["cc", "-O1", "-static", "-o", tools / "gcc", base / "cc.c"], check=True)
        self.environment = {"PATH": "/usr/bin:/bin", "APPDATA": str(base / "data"), "NO_COLOR": "1"}
        self.texts = dict.fromkeys(("command.txt", "written", "main.c", "main.h"), "text 0\n")
        self.flag = "0"
        for name in self.texts:
            self.write(name)

    def write(self, name):
        text = self.texts[name]
        if name == "written":
            (self.dir / "vesk.txt").write_text(UNIT % (self.large, text.strip(), self.flag))
        else:
            include = '#include "main.h"\n' if name == "main.c" else ""
            (self.dir / name).write_text(include + text)

    def outputs(self):
        """What they have to hold."""
        return {"copied": self.texts["command.txt"], "written": self.texts["written"].strip(),
                "program": self.texts["main.h"] + self.texts["main.c"]}

    def edit(self):
        """Of a source to a few texts of the same length, or of an output."""
        deed = self.dice.randrange(8)
        if deed < 5:
            name = self.dice.choice(sorted(self.texts))
            self.texts[name] = f"text {self.dice.randrange(3)}\n"
            self.write(name)
        elif deed < 7:
            file = self.dir / self.dice.choice(sorted(self.outputs()))
            if deed == 5:
                file.unlink(missing_ok=True)
            else:
                file.write_text(f"text {self.dice.randrange(3)}\n")

    def build(self):
        return subprocess.run([self.vesk, "all"], cwd=self.dir, env=self.environment, text=True,
                              errors="backslashreplace", stdin=subprocess.DEVNULL,
                              capture_output=True)

    def kill_one(self):
        process = subprocess.Popen([self.vesk, "all"], cwd=self.dir, env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        time.sleep(self.dice.random() * 0.05)
        os.killpg(process.pid, signal.SIGKILL)  # it is ours until it has been waited for
        process.wait()

    def wrong(self, result):
        """What the build did wrong; empty when nothing."""
        if result.returncode != 0:
            return f"status {result.returncode}"
        for name, text in self.outputs().items():
            found = (self.dir / name).read_text()
            if found.strip() != text.strip():
                return f"{name} holds {found!r} instead of {text!r}"
        return ""


def damaged(whole, dice, earlier):
    """The bytes, changed in one of many ways. The last ones take whole records of an earlier build,
    which need not be noticed, as they are not wrong in themselves."""
    at = dice.randrange(len(whole) + 1)
    end = min(len(whole), at + dice.choice((1, 1, 2, 10, 100)))
    piece = whole[at:end]
    ways = [
        lambda: whole[:at],
        lambda: whole[at:],
        lambda: whole[:at] + whole[end:],
        lambda: whole[:at] + piece + piece + whole[end:],
        lambda: whole[:at] + bytes(byte ^ 1 << dice.randrange(8) for byte in piece) + whole[end:],
        lambda: whole[:at] + dice.randbytes(len(piece)) + whole[end:],
        lambda: whole[:at] + bytes(len(whole) - at),
        lambda: b"",
        lambda: whole[:at] + earlier[at:],
        lambda: earlier,
    ]
    way = dice.randrange(len(ways))
    content = ways[way]()
    return content, content != whole and way < len(ways) - 2


def damage_something(project, dice, earlier):
    """Returns the kind of file in which a change must be reported, or nothing."""
    newest = ".vesk_cache.changes" if project.large else ".vesk_cache"
    file = project.dir / dice.choice((newest,) * 5 + (
        ".vesk_cache", ".vesk_cache.snapshot", ".vesk_cache.claims"))
    whole = file.read_bytes() if file.is_file() else b""
    if file.suffix == ".claims":
        # The format has a hash after each name.
        file.write_bytes(damaged(b"9\nmain::all\n", dice, b"")[0])
        return "Claims"
    content, is_wrong = damaged(whole, dice, earlier.get(file.name, b""))
    earlier[file.name] = whole
    file.write_bytes(content)
    return "Cache" if file.name == ".vesk_cache" and is_wrong else ""


def play(project, dice, rounds, kill):
    """Returns how many builds were wrong."""
    earlier, wrong, reported = {}, 0, 0
    start = time.monotonic()
    project.build()
    for number in range(1, rounds + 1):
        for _ in range(dice.randrange(3)):
            project.edit()
        if kill:
            must_say = ""
            project.kill_one()
            if number % 2:
                continue
        else:
            must_say = damage_something(project, dice, earlier)
        result = project.build()
        # The parser may say of a damaged assignment what it met, the header may be any bytes.
        said = re.sub(r"(line \d+:\d+ .*?)?(Cache|Claims) file '.*' .*Starting with empty cache\.\n",
                      "", result.stderr, flags=re.DOTALL)
        fault = project.wrong(result) or said
        if must_say and f"{must_say} file '" not in result.stderr:
            fault = fault or f"{must_say}: the damage was not reported"
        reported += bool(result.stderr)
        if fault:
            wrong += 1
            print(f"round {number}: {fault}\n{result.stdout}{result.stderr}", flush=True)
        if number % 1000 == 0:
            print(f"{number} rounds, {wrong} wrong, {reported} reported, "
                  f"{time.monotonic() - start:.0f} s", flush=True)
    return wrong


def main():
    parser = argparse.ArgumentParser(description="Damages caches and looks for wrong builds.")
    parser.add_argument("--vesk", type=Path, required=True)
    parser.add_argument("--rounds", type=int, default=10000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--large", type=int, default=0)
    parser.add_argument("--kill", action="store_true")
    arguments = parser.parse_args()
    dice = random.Random(arguments.seed)
    base = Path(tempfile.mkdtemp(prefix="vesk-damage-"))
    try:
        project = Project(arguments.vesk.resolve(), base, dice, arguments.large)
        wrong = play(project, dice, arguments.rounds, arguments.kill)
    finally:
        shutil.rmtree(base, ignore_errors=True)
    print(f"{arguments.rounds} rounds with seed {arguments.seed}: {wrong} wrong")
    return 0 if wrong == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
