"""Options, modes and exit statuses that need no project."""

import re
from pathlib import Path

from harness import ProgramTest, SETTINGS, posix_only

HELP = """
    vesk [options] target? [assignment]*
    Options:\x20
      -l <unit>  list targets from unit (1 = main unit)
      -u         list units from project file
      -p         list profiles from project file
      -v <num>   verbosity level, default = 2
      -j <num>   thread count
      -f <file>  default vesk file override
      -o <file>  main target outputs
      -r         register current project
      --find-compilers   detect and register default toolchains
      --version
      --create-project     initialise project file
    """

# The exit status -1 as the system shows it.
MINUS_ONE = 0xFF

TWO_TARGETS = """
    first: { cmdline = "child print first" }
    second: { cmdline = "child print second" }
    """


class Modes(ProgramTest):
    def test_what_they_print(self):
        self.unit(TWO_TARGETS)
        self.check("-r", "--HELP", "-f", out=HELP)
        self.check("target", "--version", out="3.16.1.0\n")
        self.check("-l", "1", "-p", out="first\nsecond\n")
        for option in ("-p", "--LIST-UNITS"):
            self.check(option, err="No file to list. You need .vesk_project.txt.\n",
                       status=MINUS_ONE)
        self.check_error("-r", "-u", err="Error: project '.vesk_project.txt' not found.\n  it was "
                         "looked for in {DIR} and above; vesk --create-project makes one\n")
        self.check_error("-l", "nowhere", err="Error: Unit 'nowhere' not found.{*}\n")
        self.check_error("-f", err="unknown switch\n")
        self.check_error("-v", "99999999999", err="stoi argument out of range\n")


class Options(ProgramTest):
    def test_may_stand_anywhere(self):
        self.write("other.txt", TWO_TARGETS)
        self.check("second", "-V", "6", "-j", "--file", "other.txt", "--", "-", out="second\n")
        self.check("-v", "6", "-F", "other.txt", out="first\n")

    def test_verbosity(self):
        self.unit(TWO_TARGETS)
        marks = {0: "::match - ", 1: "Parsing ", 3: "Tool selection", 5: "Starting build"}
        for arguments, shows in ((["-v", "9x"], set()), (["-v", "6"], set()), ([], {5}),
                                 (["-v"], {3, 5}), (["-v", "1"], {1, 3, 5}),
                                 (["-v", "0"], {0, 1, 3, 5})):
            with self.subTest(arguments=arguments):
                out = self.run_vesk("second", *arguments).out
                self.assertEqual({level for level in marks if marks[level] in out}, shows)
                self.assertIn("second\n", out)
        self.unit("bad: { cmdline = \"child exit 3\" }")
        self.check("-v", "8", status=1)

    def test_dry_run(self):
        self.unit('t: { cmdline = "child print second" ^X = 1 }')
        out = self.run_vesk("--dry-run", "-o", "outputs").out
        self.assertIn("child print second\n", out)
        self.assertNotIn("\nsecond\n", out)
        self.assertEqual(self.files(), ["vesk.txt"])

    def test_keep_going(self):
        self.unit("""
            all: user lost good { NO_TOOL }
            user: bad { cmdline = "child touch user.txt" }
            bad: { cmdline = "child exit 3" }
            lost: nowhere { NO_TOOL }
            good: { cmdline = "child touch good.txt" }
            """)
        self.assertEqual((self.run_vesk("all").status, self.files()), (1, ["vesk.txt"]))
        result = self.run_vesk("-k", "all")
        self.assertEqual(result.status, 1)
        self.assertIn("Error: Target 'vesk::nowhere' not found.\n", result.err)
        self.assertEqual(self.files(), ["good.txt", "vesk.txt"])


    def test_list_is_the_documented_one(self):
        page = Path(__file__).parents[2] / "docs" / "command-line.md"
        documented = []
        for line in page.read_text(encoding="utf-8").splitlines():
            if row := re.match(r"### (.+)|\| (`-.+?`) \| (.+?) \| `", line):
                documented.append(row[1] or (row[2].replace("`", ""), row[3]))
            if line.startswith("## ") and line != "## Options":
                break
        listed = self.run_vesk("--options").out.splitlines()
        self.assertEqual(len(listed), len(documented))
        for shown, entry in zip(listed, documented):
            if isinstance(entry, str):
                self.assertEqual(shown, entry)
            else:
                option, meaning = re.fullmatch(r"  (.+?)   *(.+)", shown).groups()
                self.assertEqual(option, entry[0])
                self.assertTrue(entry[1].startswith(meaning), (meaning, entry[1]))

    def test_from_the_environment(self):
        self.write("other unit.txt", TWO_TARGETS)

        def check(options, *arguments, **expected):
            self.check(*arguments, env={"VESK_OPTIONS": options}, **expected)
        check(' -v\t6  -f "other"\' \'unit.txt', "second", out="second\n")
        check("-v 1 -f 'other unit.txt' -j", "-v", "6", "2", "second", status=1, err="""
              Error: Parsing assignment failed due to syntax errors.
                '2' names no target of unit 'other unit' and no profile, so it was read as an \
assignment
              """)
        check("", "--version", out="3.16.1.0\n")
        check("first -v 6 x=1 -f 'other unit.txt'", "second", out="second\n", err="""
            'first' in the environment variable VESK_OPTIONS is not an option and is ignored.
              targets, profiles and assignments are given on the command line
            'x=1' in the environment variable VESK_OPTIONS is not an option and is ignored.
              targets, profiles and assignments are given on the command line
            """)
        where = "  in the environment variable VESK_OPTIONS\n"
        check("-v 6 -f", "vesk.txt", err="unknown switch\n" + where, status=1)
        check("-k 'x y", err="Error: A quote is not closed: 'x y\n" + where, status=1)


class CommandLineMode(ProgramTest):
    def test_builds_its_assignments(self):
        self.unit("this is no unit file")
        self.check("-c", 'cmdline=["child args ${word}"]', 'word="a b"', out="""
            Starting build
            [cmdline::cmdline] Visiting target
            [cmdline::cmdline] Output dir: {DIR}/out
            [cmdline::cmdline] Starting build job
            [cmdline::cmdline] child args a b
            [a]
            [b]
            [cmdline::cmdline] Build done
            """)
        self.printed("-c", "cmdline=[]", '^FLAGS="-g"', 'FLAGS+="-O2"', '^MORE+="once"',
                     '^P=P"(a b)"', "-o", "outputs")
        self.assertEqual(self.plain(self.read("outputs").encode()),
                         "FLAGS = -g -O2\nMORE = once\nP = {DIR}/a b\nresult = 0\n")

    def test_overrides_reach_every_target(self):
        self.unit("""
            hello: inner { cmdline = "child print ${who}" }
            inner: { cmdline = "child print inner ${who}" }
            """)
        self.assertEqual(self.printed("hello", 'who="you"'), "inner you\nyou\n")

    def test_word_that_is_nothing(self):
        self.unit("library: { NO_TOOL }")
        self.check("-v", "6", "librari", err="'librari' is neither a target nor a profile; as an "
                   "assignment it clears the variable 'librari'.\n  did you mean 'library'?\n")
        self.assertIn("'lib=' names no target of unit 'vesk'", self.error("lib="))


class Doubts(ProgramTest):
    """What was most probably not meant is done with a warning, or refused."""

    WORDS = (
        ("frist", "'frist' is neither a target nor a profile; as an assignment it clears the variable "
                  "'frist'.\n  did you mean 'first'?\n"),
        ("A=-O2", "'A=-O2' was read as 'A = 2'.\n  for text write --define=A=-O2, or "),
        ("second", "Only one target name can be specified\n"),
        ("--dryrun", "Unknown option '--dryrun'.\n  did you mean '--dry-run'?\n"
                     "  vesk --options lists all options\n"),
        ("--compile-commands", "Unknown option '--compile-commands'.\n"
                               "  it needs a value: --compile-commands=FILE\n"),
        ("--junit=r.xml", "Option '--junit' does nothing without '--test'.\n"
                          "  add --test, or leave it out\n"),
        ("ldflags=1", "Nothing reads the variable 'ldflags' of the command line.\n"
                      "  did you mean 'LINK_FLAGS'?\n"),
        ("--define=what=-O3", "Nothing reads the variable 'what' of the command line.\n"),
    )

    def test_warnings(self):
        self.unit(TWO_TARGETS)
        for word, warning in self.WORDS:
            with self.subTest(word=word):
                result = self.run_vesk("-v", "6", "first", word)
                self.assertIn(warning, result.err)
                self.assertEqual((result.out, result.status), ("first\n", 0))

    def test_strict(self):
        self.unit(TWO_TARGETS)
        for word, warning in self.WORDS:
            for strict in ({}, {"VESK_STRICT": "1"}):
                with self.subTest(word=word, strict=strict):
                    result = self.run_vesk("first", word, *(() if strict else ("--strict",)), env=strict)
                    self.assertIn("Error: " + warning.rstrip("\n"), result.err)
                    self.assertEqual((result.out, result.status), ("", 1))
        self.check("-v", "6", "first", out="first\n", env={"VESK_STRICT": "0"})

    def test_variables_that_somebody_reads(self):
        self.unit("""
            first(p) : { }
            main: first(a) { cmdline = "child print ${b}" if c = 1 { } D = 1 }
            """)
        self.write(".vesk_project.txt", """
            name p
            units { main { "vesk.txt" } }
            profiles { debug { b = "${e}" e = "x" f = 1 CFLAGS = "-g" } }
            """)
        for name in "p", "a", "b", "c", "d", "e", "DESCRIPTION":
            with self.subTest(name=name):
                self.assertNotIn("Nothing reads", self.run_vesk(name + "=1").err)
        self.assertIn("""
  {DIR}/.vesk_project.txt:3:45
  profiles { debug { b = "${e}" e = "x" f = 1 CFLAGS = "-g" } }
                                              ^
  did you mean 'C_FLAGS'?
""".lstrip("\n"), self.run_vesk("debug", "a=1").err)

    def test_a_kept_run_is_refused_too(self):
        self.remembers = True
        self.unit('first: { NO_TOOL = "" }')
        for _ in range(3):
            self.assertEqual(self.run_vesk("frist").status, 0)
        self.assertEqual(self.run_vesk("frist", env={"VESK_STRICT": "1"}).status, 1)


class Definitions(ProgramTest):
    def test_are_plain_text(self):
        self.unit('say: { cmdline = "child print \\"${A}\\"" }'.replace('\\"', "${ascii[34]}"))
        for text in ("clang", "-O2 -g", "a=b", "[1]", "b.c", "\N{SNOWMAN}"):
            with self.subTest(text=text):
                self.check("-v", "6", "say", "--define=A=" + text, out=text + "\n")
        self.check("-v", "6", 'A="later"', "--define=A=last", out="last\n")

    def test_errors(self):
        self.unit(TWO_TARGETS)
        for text in ("A", "=b", "1=2", ""):
            self.check_error("--define=" + text, err=f"""
                Error: '--define={text}' gives no variable a text.
                  write --define=NAME=text; a name has letters, digits, '_' and '-'
                """)

    def test_text_that_lost_its_quotes(self):
        self.unit('say: { cmdline = "child print ${A}" }')
        for word, missing in (("A=clang", "Assignment 'clang' not found."),
                              ("A=x.y", "invalid map<K, T> key")):
            error = self.error(word)
            self.assertIn(missing + "\n", error)
            self.assertIn(f"\n  '{word}' on the command line names that variable; for text write "
                          f"--define={word}, or ", error)


class OutputFile(ProgramTest):
    UNIT = """
        main: { cmdline = "child exit 0"  ^B = "text"  ^a = 7  ^list = ["x", "y"]  hidden = 1 }
        bad: { cmdline = "child exit 2"  ^B = 1 }
        """

    def test_one_line_per_output_after_success(self):
        self.unit(self.UNIT)
        self.printed("main", "-o", "")
        self.assertEqual(self.run_vesk("bad", "-o", "result.txt").status, 1)
        self.assertEqual(self.files(), ["vesk.txt"])
        self.write("result.txt", "old content, longer than the new one " * 9)
        self.printed("main", "-o", "result.txt")
        self.assertEqual(self.read("result.txt"), "a = 7\nB = text\nlist = x y\nresult = 0\n")

    def test_place_that_cannot_be_written(self):
        self.unit(self.UNIT)
        for place in ["nowhere/result.txt"] + ([] if SETTINGS.windows else ["/dev/full"]):
            self.check("-v", "6", "main", "-o", place, status=1,
                       err="Error: Unable to write output file '" + place + "': {*}.\n")


class Dump(ProgramTest):
    def test_implicit_context(self):
        self.unit(TWO_TARGETS)
        family = "windows" if SETTINGS.windows else "unix"
        out = self.run_vesk("-d", "second", 'extra="x"').out
        block = out[out.index("Implicit context"):out.index("[vesk::")].splitlines()
        self.assertEqual(block[:2] + block[-2:],
                         ["Implicit context for project 'vesk':", "{", "}", ""])
        names = [line.split(" ")[0].lower() for line in block[2:-2]]
        self.assertEqual(names, sorted(names))
        self.assertLessEqual({"year", "month", "project_root", "profile"}, set(names))
        self.assertLessEqual({f'os_family = "{family}"', 'output_def_dir = "out"', 'extra = "x"'},
                             set(block))


class UserData(ProgramTest):
    """Where the registry lives; the build mode makes its directory."""

    @posix_only("the emulator always sets these variables")
    def test_places(self):
        self.unit(TWO_TARGETS)
        home = str(self.base / "home")
        for env, place in (
            ({"APPDATA": f"{home}/a"}, "home/a/vesk"),
            ({"APPDATA": "", "USERPROFILE": f"{home}/b"}, "home/b/AppData/Local/vesk"),
            ({"APPDATA": None, "XDG_CONFIG_HOME": f"{home}/c"}, "home/c/vesk"),
            ({"APPDATA": None, "HOME": f"{home}/d"}, "home/d/.config/vesk"),
        ):
            with self.subTest(env=env):
                self.printed(env=env)
                self.assertTrue((self.base / place).is_dir(), place)
        self.assertEqual(self.error(env={"APPDATA": None, "HOME": None}),
                         "Unable to resolve %APPDATA% path.\n")

    def test_directory_that_cannot_be_made(self):
        self.unit(TWO_TARGETS)
        self.write("file", "")
        blocked = f"{self.dir}/file/data"
        env = {"APPDATA": "Z:" + blocked if SETTINGS.windows else blocked}
        self.assertRegex(self.error(env=env), "create_directories.*\n  it is to hold your registry; set ")
