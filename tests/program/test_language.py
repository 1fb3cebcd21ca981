"""Values, merging, conditions and expansion, seen through what a target hands on."""

from harness import ProgramTest, dedented


class Language(ProgramTest):
    def yields(self, cases):
        """Each case: assignments, and the outputs that come of them. One run for all."""
        lines = self.outputs("\n".join(body for body, _ in cases)).splitlines()
        expected = [line for _, outputs in cases for line in outputs.splitlines()]
        self.assertEqual(sorted(lines), sorted(expected))

    def test_literals(self):
        self.yields([
            (r'^a1 = "C:\dir"', r"a1 = C:\dir"),
            ('^a2 = ""', "a2 = "),
            ('^a3 = R"(say "hi" ${x} (1))"', 'a3 = say "hi" ${x} (1)'),
            ("^a4 = -0x1F", "a4 = -31"),
            ('^a5 = ["x", 2, ["y z"]]', "a5 = x 2 y z"),
            ('^a6 = { x = "1" y = { z = 2 } }', "a6 = 1 2"),
            ('^a7 = "grüße, 世界"', "a7 = grüße, 世界"),
            ('^a8-c = "dash"', "a8-c = dash"),
            ('// ^no = 1\n^a9 = 1 // b\n', "a9 = 1"),
            ('/* ^no = 1\n"*/ ^c = /* in between */ 2', "c = 2"),
        ])

    def test_references(self):
        self.yields([
            ('list = ["x", "y", "z"]  ^a1 = LIST[1]', "a1 = y"),
            ('ctx = { in = { deep = "down" } label = "n" }  ^a2 = ctx.in.deep', "a2 = down"),
            ("^a3 = ctx['label']", "a3 = n"),
            ('word = "abcdef"  ^a4 = word[1..3]', "a4 = bc"),
            ("^a5 = word[1:3]", "a5 = bc"),
            ("number = 2  ^a6 = list[number]", "a6 = z"),
            ("^a7 = ascii[65]", "a7 = A"),
            ("^a8 = later  later = 5", "a8 = 5"),
        ])

    def test_paths_are_relative_to_their_file(self):
        self.write("sub/vesk.txt", 't: { cmdline = []  ^p = P"(a/b.c)"  ^q = P"(C:/abs)" }')
        self.check("-v", "6", "-f", "sub/vesk.txt", "-o", "outputs")
        self.assertEqual(self.plain(self.read("outputs").encode()),
                         "p = {DIR}/sub/a/b.c\nq = C:/abs\nresult = 0\n")

    def test_merging(self):
        self.yields([
            ('^a1 = "x"  a1 = "y"', "a1 = y"),
            ('^a2 = "x"  a2 += 5  a2 += ["y", "z"]', "a2 = x5 y z"),
            ('^a3 = ["x"]  a3 += "y z"  ^b3 = a3[1]', "a3 = x y z\nb3 = y z"),
            ("^a4 = 2  a4 += 3", "a4 = 5"),
            ('^a5 = "x"  a5 ?= "y"', "a5 = x"),
            ('^a6 ?= "y"  A6 += "z"', "a6 = y z"),
            ('^a7 = { a = 1 b = 2 }  a7 += { b = 3 c = 4 }', "a7 = 1 3 4"),
            ('x8 = ["m"]  ^a8 = [x8]  a8 += "n"  ^b8 = x8', "a8 = m n\nb8 = m"),
            ('^a9 = "x"  a9  ^b9 = "x"  b9  b9 = "y"', "a9 = \nb9 = y"),
            ('^c1 = "x"  c1  c1 += "y"', "c1 = y"),
            ('^c2 = "x"  if c2 { c2  c2 += "y" }', "c2 = y"),
            ('^c3 = { v = 1  v  v += 2 }', "c3 = 2"),
            ('^c4 = { v = "a" }  c4 += { v ?= "q"  v += "b" }', "c4 = a b"),
            ('^c5 = "s"  c5 += P"(p)"  c5 += [x8]', "c5 = s p x8"),
        ])

    def test_conditions(self):
        self.assertEqual(self.outputs("""
            ^flags = ["-a"]
            x = "1"
            list = ["x", "y"]
            if x { flags += "-b"  y = 1 }
            if y { flags += "-c"  if x = "1" { flags += "-e" } }
            if z { flags += "-d" }
            if x != "1" { flags += "-not" }
            if list[1] = "y" { flags += "-list" }
            if y > 0 { flags += "-more" }
            if y < 1 { flags += "-less" }
            flags += "-f"
            """), "flags = -a -f -b -c -list -more -e\n")

    def test_expansion(self):
        self.yields([
            ('one = "1" list = ["x", "y"] ctx = { label = "n" } ^a1 = "<${one}>"', "a1 = <1>"),
            ('^a2 = "${list[1]}${ctx.label}!"', "a2 = yn!"),
            ('^a3 = "say ${ascii[34]}${a1}${ascii[34]}"', 'a3 = say "<1>"'),
            ('^a4 = "$ {one} $one"', "a4 = $ {one} $one"),
            ('n = ["1", "2"] ^a5 = "#{list}#{n}"', "a5 = x1 x2 y1 y2"),
            ('^a6 = ["first", "#{list}.c", "last"]  ^a7 = a6[2]', "a6 = first x.c y.c last"),
            ("", "a7 = y.c"),
            ('e = []  ^a8 = "#{e}.c"', "a8 = "),
        ])
        self.assertEqual(self.outputs('^a = "[${x}${y.z}${x}]"', err=dedented("""
            [vesk::t] Variable 'x' does not exist.
            [vesk::t] Variable 'y.z' does not exist.
            [vesk::t] Variable 'x' does not exist.
            """)), "a = []\n")
        self.assertEqual(self.outputs(
            'a = "${x}"  in = { b = "${y}" }  if a = "" { c = "${a}${in.b}" }  ^d = "${a}${in.b}"',
            err="[vesk::t] Variable 'x' does not exist.\n[vesk::t] Variable 'y' does not exist.\n"),
            "d = \n")

    def test_faults(self):
        for body, message, notes in (
            ("x = 0x80000000", "Error: Invalid or out-of-range integer literal '0x80000000'.",
             "  {DIR}/vesk.txt:2:5"),
            ('x = 5  x += "a"', "Error: Cannot convert VeskInt 5 to VeskString",
             "  in variable 'x'"),
            ('v = w  v += "a"', "Error: w is not resolved yet and '\"a\"' cannot be appended to it.",
             "  in variable 'v'"),
            ('v = "s"  v += w', "Error: Cannot convert VeskIdentifier w to VeskString",
             "  in variable 'v'"),
            ('n = 1  if n = "1" { }', "Error: Cannot convert VeskInt 1 to VeskString",
             "  in a condition"),
            ('x = "${a[-1]}"', "Error: Invalid index expression inside '[]'",
             "  in variable 'x'"),
            ("x = y  y = z  z = x", "Error: Loop detected! Causing term: 'x'",
             "  loop goes as follows: x <- y <- z <- x"),
            ('x = "a${y}"  y = "b${x}"', "Circular reference to variable 'x': x <- y <- x",
             "  in variable 'x'"),
            ('v0 = "xx"' + "".join(f' v{n} = "${{v{n - 1}}}${{v{n - 1}}}"' for n in range(1, 40)),
             "Error: A value grows beyond 64 MiB.", "  in variable 'v"),
        ):
            with self.subTest(body=body):
                self.unit("t: { cmdline = []\n" + body + "\n}\n")
                lines = self.error().splitlines()
                self.assertTrue(lines[0].startswith(message), lines)
                self.assertTrue(any(line.startswith(notes) for line in lines[1:]), lines)
