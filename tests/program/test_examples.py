"""The examples do what their readers are told."""

from harness import ProgramTest, on_system, posix_only


class Examples(ProgramTest):
    def lines(self, name):
        return [line.strip() for line in self.read(name).splitlines()]

    @posix_only("it needs a C compiler on the system itself")
    def test_demo(self):
        self.take_example("demo")
        self.assertEqual(self.printed(), "Hello, world! (demo 1.0, made by vesk)\n")
        self.assertEqual(self.printed("all", 'who="you"'), "Hello, you! (demo 1.0, made by vesk)\n")
        self.assertEqual(self.run_vesk("broken").status, 1)

    def test_workspace(self):
        self.take_example("workspace")
        env = {"APPDATA": on_system(self.base / "data")}
        for project in ("lib", "tool"):
            self.assertEqual(self.run_vesk("-r", cwd=self.dir / project, env=env).status, 0)
        for profile in ("formal", "friendly"):
            self.printed(profile, cwd=self.dir / "tool", env=env)
        self.printed(cwd=self.dir / "suite", env=env)
        self.assertEqual(self.lines("tool/out/formal/message.txt"), ["Good day", "The teller"])
        self.assertEqual(self.lines("tool/out/friendly/message.txt"), ["Hi there", "The teller"])
        self.assertEqual(self.lines("suite/out/all.txt"), ["Good day", "Good day", "The teller"])
