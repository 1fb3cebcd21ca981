#!/usr/bin/env python3
"""Stands in for the C3 compiler.

It refuses a command line that the real one refuses, and makes real products: functions of the form
`fn int name() { return EXPRESSION; }` are handed to gcc as C. C3C_DEFAULT names its own machine.
"""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

COMMANDS = ("compile", "static-lib", "dynamic-lib", "compile-only")
WITH_VALUE = ("-o", "--obj-out", "--target", "--stdlib", "-D", "--libdir", "--lib", "-z", "-L", "-l")
FLAGS = re.compile(r"-O[0-5sz]|-g|-q|--no-headers|--use-stdlib=no")
TARGETS = {"linux-x64": "", "mingw-x64": "x86_64-w64-mingw32-"}


def fail(text):
    print(f"c3c: {text}", file=sys.stderr)
    sys.exit(1)


def parse(arguments):
    options, sources, command, flags = {}, [], None, []
    words = iter(arguments)
    for word in words:
        if word in WITH_VALUE:
            options.setdefault(word, []).append(next(words, None) or fail(f"{word} needs a value"))
        elif FLAGS.fullmatch(word):
            flags.append(word)
        elif word in COMMANDS:
            command = word if command is None else fail("two commands")
        elif word.endswith(".c3"):
            sources.append(Path(word) if Path(word).is_file() else fail(f"there is no {word}"))
        else:
            fail(f"'{word}' must be an option or a file that is followed by .c3")
    if command is None or not sources:
        fail("no command or no file")
    if len([flag for flag in flags if flag.startswith("-O")]) > 1:
        fail("Multiple optimization levels were set.")
    for name in options.get("-D", []):
        if not re.fullmatch(r"[A-Z_0-9]+", name):
            fail(f"invalid feature {name}")
    return command, sources, options, flags


def as_c(text, features):
    if "fn" not in text:
        fail("syntax error")
    text = re.sub(r"^module .*;|^import .*;", "", text, flags=re.MULTILINE)
    text = re.sub(r"\$feature\((\w+)\)", lambda hit: str(int(hit[1] in features)), text)
    return re.sub(r"\bfn (\w+ \w+)\(\)", r"\1(void)", text)


def run(*command):
    if subprocess.run(command, check=False).returncode != 0:
        fail("the linker failed")


def main():
    os.environ.setdefault("SOURCE_DATE_EPOCH", "1")  # else linkers write the time into programs
    default = os.environ.get("C3C_DEFAULT", "linux-x64")
    if sys.argv[1:] == ["--version"]:
        triple = "x86_64-pc-linux-gnu" if default == "linux-x64" else "x86_64-w64-windows-gnu"
        print("C3 Compiler Version:       0.7.9 (Pre-release)\nInstalled directory:       /c3/\n"
              f"LLVM version:              19.1.7\nLLVM default target:       {triple}")
        return
    command, sources, options, flags = parse(sys.argv[1:])
    target = options.get("--target", [default])[-1]
    prefix = TARGETS.get(target, None)
    if prefix is None:
        fail(f"unknown target {target}")
    windows = target == "mingw-x64"
    with tempfile.TemporaryDirectory() as directory:
        objects = []
        for source in sources:
            text = source.read_text(encoding="utf-8")
            module = re.search(r"^module (\w+);", text, re.MULTILINE)
            name = module[1] if module else source.stem
            c = Path(directory) / f"{name}.c"
            c.write_text(as_c(text, options.get("-D", [])), encoding="utf-8")
            where = options.get("--obj-out", [directory])[-1]
            os.makedirs(where, exist_ok=True)
            objects.append(f"{where}/{name}{'.obj' if windows else '.o'}")
            run(f"{prefix}gcc", "-c", "-fPIC", "-w", str(c), "-o", objects[-1])
        if command == "compile-only":
            return
        product = options.get("-o", [None])[-1] or fail("no -o")
        os.makedirs(os.path.dirname(product) or ".", exist_ok=True)
        if command != "compile" and "--no-headers" not in flags:
            os.makedirs("headers", exist_ok=True)
        if command == "static-lib":
            run(f"{prefix}ar", "rcs", product + (".lib" if windows else ".a"), *objects)
            return
        # Programs for its own machine are linked by the C compiler, all else by itself.
        by_itself = command == "dynamic-lib" or target != default
        passed = options.get("-z", [])
        for argument in passed:
            if argument.startswith("-Wl," if by_itself else ("-rpath", "-soname")):
                fail(f"the linker does not know {argument}")
        if by_itself:
            passed = [f"-Wl,{word}" if word.startswith("-") else word for word in passed]
        rest = [*passed, *(f"-L{x}" for x in options.get("-L", [])),
                *(f"-l{x}" for x in options.get("-l", []))]
        if command == "dynamic-lib":
            rest += ["-shared", *([f"-Wl,--out-implib,{product}.lib"] if windows else [])]
            ending = ".dll" if windows else ".so"
        else:
            ending = ".exe" if windows else ""
        run(f"{prefix}gcc", *objects, *rest, "-o", product + ending)


main()
