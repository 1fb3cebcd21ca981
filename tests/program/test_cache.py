"""What is built again, what is not, and what vesk says about it."""

import fcntl
import os
import random
import resource
import shutil
import signal
import time
import unittest

from harness import HANGS, ProgramTest, SETTINGS, on_system, posix_only

UNIT = """
    unit main
    all: app tool { NO_TOOL = 1 }
    app: lib gen {
        SRC = P"(src/app.txt)"
        ^APP = P"(out/app)"
        cmdline = "child copy src/app.txt out/app"
        ENV = { LEVEL = "1" }
    }
    lib: { SRC = P"(src/lib.txt)" ^LIB = P"(out/lib)" cmdline = "child copy src/lib.txt out/lib" }
    gen: { FILENAME = "out/gen.txt" TEXT = "generated" SEPARATOR = "+" WRITE_FILE = 1 }
    tool: { cmdline = "child print tool" }
"""
EVERYTHING = ["app", "gen", "lib", "tool"]

# The cache file is so large that what is new is appended to another one.
LARGE_UNIT = UNIT.replace('"generated"', f'"{"generated " * 30_000}"')


class Cached(ProgramTest):
    remembers = True

    def setUp(self):
        super().setUp()
        self.unit(UNIT)
        self.write("src/app.txt", "app")
        self.write("src/lib.txt", "lib")
        (self.dir / "out").mkdir()

    def built(self, *arguments, target="all", status=0, **options):
        """Builds, and names what was not a hit."""
        result = self.run_vesk("-v", "1", target, *arguments, **options)
        self.assertEqual((result.err, result.status), ("", status), result.out)
        self.said = result.out
        lines = [line for line in result.out.splitlines() if "Cache claimed" in line]
        return sorted(line.split("::")[-1].rstrip("'.") for line in lines)

    def reasons(self):
        mark = "Out of date: "
        return [line.split(mark)[1] for line in self.said.splitlines() if mark in line]

    def fresh(self):
        self.assertEqual(self.built(), [], self.said)
        self.assertEqual(self.said.count("Cache hit for"), 5)
        self.assertNotIn("Starting build job", self.said)


class Rebuilds(Cached):
    def test_only_what_changed(self):
        self.assertEqual(self.built(), ["all", *EVERYTHING])
        self.fresh()

        def set_env(level):
            self.unit(UNIT.replace('LEVEL = "1"', f'LEVEL = "{level}"'))

        def same_time(name, text):
            times = os.stat(self.dir / name)
            (self.dir / name).write_text(text)
            os.utime(self.dir / name, ns=(times.st_atime_ns, times.st_mtime_ns))

        changes = [
            (lambda: self.write("src/app.txt", "new"), ["app"], "src/app.txt has changed."),
            # Of the same length, with the old time: the content tells.
            (lambda: same_time("src/app.txt", "old"), ["app"], "src/app.txt has changed."),
            (lambda: self.write("src/lib.txt", "new"), ["app", "lib"], "src/lib.txt has changed."),
            (lambda: (self.dir / "out/lib").unlink(), ["lib"], "out/lib is missing."),
            (lambda: self.write("out/app", "by hand"), ["app"], "out/app has changed."),
            (lambda: set_env(2), ["app"], "ENV.LEVEL has changed."),
            (lambda: self.unit(UNIT.replace('"generated"', '"other"')), ["app", "gen"],
             'TEXT: "generated" is now "other".'),
            (lambda: self.unit(UNIT.replace("src/lib.txt out", "./src/lib.txt out")), ["lib"],
             'cmdline: "child copy src/lib.txt out/lib" is now "child copy ./src/lib.txt out/lib".'),
            (lambda: self.unit(UNIT.replace("app: lib gen", "app: lib")), ["app"],
             "dependency: main::gen is gone."),
            (lambda: self.unit(UNIT.replace("tool: {", 'tool: { cwd = "src"')),
             ["all", "tool"], 'cwd: "." is now "src/".'),
            (lambda: self.unit(UNIT.replace('"+"', '"-"')), ["gen"], 'SEPARATOR: "+" is now "-".'),
            (lambda: self.unit(UNIT.replace("WRITE_FILE", 'MODE = "append" WRITE_FILE')),
             ["app", "gen"], 'MODE: "create" is now "append".'),
        ]
        for change, expected, reason in changes:
            self.unit(UNIT)
            self.built()
            change()
            self.assertEqual(self.built(), expected, self.said)
            self.assertIn(reason, self.reasons())
            self.assertEqual(self.built(), [], self.said)

    def test_a_mode_that_there_is_not(self):
        self.built()
        self.unit(UNIT.replace("WRITE_FILE", 'MODE = "overwrite" WRITE_FILE'))
        for _ in range(2):
            self.assertIn("must be either 'create' or 'append', got 'overwrite'.",
                          self.error("gen"))

    def test_the_directory_that_commands_run_in(self):
        self.write(".vesk_project.txt", 'name demo\nunits { main { "vesk.txt" } }')
        self.assertEqual(self.built(target="tool"), ["tool"])
        self.assertEqual(self.built(target="tool", cwd=self.dir / "src"), ["tool"])
        self.assertEqual(self.reasons(), ['cwd: "." is now "src/".'])
        self.assertEqual(self.built(target="tool", cwd=self.dir / "src"), [])

    def test_outputs_are_made_and_are_missed(self):
        self.unit('t: { cmdline = ["child copy src/app.txt new/dir/x"] ^X = P"(new/dir/x)" }\n'
                  'bad: { cmdline = ["child print bad"] ^X = P"(none)" }\n')
        self.assertEqual(self.built(target="t"), ["t"])
        self.assertEqual(self.built(target="t"), [])
        for _ in range(2):
            result = self.run_vesk("-v", "6", "bad")
            self.assertEqual((result.out, result.status), ("bad\n", 0))
            self.assertEqual(result.err, "[vesk::bad] 'vesk::bad' has not made its output "
                                         "'{DIR}/none'.\n")

    def test_nothing_for_what_does_not_matter(self):
        self.built()
        os.utime(self.dir / "src/app.txt")
        self.fresh()
        self.unit(UNIT.replace("SRC", "OTHER_NAME").replace("unit main", "unit main // comment"))
        self.fresh()
        self.assertEqual(self.built("month=13"), [])
        self.assertEqual(self.built('month="src/app.txt"'), [], "what hides a text does not change it")
        moved = self.base / "moved"
        shutil.move(self.dir, moved)
        shutil.copytree(moved, self.dir)
        self.fresh()

    def test_option_rebuild(self):
        self.built()
        self.assertEqual(self.built("--rebuild"), ["all", *EVERYTHING])
        self.fresh()

    def test_dry_run_shows_what_is_stale_and_changes_nothing(self):
        self.built()
        self.write("src/lib.txt", "new")
        before = (self.dir / ".vesk_cache").read_bytes()
        out = self.run_vesk("-v", "5", "-n", "all").out
        self.assertIn("child copy src/lib.txt out/lib", out)
        self.assertNotIn("src/app.txt", out)
        self.assertEqual((self.dir / ".vesk_cache").read_bytes(), before)
        self.assertEqual(self.read("out/lib"), "lib")

    def test_profiles_have_records_of_their_own(self):
        self.write(".vesk_project.txt", """
            name p
            units { main { "vesk.txt" } }
            profiles { one { MODE = "1" } two { MODE = "2" } }
        """)
        self.unit('unit main\nt: { cmdline = "child print ${MODE}" }')
        self.assertEqual(self.built("one", target="t"), ["t"])
        self.assertEqual(self.built("two", target="t"), ["t"])
        self.assertEqual(self.built("one", target="t"), [])


class Failures(Cached):
    def test_what_finished_stays_and_what_failed_is_no_hit(self):
        self.built()
        self.write("src/lib.txt", "new")
        self.unit(UNIT.replace("child copy src/app.txt out/app", "child exit 3"))
        self.assertEqual(self.run_vesk("all").status, 1)
        self.assertEqual(self.read("out/lib"), "new")
        # Everything is as it was; but the command that failed may have left anything.
        self.unit(UNIT)
        self.assertEqual(self.built(), ["app"])
        self.assertEqual(self.reasons(), ["its last build did not finish."])

    @posix_only("killed processes are the same there, but cannot be killed from here")
    def test_killed_at_any_moment(self):
        self.unit(UNIT.replace("child copy src/lib.txt",
                               "child meet started go -- 3 && child copy src/lib.txt"))
        self.built(target="tool")
        process = self.start("all")
        while not (self.dir / "started").exists():
            time.sleep(0.01)
        self.kill(process)
        self.write("go", "")  # so that nobody is left behind
        self.unit(UNIT)
        self.assertEqual(self.built(), ["all", "app", "gen", "lib"])
        self.fresh()

    @posix_only("killed processes are the same there, but cannot be killed from here")
    def test_killed_wherever_it_is(self):
        delays = random.Random(1)
        for edit in range(24):
            if edit == 12:
                self.unit(LARGE_UNIT)
                self.built()
            text = f"edit {edit % 3}"
            self.write("src/lib.txt", text)
            self.write("src/app.txt", text)
            process = self.start("all")
            time.sleep(delays.random() * 0.06)  # before, in or after any of its steps
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            if edit % 2:
                self.built()
                self.fresh()
                self.assertEqual((self.read("out/lib"), self.read("out/app")), (text, text))

    def test_a_large_file_is_appended_to(self):
        self.unit(LARGE_UNIT)
        self.built()
        self.pass_a_tick()
        self.built("-v", "3")  # visits all: by now the times of what was made are reliable
        whole = (self.dir / ".vesk_cache").read_bytes()
        for text in ("first", "second", "third"):
            self.write("src/lib.txt", text)
            self.assertEqual(self.built(), ["app", "lib"])
            self.fresh()
            self.assertEqual((self.dir / ".vesk_cache").read_bytes(), whole)
            self.assertTrue((self.dir / ".vesk_cache.changes").exists())
        self.write("src/lib.txt", "first")
        self.assertEqual(self.built(), ["app", "lib"], "as its files were once, but not last")
        self.assertEqual(self.built("--rebuild"), ["all", *EVERYTHING])
        self.assertFalse((self.dir / ".vesk_cache.changes").exists())
        self.fresh()

    def test_damaged_files_are_replaced(self):
        self.built()
        whole = (self.dir / ".vesk_cache").read_bytes()
        table = whole.index(b"files: states")
        for name, damaged in (
                ("Cache", b""), ("Cache", b"VESK_CACHE_V6\n0\n"), ("Cache", whole[:-20]),
                ("Cache", b"\xff" * 5000),
                ("Cache", whole.replace(b"\n2\n", b"\n9223372036854775808\n", 1)),
                # A record without its table of files, which is well formed.
                ("Cache", whole[:table] + b"F" + whole[table + 1:]),
                ("Claims", b""), ("Claims", b"9\nmain::"), ("Claims", b"anything")):
            with self.subTest(name=name, damaged=damaged[:20]):
                self.write("src/lib.txt", str(damaged))
                (self.dir / {"Cache": ".vesk_cache", "Claims": ".vesk_cache.claims"}[name]
                 ).write_bytes(damaged)
                result = self.run_vesk("all")
                self.assertEqual(result.status, 0)
                self.assertRegex(
                    result.err, rf"\A{name} file '.*' .*\. Starting with empty cache\.\n\Z")
                self.assertEqual(self.read("out/lib"), str(damaged))
                self.fresh()
                self.assertEqual((self.dir / ".vesk_cache").read_bytes()[:14], b"VESK_CACHE_V7\n")

    @posix_only("roots may write everywhere there")
    def test_a_place_that_cannot_be_written(self):
        self.unit('unit main\nt: { cmdline = "child print built" }')
        os.mkdir(self.dir / ".vesk_cache.tmp")
        result = self.run_vesk("t")
        self.assertEqual(result.status, 0)
        self.assertIn("Unable to open cache file", result.err)


    @posix_only("there is no limit for the size of files")
    def test_a_full_disk(self):
        self.built()
        self.write("src/lib.txt", "new")

        def small_files_only():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        process = self.start("all", preexec_fn=small_files_only)
        err = self.plain(process.communicate(timeout=60)[1])
        self.assertEqual(process.returncode, 0, "the build itself was fine")
        self.assertRegex(err, r"\AUnable to flush cache file '.*\.vesk_cache\.tmp'\.\n\Z")
        self.assertFalse((self.dir / ".vesk_cache.tmp").exists())
        self.assertEqual(self.built(), ["app", "lib"], "what could not be noted is no hit")
        self.fresh()


class Other(Cached):
    def test_other_files_of_the_same_times(self):
        """As unpacking leaves them: only which file it is tells them apart."""
        self.unit('''
            unit main
            t: { SRC = P"(current/src)" ^DST = P"(out/t)" cmdline = "child copy current/src out/t" }
        ''')
        for how in ("link", "move"):
            with self.subTest(how):
                self.write_at_once({f"{how}1/src": "one", f"{how}2/src": "two"})
                if how == "link":
                    os.symlink("link1", self.dir / "current")
                else:
                    (self.dir / "current").unlink()
                    (self.dir / "move1").rename(self.dir / "current")
                while self.built(target="t"):
                    time.sleep(0.05)  # until the times could tell
                self.assertEqual(self.built("--rebuild", target="t"), ["t"])
                if how == "link":
                    (self.dir / "current").unlink()
                    os.symlink("link2", self.dir / "current")
                else:
                    (self.dir / "current").rename(self.dir / "away")
                    (self.dir / "move2").rename(self.dir / "current")
                self.built(target="t")
                self.assertEqual(self.read("out/t"), "two")

    @posix_only("there are no such files")
    def test_what_is_no_regular_file_is_not_read(self):
        os.mkfifo(self.dir / "pipe")
        self.unit('''
            unit main
            t: { IN = [P"(pipe)", P"(/dev/zero)", P"(src)"] cmdline = "child print built" }
        ''')
        self.assertEqual(self.built(target="t"), ["t"])
        self.assertEqual(self.built(target="t"), [])
        (self.dir / "pipe").unlink()
        self.write("pipe", "a file now")
        self.assertEqual(self.built(target="t"), ["t"])

    def test_secrets_are_not_stored(self):
        self.unit('''
            unit main
            t: {
                ^OUT = P"(out/t)"
                cmdline = "child copy src/app.txt out/t #${PASSWORD}"
                ENV = { TOKEN = "from the environment" }
            }
        ''')
        password = 'PASSWORD="from the command line"'
        said = []
        for value in (password, password, password.replace("from", "other")):
            for _ in range(3):
                self.run_vesk("t", value)
            said.append(self.built(value, target="t"))
        self.assertEqual(said, [[], [], []])
        self.assertEqual(self.built(password, target="t"), ["t"])
        self.assertEqual(self.reasons(), ["cmdline has changed."])
        for file in self.dir.glob(".vesk_cache*"):
            for secret in (b"environment", b"command line"):
                self.assertNotIn(secret, file.read_bytes(), file)
            if not SETTINGS.windows and file.suffix != ".lock":
                self.assertEqual(file.stat().st_mode & 0o777, 0o600, file)

    def test_a_dry_run_writes_nothing(self):
        def everything():
            return sorted(str(path) for path in self.dir.rglob("*"))

        self.unit(UNIT + '    c: { OUTPUT_DIR = "new/place" cmdline = "child print c" }\n')
        before = everything()
        for target in ("all", "c"):
            result = self.run_vesk("-n", target)
            self.assertEqual((result.status, result.err), (0, ""), result.out)
        self.assertEqual(everything(), before)


class TwoAtOnce(Cached):
    @unittest.skipUnless(hasattr(os, "geteuid") and os.geteuid() == 0 and not SETTINGS.windows,
                         "only the superuser can be two users")
    def test_the_lock_of_another_user(self):
        self.unit('unit main\nt: { cmdline = "child print built" }')
        lock = self.dir / ".vesk_cache.lock"
        lock.touch(0o644)
        for place in (self.base, self.dir):
            place.chmod(0o777)
        with open(lock) as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            process = self.start("t", user=65534)
            self.assertIn(b"Waiting for another vesk", process.stdout.readline())
        self.assertEqual(process.communicate(timeout=60)[1], b"")
        self.assertEqual(process.returncode, 0)

    def test_no_lock_is_warned_of(self):
        if SETTINGS.windows:
            (self.dir / ".vesk_cache.lock").mkdir()
        else:
            os.symlink("nowhere/at all", self.dir / ".vesk_cache.lock")
        result = self.run_vesk("tool")
        self.assertEqual(result.status, 0)
        self.assertRegex(result.err, r"\ABuilding in .* without a lock: .*\n  let no other vesk .*\n")

    def test_the_second_waits_and_builds_what_is_left(self):
        self.unit("""
            unit main
            slow: { cmdline = "child meet first go" }
            next: slow { cmdline = "child print next" }
        """)
        first = self.start("slow")
        while not (self.dir / "first").exists():
            time.sleep(0.01)
        second = self.start("-v", "1", "next")
        waiting = b""
        while b"Waiting for another vesk that builds in" not in waiting:
            line = second.stdout.readline()
            self.assertTrue(line, waiting)
            waiting += line
        (self.dir / "go").write_text("")
        self.assertEqual(first.communicate()[1], b"")
        out = self.plain(second.communicate(timeout=HANGS)[0])
        self.assertIn("Cache hit for 'main::slow'.", out)
        self.assertIn("Cache claimed for 'main::next'.", out)

    def test_a_build_inside_of_itself_is_refused(self):
        inner = f'"{on_system(SETTINGS.vesk)}" other'
        self.unit(f'''
            unit main
            outer: {{ cmdline = R"({inner})" }}
            other: {{ cmdline = "child print other" }}
        ''')
        result = self.run_vesk("outer")
        self.assertEqual(result.status, 1)
        self.assertIn("which would wait for it forever", result.err)
