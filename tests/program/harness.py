"""Runs vesk, on Linux or under Wine, on files that a test writes, and compares what it says.

A case is a class derived from ProgramTest. Each test has a directory of its own, in which vesk
runs; commands of targets call `child` (children/child.cpp). What vesk prints is compared whole:
without escapes, with \\n as line end, the test's directory written as {DIR} and the paths below it
with slashes. In expected texts {*} stands for words that are the system's own.
"""

import os
import re
import shutil
import signal
import subprocess
import tempfile
import textwrap
import time
import unittest
from dataclasses import dataclass, field
from pathlib import Path

from built_state import SameResult

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
# Seconds. What takes longer hangs: no test depends on what is quicker.
HANGS = 600
ESCAPE = re.compile(r"\x1b\[[0-9;]*m")
# The emulator sets these itself when it starts a program.
EMULATORS_OWN = {"APPDATA", "LOCALAPPDATA", "USERPROFILE", "COMSPEC", "PATH", "TEMP", "HOME",
                 "ProgramFiles", "ProgramFiles(x86)", "ProgramW6432"}


@dataclass
class Settings:
    """What is tested; set once by the runner."""

    vesk: Path = None
    children: Path = None
    wine: list = field(default_factory=list)
    keep: str = None  # VESK_KEEP of every run

    @property
    def windows(self):
        return bool(self.wine)


SETTINGS = Settings()


@dataclass
class Result:
    status: int
    out: str
    err: str


def posix_only(reason):
    return unittest.skipIf(SETTINGS.windows, reason)


def windows_only(reason):
    return unittest.skipUnless(SETTINGS.windows, reason)


def needs(*programs):
    missing = [program for program in programs if shutil.which(program) is None]
    return unittest.skipIf(missing, f"not installed: {' '.join(missing)}")


def alone(test):
    """For a test that changes what others see, as the machine's registry: it runs after them."""
    test.alone = True
    return test


def dedented(text):
    """A literal block without the indentation and the line end after its opening quotes."""
    return textwrap.dedent(text[1:] if text.startswith("\n") else text)


def on_system(path):
    """A path as the tested program names it."""
    return "Z:" + str(path).replace("/", "\\") if SETTINGS.windows else str(path)


def wait_until(condition):
    limit = time.monotonic() + HANGS
    while not condition():
        if time.monotonic() > limit:
            raise AssertionError(f"it did not happen within {HANGS} seconds")
        time.sleep(0.005)


def pattern_of(expected):
    return ".*".join(re.escape(part) for part in expected.split("{*}"))


class ProgramTest(SameResult, unittest.TestCase):
    maxDiff = None

    # Whether runs of one test know what the runs before them have built.
    remembers = False

    def setUp(self):
        self.base = Path(tempfile.mkdtemp(prefix="vesk-test-"))
        self.addCleanup(shutil.rmtree, self.base, ignore_errors=True)
        self.dir = self.base / "work"
        self.dir.mkdir()

    # --- files

    def write(self, name, content):
        """Writes a file, text as UTF-8 with its indentation removed, or bytes."""
        file = self.dir / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content if isinstance(content, bytes) else dedented(content).encode())
        return file

    def unit(self, text):
        return self.write("vesk.txt", text)

    def write_at_once(self, files):
        """Writes files that all carry the same times, as unpacking leaves them. Skips the test where
        the system's clock is too fine for that."""
        for _ in range(100):
            for name, text in files.items():
                (self.dir / name).unlink(missing_ok=True)
                self.write(name, text)
            stats = [os.stat(self.dir / name) for name in files]
            if len({(stat.st_mtime_ns, stat.st_ctime_ns) for stat in stats}) == 1:
                return
        self.skipTest("no two files have the same times here")

    def script(self, path, text):
        """Writes a program for the system's own interpreter, anywhere."""
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("#!/bin/sh\n" + text)
        path.chmod(0o755)
        return path

    def bridge(self, program, runs=None):
        """Places a Windows program that runs one of the system, by default the cross compiler's of
        its own name."""
        program.parent.mkdir(parents=True, exist_ok=True)
        if runs is not None:
            program.with_name(program.name + ".native").write_text(runs)
        return Path(shutil.copy(SETTINGS.children / "bridge/bridge.exe",
                                program.with_name(program.name + ".exe")))

    def registry(self, text):
        file = self.base / "data/vesk/.vesk_registry.txt"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def registry_text(self):
        text = (self.base / "data/vesk/.vesk_registry.txt").read_text(encoding="utf-8")
        return text.replace(on_system(self.base), "{BASE}").replace("\\", "/")

    def take_example(self, name):
        shutil.copytree(EXAMPLES / name, self.dir, dirs_exist_ok=True,
                        ignore=shutil.ignore_patterns("out", ".vesk_cache*"))

    def read(self, name):
        return (self.dir / name).read_bytes().decode()

    def files(self):
        """The files below the test's directory, without vesk's own cache."""
        below = (path for path in self.dir.rglob("*") if path.is_file())
        names = (path.relative_to(self.dir).as_posix() for path in below)
        return sorted(name for name in names if not name.rsplit("/", 1)[-1].startswith(".vesk_c"))

    # --- running

    def command(self, arguments, env):
        program = [str(SETTINGS.vesk)]
        if SETTINGS.windows:
            own = [f"{key}={value}" for key, value in env.items() if key in EMULATORS_OWN]
            if own:
                child = str(SETTINGS.children / "bin" / "child.exe")
                program = [child, "with_env", *own, "--", on_system(SETTINGS.vesk)]
            program = [*SETTINGS.wine, *program]
        return [*program, *arguments]

    def environment(self, env):
        """The environment of a run: little of our own, so that results do not depend on it."""
        directories = [SETTINGS.children / "bin", SETTINGS.children / "powershell"]
        result = {key: os.environ[key] for key in os.environ if key.endswith("SAN_OPTIONS")}
        result.update(LANG="C.UTF-8", HOME=os.environ.get("HOME", "/"))
        result["SOURCE_DATE_EPOCH"] = "1"  # linkers write the time of the build into programs
        if SETTINGS.windows:
            result["PATH"] = os.environ["PATH"]
            result["WINEPATH"] = ";".join(on_system(directory) for directory in directories)
            env = {key: value for key, value in env.items() if key not in EMULATORS_OWN}
        else:
            result["PATH"] = ":".join([*map(str, directories), "/usr/bin", "/bin"])
            result["APPDATA"] = str(self.base / "data")
        if SETTINGS.keep:
            result["VESK_KEEP"] = SETTINGS.keep
        result.update(env)
        return {key: value for key, value in result.items() if value is not None}

    @staticmethod
    def pass_a_tick():
        """Waits until what has been written counts as written before what comes now: the kernel may
        stamp files with a finer clock than the one that says when a build began."""
        coarse = 5  # CLOCK_REALTIME_COARSE, which the library has no name for
        now = time.clock_gettime_ns(time.CLOCK_REALTIME)
        while time.clock_gettime_ns(coarse) <= now:
            time.sleep(0.001)

    def start(self, *arguments, env=None, cwd=None, stdout=subprocess.PIPE,
              stderr=subprocess.PIPE, **options):
        """Starts vesk in a session of its own and returns the process."""
        if not self.remembers:
            for cache in self.base.rglob(".vesk_cache"):
                cache.unlink()
        else:
            self.pass_a_tick()
        env = env or {}
        return subprocess.Popen(
            self.command(arguments, env),
            env=self.environment(env),
            cwd=cwd or self.dir,
            stdout=stdout,
            stderr=stderr,
            start_new_session=True,
            **{"stdin": subprocess.DEVNULL, **options},
        )

    def kill(self, process):
        """Kills a vesk that `start` gave, without waiting for those that it has started."""
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        process.stdout.close()
        process.stderr.close()

    def alive(self):
        """Processes that have the name of this test's directory on their command line."""
        found = subprocess.run(["pgrep", "-f", self.base.name], stdout=subprocess.PIPE, text=True)
        return found.stdout.split()

    def wait_for_orphans(self):
        wait_until(lambda: not self.alive())

    def run_vesk(self, *arguments, env=None, cwd=None, colours=False, merged=False):
        """Runs vesk to its end. `merged`: one pipe for both streams, to see the order."""
        result = self.run_once(*arguments, env=env, cwd=cwd, colours=colours, merged=merged)
        # Now and then the emulator does not start a program, and says nothing. vesk would have said
        # why it failed, unless it was told not to.
        if (SETTINGS.windows and "-v" not in arguments
                and (result.status, result.out, result.err) == (1, "", "")):
            print(f"again {self.id()}: the emulator did not start vesk", flush=True)
            result = self.run_once(*arguments, env=env, cwd=cwd, colours=colours, merged=merged)
        return result

    def run_once(self, *arguments, env, cwd, colours, merged):
        stderr = subprocess.STDOUT if merged else subprocess.PIPE
        process = self.start(*arguments, env=env, cwd=cwd, stderr=stderr)
        try:
            out, err = process.communicate(timeout=HANGS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            self.fail(f"vesk {' '.join(arguments)} did not end within {HANGS} seconds")
        return Result(process.returncode, self.plain(out, colours), self.plain(err, colours))

    def plain(self, output, colours=False):
        text = (output or b"").decode(errors="backslashreplace").replace("\r\n", "\n")
        text = text if colours else ESCAPE.sub("", text)
        parts = [re.escape(part) for part in self.dir.parts[1:]]
        drive = "[Zz]:" if SETTINGS.windows else ""
        text = re.sub(drive + "".join(r"[\\/]" + part for part in parts), "{DIR}", text)
        if SETTINGS.windows:
            text = re.sub(r"\{DIR\}[^\n]*", lambda hit: hit[0].replace("\\", "/"), text)
        return text

    # --- comparing

    def same(self, actual, expected, what):
        if "{*}" in expected and re.fullmatch(pattern_of(expected), actual):
            return
        self.assertMultiLineEqual(actual, expected, what)

    def check(self, *arguments, out="", err="", status=0, **options):
        """Runs vesk and compares all that it does; the texts may be indented blocks, and None for
        an output that does not matter."""
        result = self.run_vesk(*arguments, **options)
        told = "vesk " + " ".join(arguments)
        self.same(result.err, dedented(err), f"{told}: standard error")
        if out is not None:
            self.same(result.out, dedented(out), f"{told}: standard output")
        self.assertEqual(result.status, status, f"{told}: exit status")
        return result

    def check_error(self, *arguments, err, out=None):
        """The same for a run that ends with an error."""
        return self.check(*arguments, out=out, err=err, status=1)

    def build(self, *arguments, **options):
        """What a run says that has nothing to warn of."""
        result = self.run_vesk(*arguments, **options)
        self.assertEqual((result.err, result.status), ("", 0), result.out)
        return result.out

    def nothing_to_do(self, *arguments, **options):
        self.assertNotIn("Starting build job", self.build(*arguments, **options))

    def failure(self, *arguments, **options):
        """What a run that fails says on standard error, whatever else it says."""
        result = self.run_vesk(*arguments, **options)
        self.assertEqual(result.status, 1, result.out)
        return result.err

    def error(self, *arguments, **options):
        """What a run that fails says on standard error."""
        result = self.run_vesk("-v", "6", *arguments, **options)
        self.assertEqual((result.status, result.out), (1, ""), result.err)
        return result.err

    def printed(self, *arguments, **options):
        """Builds and returns what the commands printed, without vesk's own lines."""
        result = self.run_vesk("-v", "6", *arguments, **options)
        self.assertEqual((result.err, result.status), ("", 0), "vesk " + " ".join(arguments))
        return result.out

    def prints(self, unit_text, expected, *arguments, **options):
        """Writes the unit file, builds, and compares what the commands print."""
        self.unit(unit_text)
        self.assertMultiLineEqual(self.printed(*arguments, **options), dedented(expected))

    def outputs(self, body, *arguments, err=""):
        """The outputs of a target with this body that runs nothing, a line each, as -o says."""
        self.unit("t: { cmdline = []\n" + body + "\n}\n")
        self.check("-v", "6", "-o", "outputs", *arguments, err=err)
        lines = self.read("outputs").replace("\r\n", "\n")
        return lines.replace("result = 0\n", "", 1)
