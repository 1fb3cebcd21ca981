"""A run that finds nothing to do is kept and repeated; whatever could change it ends that."""

import os
import random
import time
import unittest

from harness import SETTINGS, ProgramTest, on_system, posix_only

SNAPSHOT = ".vesk_cache.snapshot"
UNIT = """
    unit main
    all: app gen { NO_TOOL = 1 }
    app: lib { SRC = P"(app.txt)" ^APP = P"(out/app)" cmdline = "child copy app.txt out/app" }
    lib: { SRC = P"(lib.txt)" ^LIB = P"(out/lib)" cmdline = "child copy lib.txt out/lib" }
    gen: { FILENAME = "out/gen.txt" TEXT = "generated" WRITE_FILE = 1 }
    say: { cmdline = "child print said" }
"""


class SnapshotTest(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.unit(UNIT)
        self.write("app.txt", "app")
        self.write("lib.txt", "lib")
        (self.dir / "out").mkdir()
        self.file = self.dir / SNAPSHOT

    def run_vesk(self, *arguments, env=None, **options):
        env = {"APPDATA": on_system(self.base / "data"), **(env or {})}
        return super().run_vesk(*(arguments or ["all"]), env=env, **options)

    def build(self, *arguments, **options):
        result = self.run_vesk(*arguments, **options)
        self.assertEqual(result.status, 0, result.err)
        return result

    def stamp(self):
        """Changes with every kept run; None when none is kept."""
        kept = {path.name: path.stat().st_mtime_ns for path in self.dir.glob(SNAPSHOT + "*")
                if path.is_file() and path.stat().st_size > 0}
        return kept or None

    def repeats(self, *arguments, **options):
        """Whether a run that finds nothing to do is a repeated one: else it would be kept anew."""
        before = self.stamp()
        self.last = self.build(*arguments, **options)
        return before is not None and before == self.stamp()

    def settle(self, *arguments, **options):
        """Builds until a run is kept and repeated. What was written a moment ago may be written
        again without a trace; until it is older no run is kept."""
        for path in self.dir.glob(SNAPSHOT + "*"):
            path.unlink()
        self.settle_beside(*arguments, **options)

    def settle_beside(self, *arguments, **options):
        if SETTINGS.keep == "check":  # every run visits everything
            self.last = self.build(*arguments, **options)
            return
        for _ in range(200):
            if self.repeats(*arguments, **options):
                return
            time.sleep(0.02)
        self.fail("no run was repeated")


class Changes(SnapshotTest):
    def keeping_times(self, name, text):
        times = os.stat(self.dir / name)
        self.write(name, text)
        os.utime(self.dir / name, ns=(times.st_atime_ns, times.st_mtime_ns))

    def test_each_is_seen(self):
        project = 'name p units { main { "vesk.txt" } }'
        for name, change, file, content in (
                ("an edited source", lambda: self.write("app.txt", "edited"), "out/app", "edited"),
                ("one of the same size and time", lambda: self.keeping_times("app.txt", "Edited"),
                 "out/app", "Edited"),
                ("a removed output", lambda: (self.dir / "out/lib").unlink(), "out/lib", "lib"),
                ("one overwritten by hand", lambda: self.keeping_times("out/gen.txt", "GENERATED"),
                 "out/gen.txt", "generated"),
                ("an edited unit", lambda: self.unit(UNIT.replace("generated", "other")),
                 "out/gen.txt", "other")):
            with self.subTest(name):
                self.settle()
                change()
                self.build()
                self.assertEqual(self.read(file), content)
        for name, change, undo, said in (
                ("a source that is gone", lambda: (self.dir / "lib.txt").rename(self.dir / "away"),
                 lambda: (self.dir / "away").rename(self.dir / "lib.txt"), "lib.txt"),
                ("a project file", lambda: self.write(".vesk_project.txt", project + " x"),
                 lambda: (self.dir / ".vesk_project.txt").unlink(), ".vesk_project.txt"),
                ("a registry", lambda: self.registry("broken {"), lambda: self.registry(""),
                 ".vesk_registry.txt"),
                ("the cache", lambda: self.write(".vesk_cache", "damaged"), lambda: None,
                 ".vesk_cache")):
            with self.subTest(name):
                self.settle()
                change()
                self.assertIn(said, self.run_vesk().err)
                undo()

    def test_other_files_of_the_same_times(self):
        """A unit file in a directory that another one takes the place of, as unpacking leaves them."""
        self.write(".vesk_project.txt", 'name p units { main { "now/vesk.txt" } }')
        self.write_at_once({f"{place}/vesk.txt": UNIT.replace("generated", "1 " + place.ljust(4))
                            for place in ("now", "next")})
        self.settle("gen")
        (self.dir / "now").rename(self.dir / "away")
        (self.dir / "next").rename(self.dir / "now")
        self.build("gen")
        self.assertEqual(self.read("out/gen.txt"), "1 next")

    def test_any_row_of_them(self):
        """What is built is what stands in the sources, whatever happened in between."""
        dice = random.Random(7)
        texts = {"app": "app", "lib": "lib"}
        for _ in range(30):
            name = dice.choice(("app", "lib"))
            deed = dice.randrange(5)
            if deed == 0:
                texts[name] = str(dice.randrange(3))
                self.write(f"{name}.txt", texts[name])
            elif deed == 1:
                (self.dir / f"out/{name}").unlink(missing_ok=True)
            elif deed == 2:
                self.write(f"out/{name}", str(dice.randrange(3)))
            elif deed == 3:
                os.utime(self.dir / f"{name}.txt")
            self.build("all", *dice.choice(((), ("-j2",), ("month=3",))))
            self.assertEqual({name: self.read(f"out/{name}") for name in texts}, texts)


class ChangesAfterABuild(Changes):
    """The same where a build is kept as the run that is to follow it."""

    def settle(self, *arguments, **options):
        if SETTINGS.keep == "check":
            self.last = self.build(*arguments, **options)
            return
        for _ in range(200):
            for path in [*self.dir.glob(SNAPSHOT + "*"), *(self.dir / "out").iterdir()]:
                path.unlink()
            result = self.build(*arguments, **options)
            if "Starting build job" in result.out and self.repeats(*arguments, **options):
                self.assertNotIn("Starting build job", self.last.out)
                return
            time.sleep(0.02)  # until the unit file is older
        self.fail("no run was repeated after a build")


@unittest.skipIf(SETTINGS.keep == "check", "no run is repeated then")
class Repeated(SnapshotTest):
    def test_the_same_run_says_the_same(self):
        self.unit(UNIT + "    twice: lib lib { NO_TOOL = 1 }\n")
        self.build("twice")
        first = self.run_vesk("twice", colours=True, merged=True)
        self.assertRegex(first.out, "\x1b.*collides")
        (self.dir / "out/lib").unlink()
        self.run_vesk("twice", colours=True, merged=True)
        self.assertEqual(self.run_vesk("twice", colours=True, merged=True), first)
        self.settle("twice")
        self.assertEqual(self.run_vesk("twice", colours=True, merged=True), first)
        self.assertIn("collides", self.last.err)

    def test_only_for_the_same_command_line(self):
        self.settle()
        for arguments, options in ((("app",), {}), (("all", "x=1"), {}),
                                   (("all",), {"env": {"NO_COLOR": "1"}}),
                                   (("all",), {"env": {"VESK_OPTIONS": "-j2"}})):
            with self.subTest(arguments=arguments, options=options):
                self.assertFalse(self.repeats(*arguments, **options))
                self.settle()
        out = self.run_vesk("all", env={"NO_COLOR": "1"}, colours=True).out
        self.assertNotIn("\x1b", out)
        said = ("-f", on_system(self.dir / "vesk.txt"), "say")
        self.settle(*said)
        self.assertIn("child print said", self.build(*said, cwd=self.base).out)

    def test_command_lines_in_turns(self):
        """The last eight are kept side by side; a ninth one takes the place of the oldest."""
        runs = [("all",), ("all", "-j2")] + [("all", f"x={number}") for number in range(7)]
        for run in runs[:8]:
            self.settle_beside(*run)
        # One of them may have replaced the cache: it knows more of what the first has just written.
        for _ in range(200):
            if all([self.repeats(*run) for run in runs[:8]]):
                break
            time.sleep(0.02)
        else:
            self.fail("not all were repeated")
        before = self.stamp()
        self.settle_beside(*runs[8])
        after = self.stamp()
        self.assertEqual(len(after), 8)
        self.assertEqual([before[name] for name in after if after[name] != before[name]],
                         [min(before.values())])
        self.write("app.txt", "new")
        for run in runs:
            self.build(*run)
            self.assertEqual(self.read("out/app"), "new")

    def test_a_dry_run_is_not_taken_for_a_build(self):
        self.settle()
        self.write("app.txt", "new")
        time.sleep(0.1)  # so that nothing else keeps the dry run from being kept
        kept = self.stamp()
        for _ in range(3):
            self.assertIn("child copy app.txt out/app", self.build("-n", "-v", "5", "all").out)
            self.build("-n", "all")
        self.assertEqual(self.stamp(), kept)
        self.build("all")
        self.assertEqual(self.read("out/app"), "new")

    def test_not_when_it_writes_a_file(self):
        for _ in range(5):
            self.build("-o", "outputs", "all")
            (self.dir / "outputs").unlink()
            time.sleep(0.02)
        self.assertIsNone(self.stamp())


@unittest.skipIf(SETTINGS.keep == "check", "no run is repeated then")
class Files(SnapshotTest):
    def test_damaged_ones_are_replaced(self):
        self.settle()
        whole = self.file.read_bytes()
        damaged = [b"", b"\xff" * 5000, whole + b"x", whole[:-1], whole.split(b"\n")[0]]
        damaged += [whole[:at] + bytes([whole[at] ^ 1]) + whole[at + 1:]
                    for at in range(0, len(whole), max(1, len(whole) // 8))]
        expected = self.last
        for content in damaged:
            self.file.write_bytes(content)
            result = self.build()
            self.assertEqual((result.out, result.err), (expected.out, expected.err))
            self.assertEqual(self.file.read_bytes()[:15], b"VESK_SNAPSHOT_4")
        self.settle()

    def test_where_none_can_be_written(self):
        self.file.mkdir()
        for _ in range(3):
            self.assertEqual(self.build().err, "")

    def test_none_is_left_where_no_project_is(self):
        elsewhere = self.base / "else where"
        elsewhere.mkdir()
        unit = on_system(self.dir / "vesk.txt")
        for _ in range(4):
            self.build("-f", unit, "say", cwd=elsewhere)
            time.sleep(0.05)
        self.assertEqual(list(elsewhere.iterdir()), [])


class Killed(SnapshotTest):
    @posix_only("killed processes are the same there, but cannot be killed from here")
    def test_in_a_build(self):
        self.settle()
        self.unit(UNIT.replace("child copy app.txt",
                               "child meet started go -- 3 && child copy app.txt"))
        process = self.start("all")
        while not (self.dir / "started").exists():
            time.sleep(0.01)
        self.kill(process)
        self.write("go", "")  # so that nobody is left behind
        (self.dir / "started").unlink()
        (self.dir / "out/app").write_text("half of it")
        self.unit(UNIT)
        self.build()
        self.assertEqual(self.read("out/app"), "app")
