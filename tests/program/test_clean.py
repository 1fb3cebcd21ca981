"""--clean: what vesk has made goes, and nothing else."""

from harness import ProgramTest, dedented
from test_toolchains import GnuTest

UNIT = """
    all: a b { NO_TOOL  ^NAMED = P"(named.txt)" }
    a: { ^OUT = P"(out/deep/a.txt)"  cmdline = "child touch ${OUT}" }
    b: { ^OUT = P"(out/b.txt)"  cmdline = "child touch ${OUT} extra.txt" }
    edits: { ^OUT = P"(mine.txt)"  cmdline = "child touch ${OUT}" }
    writes: { WRITE_FILE  FILENAME = P"(w.txt)"  TEXT = "written" }
    fails: { ^OUT = P"(half.txt)"  cmdline = "child touch half.txt && child exit 1" }
    """


class Clean(ProgramTest):
    remembers = True

    def below(self):
        """All files and directories, without the cache."""
        paths = (path for path in self.dir.rglob("*") if not path.name.startswith(".vesk_c"))
        return sorted(path.relative_to(self.dir).as_posix() + ("/" if path.is_dir() else "")
                      for path in paths)

    def clean(self, *arguments, err=""):
        """The directory afterwards."""
        result = self.run_vesk(*arguments)
        self.assertEqual((result.err, result.status), (dedented(err), 0), result.out)
        return self.below()

    def test_all_that_was_made_and_nothing_else(self):
        self.unit(UNIT)
        self.write("mine.txt", "before vesk")
        self.write("out/own/note.txt", "mine")
        self.write("named.txt", "mine")
        (self.dir / "empty").mkdir()
        before = self.below()
        for target in ("all", "edits", "writes"):
            self.printed(target)
        self.assertEqual(self.run_vesk("-n", "--clean").out, dedented("""
            Would remove out/b.txt
            Would remove out/deep/a.txt
            Would remove w.txt
            Would remove 3 files, and directories that are empty then.
            """))
        self.assertIn("out/deep/a.txt", self.below())
        self.assertEqual(self.clean("--clean"), sorted([*before, "extra.txt"]))
        self.assertNotIn("before", self.read("mine.txt"))
        self.assertEqual(self.run_vesk("--clean").out, "Removed 0 files and 0 directories.\n")
        self.printed("all")
        self.assertIn("out/deep/a.txt", self.below())

    def test_what_was_changed_stays(self):
        self.unit(UNIT)
        self.run_vesk("-k", "all")
        self.run_vesk("fails")
        self.write("out/b.txt", "edited")
        why = dedented("""
            Left 'half.txt': it is not known whether it has changed since vesk made it.
              --force removes it all the same
            Left 'out/b.txt': it has changed since vesk made it.
              --force removes it all the same
            """)
        left = ["extra.txt", "half.txt", "out/", "out/b.txt", "vesk.txt"]
        self.assertEqual(self.clean("--clean", err=why), left)
        self.assertEqual(self.clean("--clean", err=why), left)
        self.assertEqual(self.clean("--clean", "--force"), ["extra.txt", "vesk.txt"])

    def test_a_target_a_profile(self):
        self.write(".vesk_project.txt", """
            name p
            units { vesk { "vesk.txt" } }
            profiles { one { NAME = "one" } two { NAME = "two" } }
            """)
        self.unit("""
            all: a b { NO_TOOL }
            a: { NAME ?= "none"  ^OUT = P"(${NAME}/a)"  cmdline = "child touch ${OUT}" }
            b: { NAME ?= "none"  ^OUT = P"(${NAME}/b)"  cmdline = "child touch ${OUT}" }
            """)
        for words in ([], ["one"], ["two"]):
            self.printed("all", *words)
        rest = [".vesk_project.txt", "vesk.txt"]
        self.assertEqual(self.clean("--clean", "one", "a"),
                         sorted(["none/", "none/a", "none/b", "one/", "one/b", "two/", "two/a",
                                 "two/b", *rest]))
        self.assertEqual(self.clean("--clean", "a"),
                         sorted(["none/", "none/b", "one/", "one/b", "two/", "two/b", *rest]))
        self.assertEqual(self.clean("--clean", "two"),
                         sorted(["none/", "none/b", "one/", "one/b", *rest]))
        self.assertEqual(self.clean("--clean"), sorted(rest))

    def test_what_no_target_makes_any_more(self):
        self.unit("""
            all: a b { NO_TOOL }
            a: { ^OUT = P"(old/a)"  cmdline = "child touch ${OUT}" }
            b: { ^OUT = P"(b)"  cmdline = "child touch ${OUT}" }
            """)
        self.printed("all")
        self.assertEqual(self.clean("--clean=stale"), ["b", "old/", "old/a", "vesk.txt"])
        self.unit("""
            all: a { NO_TOOL }
            a: { ^OUT = P"(new/a)"  cmdline = "child touch ${OUT}" }
            """)
        self.printed("all")
        self.assertEqual(self.clean("--clean=stale"), ["new/", "new/a", "vesk.txt"])
        self.assertIn("'nosuch' is neither a target nor a profile", self.error("--clean", "nosuch"))
        self.assertIn("Unknown option '--dryrunn'", self.error("--dryrunn", "--clean"))
        self.assertIn("new/a", self.below())
        self.assertEqual(self.error("--clean=all"), dedented("""
            Error: Option '--clean' takes nothing or 'stale': '--clean=stale'.
            """))

    def test_a_damaged_list_removes_nothing(self):
        self.unit(UNIT)
        self.printed("all")
        self.write(".vesk_cache.made", b"VESK_MADE_1\no\tvesk::a\nx\ty\tvesk.txt\no\tvesk::a\tvesk.txt\n")
        files = self.below()
        self.assertEqual(self.clean("--clean", err="""
            Left 'vesk.txt': it is not known whether it has changed since vesk made it.
              --force removes it all the same
            """), files)


class CleanProgram(GnuTest):
    remembers = True

    def test_a_program_with_its_objects(self):
        self.write("src/main.c", "int f(void);\nint main(void) { return f(); }\n")
        self.write("src/f.c", "int f(void) { return 0; }\n")
        self.unit("""
            app: lib { C_FILES = ["src/main.c"]  LIB_FILES = [lib.OUTPUT] }
            lib: { OUTPUT_TYPE = "static"  C_FILES = ["src/f.c"] }
            """)
        before = self.files()
        self.build("app")
        self.assertGreater(len(self.files()), len(before) + 3)
        (self.dir / "src/f.c").rename(self.dir / "src/g.c")
        self.unit(self.read("vesk.txt").replace("src/f.c", "src/g.c"))
        self.build("app")
        self.check("-v", "3", "--clean=stale", out="""
            Removed out/.obj/vesk/lib/src/f.c.d
            Removed out/.obj/vesk/lib/src/f.c.o
            Removed 2 files and 0 directories.
            """)
        before = ["src/g.c", "src/main.c", "vesk.txt"]
        self.check("--clean", out=None)
        self.assertEqual(self.files(), before)
        self.assertFalse((self.dir / "out").exists())
