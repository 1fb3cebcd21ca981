"""Synthetic source trees, each with the build files of vesk, ninja or make for the same work.

A tree knows which file to change and how to see that the change arrived: its program prints a sum
of macros, its copies are compared. So a tool that skips too much is caught, not praised.
"""

import os
import random
import re
import subprocess

C_FLAGS = "-O0"
INCLUDES = 5          # headers that a source of `wide` includes
LIBRARY_SOURCES = 5   # sources of a library of `layers`
LAYERS = 10
USES = 3              # libraries of the layer below that a library uses

NINJA_RULES = f"""\
ninja_required_version = 1.5
cflags = {C_FLAGS} -Iinclude
rule cc
  command = gcc $cflags -MMD -MF $out.d -c $in -o $out
  depfile = $out.d
  deps = gcc
rule ar
  command = rm -f $out && ar rcs $out $in
rule link
  command = gcc @$out.rsp -o $out
  rspfile = $out.rsp
  rspfile_content = $in
rule copy
  command = cp $in $out
"""

MAKE_RULES = f"""\
cflags = {C_FLAGS} -Iinclude
.SUFFIXES:
all:
obj/%.o: %.c
\tgcc $(cflags) -MMD -c $< -o $@
lib/%.a:
\trm -f $@ && ar rcs $@ $(filter %.o,$^)
"""


class Tree:
    """A directory with sources and build files; `source` and `header` are the files to edit."""

    def __init__(self, root, source, header=None, program=None, copy=None):
        self.root, self.source, self.header = root, source, header
        self.program = program    # prints the sum of all macros
        self.copy = copy          # or: must equal `source` after a build

    def edit(self, path, value):
        """Gives the macro of a source or header, or the text of a copy, another value."""
        file = self.root / path
        text = re.sub(r"^(#define EDIT\w*|EDIT) \d+$", rf"\1 {value}", file.read_text(), flags=re.M)
        file.write_text(text)

    def touch(self, path):
        os.utime(self.root / path)

    def result(self):
        """What a build left behind, to be compared between tools and before and after an edit."""
        if self.copy:
            return (self.root / self.copy).read_text()
        return subprocess.run([self.root / self.program], check=True, text=True,
                              capture_output=True).stdout


def write(root, path, text):
    file = root / path
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text)


def write_header(root, name):
    write(root, f"include/{name}.h", f"#pragma once\n#define EDIT_{name.upper()} 0\n")


def write_source(root, path, function, headers):
    terms = " + ".join(["EDIT"] + [f"EDIT_{name.upper()}" for name in headers])
    includes = "".join(f'#include "{name}.h"\n' for name in headers)
    write(root, path, f"{includes}#define EDIT 0\n"
                      f"int {function}(void);\nint {function}(void) {{ return {terms}; }}\n")


def write_main(root, path, functions):
    calls = "".join(f"    sum += {name}();\n" for name in functions)
    write(root, path, "#include <stdio.h>\n" + "".join(f"int {f}(void);\n" for f in functions) +
          f"int main(void) {{\n    long sum = 0;\n{calls}    printf(\"%ld\\n\", sum);\n"
          "    return 0;\n}\n")


def ninja_objects(sources):
    """The objects of some sources, and the statements that make them."""
    objects = [f"obj/{source[:-2]}.o" for source in sources]
    return objects, "".join(f"build {o}: cc {s}\n" for o, s in zip(objects, sources))


def make_objects(sources):
    """The objects of some sources, and the lines that bring their directories and headers in."""
    objects = [f"obj/{source[:-2]}.o" for source in sources]
    directory = os.path.dirname(objects[0])
    return objects, (f"{' '.join(objects)}: | {directory}\n{directory}:\n\tmkdir -p $@\n"
                     f"-include {' '.join(name[:-2] + '.d' for name in objects)}\n")


def make_program(program, objects, archives=()):
    """The lines that link a program; the list of objects is too long for a command."""
    return (f"all: {program}\n{program}: {' '.join([*objects, *archives])} | bin\n"
            f"\t$(file >$@.rsp,$^)gcc @$@.rsp -o $@\nbin lib:\n\tmkdir -p $@\n")


def quoted(names):
    return ", ".join(f'"{name}"' for name in names)


def wide(root, tool, files, headers):
    """One program of many sources, each of which includes some of many headers."""
    chooser = random.Random(1)
    names = [f"h{i}" for i in range(headers)]
    functions = [f"f{i}" for i in range(files)]
    for name in names:
        write_header(root, name)
    for function in functions:
        chosen = chooser.sample(names, min(INCLUDES, headers))
        write_source(root, f"src/{function}.c", function, chosen)
    write_main(root, "src/main.c", functions)
    sources = [f"src/{name}.c" for name in functions + ["main"]]
    if tool == "vesk":
        write(root, "vesk.txt", f'wide: {{\n  C_FLAGS = "{C_FLAGS}"\n  INCLUDE_DIRS = ["include"]\n'
                                f"  C_FILES = [{quoted(sources)}]\n}}\n")
        program = "out/wide"
    elif tool == "make":
        objects, statements = make_objects(sources)
        write(root, "Makefile", MAKE_RULES + statements + make_program("bin/wide", objects))
        program = "bin/wide"
    else:
        objects, statements = ninja_objects(sources)
        write(root, "build.ninja", f"{NINJA_RULES}{statements}"
                                   f"build bin/wide: link {' '.join(objects)}\n")
        program = "bin/wide"
    return Tree(root, sources[files // 2], f"include/{names[headers // 2]}.h", program)


def layers(root, tool, libraries):
    """Static libraries in layers, each using some of the layer below, and a program of them all."""
    chooser = random.Random(1)
    depth = max(1, -(-libraries // LAYERS))
    functions, built = [], []
    vesk, ninja, make = "", NINJA_RULES, MAKE_RULES
    for i in range(libraries):
        name = f"lib{i}"
        start = i // depth * depth
        below = list(range(max(0, start - depth), start))
        used = [f"lib{j}" for j in sorted(chooser.sample(below, min(USES, len(below))))]
        write_header(root, name)
        own = [f"{name}_f{s}" for s in range(LIBRARY_SOURCES)]
        sources = [f"src/{name}/{function}.c" for function in own]
        for source, function in zip(sources, own):
            write_source(root, source, function, [name] + used)
        vesk += (f'{name}: {" ".join("+" + u for u in used)} {{\n  OUTPUT_TYPE = "static"\n'
                 f'  C_FLAGS = "{C_FLAGS}"\n  INCLUDE_DIRS = ["include"]\n'
                 f"  C_FILES = [{quoted(sources)}]\n}}\n")
        objects, statements = ninja_objects(sources)
        ninja += f"{statements}build lib/{name}.a: ar {' '.join(objects)}\n"
        make += f"{make_objects(sources)[1]}lib/{name}.a: {' '.join(objects)} | lib\n"
        functions += own
        built.append(name)
    write_main(root, "src/main.c", functions)
    if tool == "vesk":
        needs = " ".join("+" + name for name in built)
        write(root, "vesk.txt", f'program: {needs} {{\n  C_FILES = ["src/main.c"]\n'
                                f'  C_FLAGS = "{C_FLAGS}"\n}}\n{vesk}')
    elif tool == "make":
        archives = [f"lib/{name}.a" for name in reversed(built)]
        objects, statements = make_objects(["src/main.c"])
        write(root, "Makefile", make + statements + make_program("bin/program", objects, archives))
    else:
        archives = " ".join(f"lib/{name}.a" for name in reversed(built))
        write(root, "build.ninja", f"{ninja}build obj/main.o: cc src/main.c\n"
                                   f"build bin/program: link obj/main.o {archives}\n")
    program = "out/program" if tool == "vesk" else "bin/program"
    return Tree(root, "src/lib0/lib0_f0.c", "include/lib0.h", program)


def copies(root, tool, number):
    """As `null`, and vesk may run the copies side by side."""
    return null(root, tool, number, 'SIDE_BY_SIDE = "yes" ')


def null(root, tool, copies, setting=""):
    """Independent copies of small files: what a tool does for a target but its command."""
    names = [f"t{i}" for i in range(copies)]
    for name in names:
        write(root, f"in/{name}.txt", "EDIT 0\n")
    (root / "out").mkdir()
    if tool == "vesk":
        targets = "".join(f'{n}: {{ {setting}cmdline = "cp in/{n}.txt out/{n}.txt" '
                          f"source = P\"(in/{n}.txt)\" ^made = P\"(out/{n}.txt)\" }}\n"
                          for n in names)
        write(root, "vesk.txt", f"all: {' '.join(names)} {{ NO_TOOL }}\n{targets}")
    elif tool == "make":
        write(root, "Makefile", f"all: {' '.join(f'out/{n}.txt' for n in names)}\n"
              "out/%.txt: in/%.txt\n\tcp $< $@\n")
    else:
        write(root, "build.ninja", NINJA_RULES +
              "".join(f"build out/{n}.txt: copy in/{n}.txt\n" for n in names))
    middle = names[copies // 2]
    return Tree(root, f"in/{middle}.txt", copy=f"out/{middle}.txt")
