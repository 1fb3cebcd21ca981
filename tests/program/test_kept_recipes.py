"""Recipes that are kept run again without their targets being visited, and never wrongly."""

import json
import random

from harness import posix_only
from test_toolchains import ToolchainTest

UNIT = """
    app: +top +one {{ C_FILES = ["src/main.c", "src/a.c"] INCLUDE_DIRS = ["new", "inc"]
                      {flags} }}
    top: +two {{ OUTPUT_TYPE = "static" C_FILES = ["src/top.c"] INCLUDE_DIRS = ["new", "inc"] }}
    two: +one {{ OUTPUT_TYPE = "static" C_FILES = ["src/two.c"] INCLUDE_DIRS = ["inc"] }}
    one: {{ OUTPUT_TYPE = "static" C_FILES = ["src/one.c", "src/other.c"]
            INCLUDE_DIRS = ["inc"] {flags} }}
"""
SOURCES = ("a", "top", "two", "one", "other")


@posix_only("it needs the compilers of the system itself")
class KeptRecipes(ToolchainTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.values = dict.fromkeys((*SOURCES, "x", "y"), 1)
        self.shadow = None  # the value of x in new/x.h
        self.flags = ""
        calls = "".join(f"int {name}(void); " for name in SOURCES)
        self.write("src/main.c", f"#include <stdio.h>\n{calls}\nint main(void) {{ printf(\"%d\", "
                                 f"{' + '.join(f'{name}()' for name in SOURCES)}); return 0; }}\n")
        (self.dir / "new").mkdir()
        for name in ("unit", *self.values):
            self.write_one(name)

    def write_one(self, name):
        if name == "unit":
            self.write("vesk.txt", UNIT.format(flags=self.flags))
        elif name in ("x", "y"):
            self.write(f"inc/{name}.h", f"enum {{ {name} = {self.values[name]} }};\n")
        else:
            self.write(f"src/{name}.c", f'#include "x.h"\n#include "y.h"\nint {name}(void) '
                                        f"{{ return {self.values[name]} + x + y; }}\n")

    def expected(self):
        """The sum; `a` and `top` look for headers in new/ first."""
        x = self.values["x"]
        shadowed = x if self.shadow is None else self.shadow
        return str(sum(self.values[name] for name in SOURCES) + 5 * self.values["y"] + 3 * x +
                   2 * shadowed)

    def edit(self, dice, jobs):
        deed = dice.randrange(8)
        if deed < 4:
            name = dice.choice(sorted(self.values))
            self.values[name] = dice.randrange(100)
            self.write_one(name)
        elif deed == 4:
            self.shadow = None if self.shadow is not None else dice.randrange(100)
            if self.shadow is None:
                (self.dir / "new/x.h").unlink()
            else:
                self.write("new/x.h", f"enum {{ x = {self.shadow} }};\n")
        elif deed == 5:
            files = sorted(path for path in (self.dir / "out").rglob("*") if path.is_file())
            dice.choice(files).unlink()
        elif deed == 6:
            self.flags = dice.choice(("", 'C_FLAGS = "-O1"', 'DEFINES = ["UNUSED"]'))
            self.write_one("unit")
        else:
            self.write("src/one.c", "this is no C\n")
            self.assertEqual(self.run_vesk("app", jobs).status, 1)
            self.write_one("one")
        return deed

    def test_any_row_of_edits(self):
        dice = random.Random(5)
        for jobs in ("-j1", "-j2"):
            self.build("app", jobs)
            for number in range(9):
                deed = self.edit(dice, jobs)
                with self.subTest(number=number, deed=deed, jobs=jobs):
                    self.build("app", jobs)
                    self.assertEqual(self.output_of("out/app"), self.expected())
                    if dice.randrange(3) == 0:
                        env = {"VESK_KEEP": "check"}
                        checked = self.run_vesk("app", jobs, env=env)
                        self.assertEqual(checked.status, 0, checked.err)
                    self.nothing_to_do("app", jobs)

    def visited(self, *arguments):
        """Which targets a run visited, and the files that it compiled."""
        out = self.build("app", f"--events={self.dir / 'events'}", *arguments)
        lines = [json.loads(line) for line in
                 (self.dir / "events").read_text(encoding="utf-8").splitlines()]
        visits = [line for line in lines if line.get("what") == "visit"]
        names = {line["visit"]: line["target"] for line in visits if line["event"] == "started"}
        made = [names[line["visit"]] for line in visits
                if line["event"] == "finished" and not line["kept"]]
        return made, self.compiled(out)

    def test_only_what_is_stale_is_made(self):
        for jobs in ("-j1", "-j2"):
            self.build("app", jobs)
            self.pass_a_tick()
            self.values["one"] += 1
            self.write_one("one")
            self.assertEqual(self.visited(jobs), ([], ["src/one.c"]))
            self.assertEqual(self.output_of("out/app"), self.expected())
            self.write("src/one.c", self.read("src/one.c") + "/* the same object */\n")
            self.assertEqual(self.visited(jobs), ([], ["src/one.c"]))
            self.nothing_to_do("app", jobs)
