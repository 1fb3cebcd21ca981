"""A build passes over the visits that an edit does not concern, and does what it would do without.

Two copies of a project are edited in the same way. One of them keeps everything from run to run, the
other visits every target again.
"""

import random
import shutil

from harness import SETTINGS, ProgramTest, on_system, wait_until

# Targets that are found by a name, by a file, and only by their order; that several need, that warn,
# that run alongside others, and that do something nobody knows of.
UNIT = """
    unit main
    all: first mid(names) twice loose reads chain3 late more::group { names = "n" NO_TOOL = 1 }
    first: { SRC = P"(a.txt)" ^FIRST = P"(out/first)" cmdline = "child copy a.txt out/first" }
    mid(what): +low base {
        SRC = base.BASE ^MID = P"(out/mid)" WORD = "${what}" cmdline = "child copy out/base out/mid"
    }
    low: base { ^FLAGS += "-f" NO_TOOL = 1 }
    base: { SRC = P"(b.txt)" ^BASE = P"(out/base)" SIDE_BY_SIDE = "yes"
            cmdline = "child copy b.txt out/base" }
    twice: one two { NO_TOOL = 1 }
    one: base { SRC = P"(c.txt)" ^SAME = P"(out/one)" SIDE_BY_SIDE = "yes"
                cmdline = "child copy c.txt out/one" }
    two: { SRC = P"(out/first)" ^SAME = P"(out/two)" SIDE_BY_SIDE = "yes"
           cmdline = "child copy out/first out/two" }
    loose: { SRC = P"(d.txt)" ^LOOSE = P"(out/loose)"
             cmdline = "child copy d.txt out/loose && child copy d.txt out/unknown" }
    reads: { SRC = P"(out/unknown)" ^READS = P"(out/reads)"
             cmdline = "child copy out/unknown out/reads" }
    chain1: { FILENAME = "out/chain1" WRITE_FILE = 1 TEXT = "chain ${long}" }
    chain2: chain1 { SRC = P"(e.txt)" cmdline = "child copy e.txt out/chain2" }
    chain3: chain2 { NO_TOOL = 1 }
    hold: { cmdline = "child meet out/held out/go" }
    late: { SRC = P"(out/one)" ^LATE = P"(out/late)" SIDE_BY_SIDE = "yes"
            cmdline = "child copy out/one out/late" }
"""
MORE = """
    unit more
    group: main::base leaf leaf { NO_TOOL = 1 }
    leaf: main::first { SRC = P"(f.txt)" ^LEAF = P"(out/leaf)" cmdline = "child copy f.txt out/leaf" }
"""
SOURCES = ("a", "b", "c", "d", "e", "f")
MADE = ("first", "mid", "base", "one", "two", "loose", "unknown", "reads", "chain1", "chain2", "late",
        "leaf")


class PassedOver(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.write(".vesk_project.txt",
                   'name p units { main { "main.txt" } more { "more.txt" } }')
        # Of a cache file that is as large as this, changes are appended to another one.
        self.write("main.txt", UNIT.replace("${long}", "of links " * 35_000))
        self.write("more.txt", MORE)
        for name in SOURCES:
            self.write(f"{name}.txt", name)
        (self.dir / "out").mkdir()
        self.other = self.base / "made"
        shutil.copytree(self.dir, self.other)
        self.places = (self.dir, self.other)

    def both(self, deed):
        for place in self.places:
            deed(place)

    def edit(self, dice):
        """Changes something in both; returns what."""
        deed = dice.randrange(8)
        source, made, value = dice.choice(SOURCES), dice.choice(MADE), str(dice.randrange(3))
        if deed < 4:
            self.both(lambda place: (place / f"{source}.txt").write_text(value))
        elif deed == 4:
            self.both(lambda place: (place / "out" / made).unlink(missing_ok=True))
        elif deed == 5:
            self.both(lambda place: (place / "out" / made).write_text(value))
        elif deed == 6:
            self.both(lambda place: (place / f"{source}.txt").touch())
        else:
            self.both(lambda place: (place / f"{source}.txt").unlink(missing_ok=True))
        return deed, source, made

    def restore(self):
        for name in SOURCES:
            self.both(lambda place: (place / f"{name}.txt").exists() or
                      (place / f"{name}.txt").write_text("restored"))

    def run_both(self, *arguments):
        """Their results, with what has been made."""
        results = []
        for place, env in zip(self.places, ({}, {"VESK_KEEP": "no"})):
            env["APPDATA"] = on_system(self.base / "data")
            if place == self.other:
                for file in place.glob(".vesk_cache.snapshot*"):
                    file.unlink()
            result = self.run_vesk(*arguments, cwd=place, env=env)
            out, err = (text.replace(on_system(self.other), "{DIR}").replace("\\", "/")
                        for text in (result.out, result.err))
            made = {path.name: path.read_text() for path in (place / "out").iterdir()}
            results.append((result.status, out, err, made))
        return results

    def same_in_both(self, *arguments):
        kept, made = self.run_both(*arguments)
        if "-j2" in arguments:  # what runs alongside may end in any order, or fail before it is needed
            kept, made = ((status, files, status or sorted((out + err).splitlines()))
                          for status, out, err, files in (kept, made))
        self.assertEqual(kept, made)
        return kept[0]

    def test_edits_of_any_kind(self):
        for seed, arguments in ((1, ("all",)), (2, ("all", "-k")), (3, ("all", "-j2", "-k"))):
            dice = random.Random(seed)
            self.same_in_both(*arguments)
            self.pass_a_tick()
            for number in range(6 if SETTINGS.windows else 16):
                deeds = [self.edit(dice) for _ in range(dice.choice((1, 1, 1, 3)))]
                with self.subTest(seed=seed, number=number, deeds=deeds):
                    if self.same_in_both(*arguments) != 0:
                        self.same_in_both(*arguments)
                        self.restore()
                        self.same_in_both(*arguments)
                    if dice.randrange(4) == 0:
                        self.same_in_both(*arguments)
                    if dice.randrange(8) == 0 and SETTINGS.keep is None:
                        env = {"VESK_KEEP": "check", "APPDATA": on_system(self.base / "data")}
                        self.assertEqual(self.run_vesk(*arguments, env=env).err.count("wrong"), 0)

    def test_edits_while_another_one_builds(self):
        """What was compared before the other one ended is out of date."""
        env = {"APPDATA": on_system(self.base / "data")}
        self.same_in_both("all")
        self.pass_a_tick()
        self.same_in_both("all")
        other = self.start("hold", env=env)
        wait_until((self.dir / "out/held").exists)
        self.write("b.txt", "first")
        waiting = self.start("all", env=env)
        self.assertIn(b"Waiting for another vesk", waiting.stdout.readline())
        self.write("a.txt", "second")
        self.write("out/go", "")
        other.communicate()
        waiting.communicate()
        self.assertEqual((self.read("out/base"), self.read("out/first")), ("first", "second"))
