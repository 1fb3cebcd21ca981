"""What the program tells about variables, and that the documentation tells the same."""

import subprocess
import sys
from pathlib import Path

from harness import ProgramTest, needs, posix_only

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
SCRIPT = SCRIPTS / "variable-tables"


class Explain(ProgramTest):
    def test_a_variable(self):
        self.check("--explain=C_files", out="""
            C_FILES: list of files
              C sources, whatever their extension
              example: C_FILES = ["src/*.c"]
              tools: gnu-gcc, llvm-clang, msvc
            """)
        out = self.run_vesk("--explain=toolchain_path").out
        for line in ("toolchain_path: path", "toolchain_path: path, in the declaration of a tool",
                     "  default: required", "  tools: android-sdk"):
            self.assertIn(line + "\n", out)
        self.assertIn("OBJECTS: list of paths, an output\n", self.run_vesk("--explain=OBJECTS").out)
        self.assertIn("year: string, given to every target\n", self.run_vesk("--explain=YEAR").out)

    def test_an_unknown_one(self):
        for name, hint in (("C_FILE", "  did you mean 'C_FILES'?\n"),
                           ("CXXFLAGS", "  did you mean 'CPP_FLAGS'?\n"),
                           ("sources", "  did you mean 'C_FILES' or 'CPP_FILES' or 'C3_FILES'?\n"),
                           ("qqqqqq", "")):
            self.check(f"--explain={name}", status=1, out="", err=(
                f"Error: There is no variable '{name}' that a tool knows.\n{hint}"
                "  vesk --explain lists all variables that tools know\n"))

    def test_all(self):
        lines = self.run_vesk("--explain").out.splitlines()
        for line in ("Every target", "Linking", "Android packages"):
            self.assertEqual(lines.count(line), 1, line)
        names = [line.split()[0] for line in lines if line.startswith("  ")]
        for name in ("ENV", "cmdline", "pwsh", "FILENAME", "NO_TOOL", "C_FLAGS", "TARGET_TRIPLE", "RC_FILES",
                     "C3_OPT", "MANIFEST"):
            self.assertIn(name, names)
        self.assertTrue(all(len(line.split(None, 1)) == 2 for line in lines if line.startswith("  ")))


class Tables(ProgramTest):
    def test_the_pages_have_them(self):
        tables = self.run_vesk("--variable-tables").out
        checked = subprocess.run([sys.executable, SCRIPT, "--check"], input=tables, text=True,
                                 capture_output=True, check=False)
        self.assertEqual((checked.stdout, checked.stderr, checked.returncode), ("", "", 0))
        changed = subprocess.run([sys.executable, SCRIPT, "--check"], input=tables.replace("`-I`", "`-J`"),
                                 text=True, capture_output=True, check=False)
        self.assertEqual(changed.stdout,
                         "docs/toolchains.md differs from what vesk --variable-tables prints\n")


class Links(ProgramTest):
    def test_they_lead_somewhere(self):
        checked = subprocess.run([sys.executable, SCRIPTS / "docs", "--links"], text=True, capture_output=True,
                                 check=False)
        self.assertEqual((checked.stdout, checked.stderr, checked.returncode), ("", "", 0))


@posix_only("they are made and read on the system itself")
class ManPages(ProgramTest):
    def setUp(self):
        super().setUp()
        subprocess.run([sys.executable, SCRIPTS / "man-pages", "--version", "1.0", self.dir], check=True)
        self.pages = sorted(self.dir.iterdir())
        self.assertEqual([page.name for page in self.pages],
                         ["vesk-language.7", "vesk-toolchains.7", "vesk.1"])

    def told(self, *command):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return done.returncode, done.stdout

    @needs("mandoc")
    def test_nothing_is_wrong(self):
        self.assertEqual(self.told("mandoc", "-Tlint", *self.pages), (0, ""))

    @needs("man")
    def test_they_are_shown(self):
        for page in self.pages:
            env = {"PATH": "/usr/bin:/bin", "LANG": "C.UTF-8", "MANWIDTH": "120"}
            shown = subprocess.run(["man", "--warnings", "-l", page], env=env, text=True, check=True,
                                   capture_output=True)
            self.assertEqual(shown.stderr, "", page)
            self.assertNotRegex(shown.stdout, r"\\f|`|\]\(|<!--", page)
            if page.suffix == ".1":
                text = " ".join(shown.stdout.split())
                for line in self.run_vesk("--options").out.splitlines():
                    if line.startswith("  "):
                        for part in line.strip().split("  ", 1):
                            self.assertIn(" ".join(part.split()), text)
