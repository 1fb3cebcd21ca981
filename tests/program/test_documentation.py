"""What the program tells about variables, and that the documentation tells the same."""

import subprocess
import sys
from pathlib import Path

from harness import ProgramTest

SCRIPT = Path(__file__).resolve().parents[2] / "scripts/variable-tables"


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
