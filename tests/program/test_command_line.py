"""Options, modes and exit statuses that need no project."""


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

NO_PROJECT = "No file to list. You need .vesk_project.txt.\n"
# The exit status -1 as the system shows it.
MINUS_ONE = 0xFF

TWO_TARGETS = """
    first: { cmdline = "child print first" }
    second: { cmdline = "child print second" }
    """


class Modes(ProgramTest):
    def test_help_wins_and_ends_the_parsing(self):
        for arguments in (["-h"], ["--help"], ["-H"], ["-h", "-r"], ["-r", "-h"], ["--HELP"],
                          ["-h", "--version"], ["--version", "-h"], ["-h", "-f"]):
            with self.subTest(arguments=arguments):
                self.check(*arguments, out=HELP)

    def test_version(self):
        for arguments in (["--version"], ["--version", "-u"], ["-u", "--VERSION"],
                          ["-version"], ["target", "--version"]):
            with self.subTest(arguments=arguments):
                self.check(*arguments, out="3.16.1.0\n")

    def test_lists_need_a_project(self):
        self.unit(TWO_TARGETS)
        for option in ("-p", "--list-profiles", "-u", "-U", "--LIST-UNITS"):
            with self.subTest(option=option):
                self.check(option, err=NO_PROJECT, status=MINUS_ONE)

    def test_highest_mode_wins(self):
        self.unit(TWO_TARGETS)
        self.check("-l", "1", "-p", "-u", out="{*}first{*}\n{*}second{*}\n")
        self.check_error("-r", "-u", "-p", err="Error: project '.vesk_project.txt' not found. It "
                         "was looked for in {DIR} and above; vesk --create-project makes one.\n")

    def test_targets_of_a_standalone_unit(self):
        self.unit(TWO_TARGETS)
        for unit in ("1", "vesk"):
            with self.subTest(unit=unit):
                result = self.run_vesk("-l", unit)
                names = [line.split()[0] for line in result.out.splitlines()]
                self.assertEqual((names, result.err, result.status), (["first", "second"], "", 0))
        self.check_error("-l", "nowhere", err="Error: Unit 'nowhere' not found.{*}\n")

    def test_missing_values(self):
        self.unit(TWO_TARGETS)
        for arguments, message in (
            (["-f"], "unknown switch"),
            (["--file"], "unknown switch"),
            (["-o"], "unknown switch"),
            (["second", "--out"], "unknown switch"),
            (["-l"], "Option '-l' requires a unit."),
            (["-l", "-u"], "Option '-l' requires a unit."),
            (["-v", "99999999999"], "stoi argument out of range"),
            (["-j", "2147483648"], "stoi argument out of range"),
        ):
            with self.subTest(arguments=arguments):
                self.check(*arguments, err=message + "\n", status=1)


class Options(ProgramTest):
    def test_unknown_ones_are_ignored(self):
        self.unit(TWO_TARGETS)
        self.assertEqual(self.printed("--frobnicate", "-x", "second", "--", "-"), "second\n")

    def test_spelling(self):
        self.unit(TWO_TARGETS)
        for option in ("-V", "--v", "-verbose", "--VERBOSE"):
            with self.subTest(option=option):
                self.check(option, "6", "second", out="second\n")

    def test_may_stand_anywhere(self):
        self.write("other.txt", TWO_TARGETS)
        for arguments in (["-f", "other.txt", "-v", "6", "second"],
                          ["second", "-v", "6", "--file", "other.txt"],
                          ["-v", "6", "second", "-F", "other.txt"]):
            with self.subTest(arguments=arguments):
                self.check(*arguments, out="second\n")

    def test_first_target_without_a_name(self):
        self.unit(TWO_TARGETS)
        self.check("-v", "6", out="first\n")

    def test_second_target_name(self):
        self.unit(TWO_TARGETS)
        self.check("-v", "6", "second", "first", err="Only one target name can be specified\n",
                   out="second\n")

    def test_verbosity(self):
        self.unit(TWO_TARGETS)
        normal = self.run_vesk("second").out
        self.assertIn("Starting build\n", normal)
        for arguments, shows in (
            (["-v", "8"], set()),
            (["-v", "7"], set()),
            (["-v", "6"], set()),
            (["-v", "9x"], set()),
            (["-v", "5"], {5}),
            (["-v"], {3, 5}),
            (["-v", "3"], {3, 5}),
            (["-v", "1"], {1, 3, 5}),
            (["-v", "0"], {0, 1, 3, 5}),
        ):
            with self.subTest(arguments=arguments):
                out = self.run_vesk("second", *arguments).out
                marks = {0: "::match - ", 1: "Parsing ", 3: "Tool selection", 5: "Starting build"}
                self.assertEqual({level for level in marks if marks[level] in out}, shows)
                self.assertIn("second\n", out)

    def test_silence(self):
        self.unit("bad: { cmdline = \"child exit 3\" }")
        self.check("-v", "8", status=1)
        self.check("-v", "7", status=1, err="""
            [vesk::bad] Command ended with status 3: child exit 3
            [vesk::bad] Build of bad failed. Exiting..
            Error: Build failed.
            """)

    def test_job_count(self):
        self.unit(TWO_TARGETS)
        for arguments in (["-j"], ["-j", "0"], ["-j", "1"], ["-j", "8"], ["--jobs", "4"],
                          ["-j4"], ["--jobs=4"]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.printed("second", *arguments), "second\n")
        self.assertEqual(self.printed("-j", "second"), "second\n")

    def test_dry_run(self):
        self.unit(TWO_TARGETS)
        for option in ("-n", "--dry-run"):
            out = self.run_vesk(option, "second").out
            self.assertIn("child print second\n", out)
            self.assertNotIn("\nsecond\n", out)

    def test_keep_going(self):
        self.unit("""
            all: bad good { NO_TOOL }
            bad: { cmdline = "child exit 3" }
            good: { cmdline = "child touch good.txt" }
            """)
        self.assertEqual((self.run_vesk("all").status, self.files()), (1, ["vesk.txt"]))
        for option in ("-k", "--keep-going"):
            self.assertEqual(self.run_vesk(option, "all").status, 1)
            self.assertEqual(self.files(), ["good.txt", "vesk.txt"])
            (self.dir / "good.txt").unlink()


class CommandLineMode(ProgramTest):
    def test_builds_its_assignments(self):
        for option in ("-c", "--cmdMode", "--CMDMODE"):
            with self.subTest(option=option):
                self.assertEqual(self.printed(option, 'cmdline="child print hello"'), "hello\n")

    def test_names(self):
        self.check("-c", 'cmdline="child print hello"', out="""
            Starting build
            [cmdline::cmdline] Visiting target
            [cmdline::cmdline] Output dir: {DIR}/out
            [cmdline::cmdline] Starting build job
            [cmdline::cmdline] child print hello
            hello
            [cmdline::cmdline] Build done
            """)

    def test_several_assignments(self):
        printed = self.printed("-c", 'cmdline=["child args ${word}"]', 'word="a b"')
        self.assertEqual(printed, "[a]\n[b]\n")

    def test_needs_no_unit_file(self):
        self.unit("this is no unit file")
        self.assertEqual(self.printed("-c", 'cmdline="child print hello"'), "hello\n")

    def test_overrides_reach_every_target(self):
        self.unit("""
            hello: inner { cmdline = "child print ${who}" }
            inner: { cmdline = "child print inner ${who}" }
            """)
        self.assertEqual(self.printed("hello", 'who="you"'), "inner you\nyou\n")

    def test_word_that_is_nothing(self):
        self.unit("library: { NO_TOOL }")
        self.check("-v", "6", "librari", err="'librari' is neither a target nor a profile; as an "
                   "assignment it clears the variable 'librari'. (did you mean 'library'?)\n")
        result = self.run_vesk("-v", "6", "lib=")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertIn("lib=", result.err)


class OutputFile(ProgramTest):
    UNIT = """
        main: { cmdline = "child exit 0"  ^B = "text"  ^a = 7  ^list = ["x", "y"]  hidden = 1 }
        bad: { cmdline = "child exit 2"  ^B = 1 }
        """

    def test_one_line_per_output(self):
        self.unit(self.UNIT)
        for option in ("-o", "--out"):
            self.write("result.txt", "old content, longer than the new one " * 9)
            self.printed("main", option, "result.txt")
            self.assertEqual(self.read("result.txt"),
                             "a = 7\nB = text\nlist = x y\nresult = 0\n")

    def test_only_after_success(self):
        self.unit(self.UNIT)
        self.assertEqual(self.run_vesk("bad", "-o", "result.txt").status, 1)
        self.assertEqual(self.files(), ["vesk.txt"])

    def test_empty_path_writes_nothing(self):
        self.unit(self.UNIT)
        self.printed("main", "-o", "")
        self.assertEqual(self.files(), ["vesk.txt"])

    @posix_only("there is no such device")
    def test_full_disk(self):
        self.unit(self.UNIT)
        result = self.run_vesk("main", "-o", "/dev/full")
        self.assertEqual(result.status, 1)
        self.assertIn("/dev/full", result.err)

    def test_place_that_cannot_be_written(self):
        self.unit(self.UNIT)
        result = self.run_vesk("main", "-o", "nowhere/result.txt")
        self.assertEqual(result.status, 1)
        self.assertIn("nowhere/result.txt", result.err.replace("\\", "/"))


class Dump(ProgramTest):
    def test_implicit_context(self):
        self.unit(TWO_TARGETS)
        family = "windows" if SETTINGS.windows else "unix"
        out = self.run_vesk("-d", "second", 'extra="x"').out
        block = out[out.index("Implicit context"):out.index("[vesk::")].splitlines()
        self.assertEqual(block[0], "Implicit context for project 'vesk':")
        self.assertEqual((block[1], block[-2:]), ("{", ["}", ""]))
        names = [line.split(" ")[0].lower() for line in block[2:-2]]
        self.assertEqual(names, sorted(names))
        for name in ("os_family", "year", "month", "project_root", "output_def_dir", "profile"):
            self.assertIn(name, names)
        self.assertIn(f'os_family = "{family}"', block)
        self.assertIn('output_def_dir = "out"', block)
        self.assertIn('extra = "x"', block)
        self.assertNotIn("Implicit context", self.run_vesk("second").out)


class UserData(ProgramTest):
    """Where the registry lives; the build mode makes its directory."""

    def build(self, **env):
        self.unit(TWO_TARGETS)
        return self.run_vesk("-v", "6", "second", env=env)

    @posix_only("the emulator always sets these variables")
    def test_places(self):
        home = str(self.base / "home")
        for env, place in (
            ({"APPDATA": f"{home}/a"}, "home/a/vesk"),
            ({"APPDATA": "", "USERPROFILE": f"{home}/b"}, "home/b/AppData/Local/vesk"),
            ({"APPDATA": None, "XDG_CONFIG_HOME": f"{home}/c"}, "home/c/vesk"),
            ({"APPDATA": None, "HOME": f"{home}/d"}, "home/d/.config/vesk"),
        ):
            with self.subTest(env=env):
                self.assertEqual(self.build(**env).err, "")
                self.assertTrue((self.base / place).is_dir(), place)

    @posix_only("the emulator always sets these variables")
    def test_nowhere(self):
        result = self.build(APPDATA=None, HOME=None)
        self.assertEqual((result.status, result.err),
                         (1, "Unable to resolve %APPDATA% path.\n"))

    def test_directory_that_cannot_be_made(self):
        self.write("file", "")
        blocked = f"{self.dir}/file/data"
        result = self.build(APPDATA="Z:" + blocked if SETTINGS.windows else blocked)
        self.assertEqual(result.status, 1)
        self.assertIn("create_directories", result.err)


