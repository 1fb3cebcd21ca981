"""What is kept of visits is never wrong: a project of many targets, edited at random."""

import os
import random
import shutil
import time

from harness import SETTINGS, ProgramTest, on_system

PROJECT = """
    name many
    units {{ main {{ "vesk.txt" }} more {{ "more/vesk.txt" }} {further} }}
    profiles {{
        default {{ WORD = "{word}" }}
        loud {{ WORD = "{word}{loud}" if os_family = "windows" {{ EXTRA = 1 }} }}
    }}
"""
UNIT = """
    unit main
    {comment}{front}
    all: top(lists) note more::far {{ lists = "{argument}" NO_TOOL = 1 }}
    top(what): +mid left right {{
        SRC = P"(top.txt)" ^TOP = P"(out/top)" TEXT = "${{what}}"
        cmdline = "child copy top.txt out/top"
    }}
    mid: low {{ ^FLAGS += "{flag}" NO_TOOL = 1 }}
    {blanks}low: {{ SRC = P"(low.txt)" ^LOW = P"(out/low)" cmdline = "child copy low.txt out/low" }}
    left: low {{ SRC = low.LOW ^LEFT = P"(out/left)" cmdline = "child copy out/low out/left" }}
    right: low => base {{
        ^RIGHT = P"(out/right)" SRC = base.LOW FILENAME = "out/right" WRITE_FILE = 1
        TEXT = "{text} ${{WORD}} ${{x}}" x ?= "none"
    }}
    note: {{ FILENAME = "out/note" TEXT = "${{WORD}} ${{PROFILE}} ${{year}}" WRITE_FILE = 1 }}
"""
MORE = """
    far: main::right near near {{ NO_TOOL = 1 }}
    near: {{ FILENAME = "out/near" TEXT = "{near}" WRITE_FILE = 1 }}
"""
OUTPUTS = ("top", "low", "left", "right", "note", "near")


class KeptVisitsTest(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.words = {"further": "", "word": "a word", "comment": "", "argument": "none",
                      "flag": "-f", "text": "right", "near": "near", "loud": "!", "front": "",
                      "blanks": ""}
        self.files = {"top.txt": "top", "low.txt": "low"}
        self.registry = ""
        (self.dir / "out").mkdir()
        self.write_all()

    def write_if_new(self, name, text):
        path = self.dir / name
        if not path.is_file() or path.read_text(encoding="utf-8") != text:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")

    def write_all(self):
        self.write_if_new(".vesk_project.txt", PROJECT.format(**self.words))
        self.write_if_new("vesk.txt", UNIT.format(**self.words))
        self.write_if_new("more/vesk.txt", MORE.format(**self.words))
        for name, text in self.files.items():
            self.write_if_new(name, text)
        directory = self.base / "data/vesk"
        directory.mkdir(parents=True, exist_ok=True)
        (directory / ".vesk_registry.txt").write_text(self.registry)

    def run_in(self, directory, *arguments, env=None):
        environment = {"APPDATA": on_system(self.base / "data"), **(env or {})}
        result = self.run_vesk(*arguments, cwd=directory, env=environment)
        self.assertEqual(result.status, 0, result.err)
        return result

    def from_nothing(self, *arguments):
        """What the same sources give where nothing is kept."""
        fresh = self.base / "fresh"
        shutil.rmtree(fresh, ignore_errors=True)
        shutil.copytree(self.dir, fresh, ignore=shutil.ignore_patterns(".vesk_cache*", "out"))
        (fresh / "out").mkdir()
        self.run_in(fresh, *arguments, env={"VESK_KEEP": "no"})
        return {name: (fresh / "out" / name).read_text() for name in OUTPUTS}

    def outputs(self):
        return {name: self.read(f"out/{name}") for name in OUTPUTS}


class Edits(KeptVisitsTest):
    def edit(self, dice):
        """Changes something; returns what."""
        deed = dice.randrange(9)
        if deed < 3:
            name = dice.choice(sorted(self.words))
            value = str(dice.randrange(3))
            if name == "further":
                value = dice.choice(("", 'third { "third/vesk.txt" }'))
            elif name == "comment":
                value = dice.choice(("", "// a line\n", "/* \u00e4 { */"))
            elif name == "front":
                value = dice.choice(("", "first: { NO_TOOL = 1 }", "first(p): low { NO_TOOL = 1 }\n"))
            elif name == "blanks":
                value = dice.choice(("", "  ", "/* \u00e4 */", "\n"))
            self.words[name] = value
            self.write_if_new("third/vesk.txt", "third: { NO_TOOL = 1 }\n")
        elif deed == 3:
            self.files[dice.choice(sorted(self.files))] = str(dice.randrange(3))
        elif deed == 4:
            (self.dir / "out" / dice.choice(OUTPUTS)).unlink(missing_ok=True)
        elif deed == 5:
            (self.dir / "out" / dice.choice(OUTPUTS)).write_text(str(dice.randrange(3)))
        elif deed == 6:
            os.utime(self.dir / dice.choice(sorted(self.files)))
        elif deed == 7:
            self.registry = dice.choice(("", "projects { }\n", 'tools { odd { tool_type = "x" } }\n'))
        else:
            for name in (".vesk_cache", ".vesk_cache.visits"):
                if dice.randrange(3) == 0:
                    (self.dir / name).unlink(missing_ok=True)
        self.write_all()
        return deed

    def test_any_row_of_them(self):
        for seed in (3, 14):
            dice = random.Random(seed)
            for number in range(8 if SETTINGS.windows else 20):
                deed = self.edit(dice)
                run = ("all", *dice.choice(((), (), ("-j2",), ("loud",), ('x="set"',))))
                with self.subTest(seed=seed, number=number, deed=deed, run=run):
                    said = self.run_in(self.dir, *run)
                    self.assertEqual(self.outputs(), self.from_nothing(*run))
                    # Whatever is kept by now would have been right: else this fails.
                    checked = self.run_in(self.dir, *run, env={"VESK_KEEP": "check"})
                    again = self.run_in(self.dir, *run)
                    made = self.run_in(self.dir, *run, env={"VESK_KEEP": "no"})
                    self.assertEqual((again.out, again.err), (made.out, made.err))
                    self.assertEqual((checked.out, checked.err), (made.out, made.err))
                    self.assertEqual(said.err, made.err)


class Files(KeptVisitsTest):
    def setUp(self):
        super().setUp()
        self.file = self.dir / ".vesk_cache.visits"

    def test_damaged_ones_are_as_good_as_none(self):
        self.run_in(self.dir, "all")
        expected = self.run_in(self.dir, "all")
        whole = self.file.read_bytes()
        self.assertGreater(len(whole), 500)
        damaged = [b"", b"\xff" * 5000, whole + b"x", whole[:-1], b"VESK_VISITS_5\n"]
        damaged += [whole[:at] + bytes([whole[at] ^ 1]) + whole[at + 1:]
                    for at in range(0, len(whole), len(whole) // 8)]
        for content in damaged:
            self.file.write_bytes(content)
            for snapshot in self.dir.glob(".vesk_cache.snapshot*"):
                snapshot.unlink()
            result = self.run_in(self.dir, "all")
            self.assertEqual((result.out, result.err), (expected.out, expected.err))
            self.assertTrue(self.file.read_bytes().startswith(b"VESK_VISITS_5\n"))

    def test_what_is_new_is_written_behind_the_rest(self):
        self.run_in(self.dir, "all")
        whole = self.file.read_bytes()
        self.files["low.txt"] = "new"
        self.write_all()
        self.run_in(self.dir, "all")
        longer = self.file.read_bytes()
        self.assertTrue(len(longer) > len(whole) and longer.startswith(whole))
        for cut in (1, 20, len(longer) - len(whole) - 1):  # as after a kill
            self.file.write_bytes(longer[:-cut])
            self.write("low.txt", f"cut {cut}")
            self.run_in(self.dir, "all")
            self.assertEqual(self.outputs()["left"], f"cut {cut}")
            self.run_in(self.dir, "all", env={"VESK_KEEP": "check"})

    def test_a_record_that_is_another(self):
        """An older cache put back knows nothing of the later build, whatever the visits say."""
        self.run_in(self.dir, "all")
        old = (self.dir / ".vesk_cache").read_bytes()
        self.files["low.txt"] = "new"
        self.write_all()
        self.run_in(self.dir, "all")
        (self.dir / ".vesk_cache").write_bytes(old)
        self.assertIn("child copy low.txt", self.run_in(self.dir, "all").out)

    def test_holds_no_secret(self):
        self.unit('unit main\nt: { ^TOKEN = "${pass}" NO_TOOL = 1 }')
        for _ in range(2):
            self.run_in(self.dir, "t", 'pass="open sesame"')
            self.assertNotIn(b"open sesame", self.file.read_bytes())

    def test_where_none_can_be_written(self):
        self.file.mkdir()
        for _ in range(3):
            self.assertNotIn("visits", self.run_in(self.dir, "all").err)
        self.assertEqual(self.outputs()["top"], "top")


class Failures(KeptVisitsTest):
    def test_a_target_that_fails_is_not_kept(self):
        self.run_in(self.dir, "all")
        (self.dir / "low.txt").unlink()
        for _ in range(2):
            result = self.run_vesk("-k", "all", env={"APPDATA": on_system(self.base / "data")})
            self.assertEqual(result.status, 1)
            self.assertIn("Build of low failed", result.err)
        time.sleep(0.05)
        self.write_all()
        self.run_in(self.dir, "all")
        self.assertEqual(self.outputs()["left"], "low")

    def test_a_target_that_is_gone(self):
        self.run_in(self.dir, "all")
        text = (self.dir / "more/vesk.txt").read_text()
        self.write("more/vesk.txt", text.replace("near: {", "nearer: {"))
        env = {"APPDATA": on_system(self.base / "data")}
        result = self.run_vesk("all", env=env)
        made = self.run_vesk("all", env={**env, "VESK_KEEP": "no"})
        self.assertEqual(result.status, 1)
        self.assertEqual((result.out, result.err), (made.out, made.err))
