"""Values, merging, conditions and expansion, seen through what a target hands on."""

from harness import ProgramTest, dedented


class Language(ProgramTest):
    def yields(self, cases):
        """Each case: assignments, and the outputs that come of them. One run for all."""
        lines = self.outputs("\n".join(body for body, _ in cases)).splitlines()
        expected = [line for _, outputs in cases for line in outputs.splitlines()]
        self.assertEqual(sorted(lines), sorted(expected))

    def fails(self, body, message, out=None):
        self.unit("t: { cmdline = []\n" + body + "\n}\n")
        self.check_error("-v", "6", err=message, out=out)


class Values(Language):
    def test_literals(self):
        self.yields([
            ('^a1 = "text"', "a1 = text"),
            ('^a2 = ""', "a2 = "),
            (r'^a3 = "C:\dir"', r"a3 = C:\dir"),
            ('^a4 = R"(say "hi" ${x} (1))"', 'a4 = say "hi" ${x} (1)'),
            ('^a5 = R"()"', "a5 = "),
            ("^a6 = 12", "a6 = 12"),
            ("^a7 = -0x1F", "a7 = -31"),
            ("^a8 = 0x7FFFFFFF", "a8 = 2147483647"),
            ("^a9 = -2147483648", "a9 = -2147483648"),
            ('^b1 = ["x", 2, ["y z"]]', "b1 = x 2 y z"),
            ("^b2 = []", "b2 = "),
            ('^b3 = { x = "1" y = { z = 2 } }', "b3 = 1 2"),
            ('^b4 = "grüße, 世界"', "b4 = grüße, 世界"),
            ('^b5-c = "dash"', "b5-c = dash"),
        ])

    def test_comments(self):
        self.yields([
            ('// ^no = 1\n^a = 1 // b\n', "a = 1"),
            ('/* ^no = 1\n"*/ ^c = /* in between */ 2', "c = 2"),
        ])

    def test_references(self):
        self.yields([
            ('one = "1"  ^a1 = one', "a1 = 1"),
            ('list = ["x", "y", "z"]  ^a2 = list[1]', "a2 = y"),
            ('ctx = { in = { deep = "down" } label = "n" }  ^a3 = ctx.in.deep', "a3 = down"),
            ("^a4 = ctx.label", "a4 = n"),
            ("^a5 = ctx['label']", "a5 = n"),
            ('word = "abcdef"  ^a6 = word[1..3]', "a6 = bc"),
            ("^a7 = word[1:3]", "a7 = bc"),
            ("^a8 = word[0]", "a8 = a"),
            ("number = 2  ^a9 = list[number]", "a9 = z"),
            ("^b1 = ascii[65]", "b1 = A"),
            ("^b2 = ascii['space']", "b2 =  "),
            ("^b3 = LIST[0]", "b3 = x"),
            ("^c1 = later  later = 5", "c1 = 5"),
            ("^c2 = list", "c2 = x y z"),
        ])

    def test_paths_are_relative_to_their_file(self):
        self.write("sub/vesk.txt", 't: { cmdline = []  ^p = P"(a/b.c)"  ^q = P"(C:/abs)" }')
        self.check("-v", "6", "-f", "sub/vesk.txt", "-o", "outputs")
        lines = self.plain(self.read("outputs").encode()).splitlines()
        self.assertEqual(lines, ["p = {DIR}/sub/a/b.c", "q = C:/abs", "result = 0"])

    def test_integer_that_is_too_large(self):
        for literal in ("2147483648", "0x80000000", "-2147483649", "99999999999999999999999"):
            with self.subTest(literal=literal):
                self.fails(f"x = {literal}",
                           f"Error: Invalid or out-of-range integer literal '{literal}'.\n"
                           "  in {DIR}/vesk.txt:2 (target 't')\n")


class Merging(Language):
    def test_operators(self):
        self.yields([
            ('^a1 = "x"  a1 = "y"', "a1 = y"),
            ('^a2 = "x"  a2 += "y"', "a2 = x y"),
            ('^a3 = "x"  a3 += 5', "a3 = x5"),
            ('^a4 = "x"  a4 += ["y", "z"]', "a4 = x y z"),
            ('^a5 = ["x"]  a5 += "y z"', "a5 = x y z"),
            ('^a6 = ["x"]  a6 += ["y", "z"]  ^b6 = a6[2]', "a6 = x y z\nb6 = z"),
            ("^a7 = 2  a7 += 3", "a7 = 5"),
            ("^a8 = 2147483647  a8 += 1", "a8 = -2147483648"),
            ('^a9 = "x"  a9 ?= "y"', "a9 = x"),
            ('^c1 ?= "y"', "c1 = y"),
            ('^c2 += "y"', "c2 = y"),
            ('^C3 = "x"  c3 += "y"', "C3 = x y"),
            ('^c4 = { a = 1 b = 2 }  c4 += { b = 3 c = 4 }', "c4 = 1 3 4"),
            ('x5 = ["m"]  ^c5 = x5  c5 += "n"  ^d5 = x5', "c5 = m n\nd5 = m"),
        ])

    def test_bare_name_clears(self):
        lines = self.outputs('^a = "x"  a  ^b = "x"  b  b = "y"')
        self.assertEqual(lines, "a = \nb = y\n")

    def test_what_cannot_be_appended(self):
        for body, message in (
            ('x = 5  x += "a"', "Cannot convert VeskInt 5 to VeskString"),
            ("x = ascii  y = \"a\"  y += x", "Cannot convert VeskCharSet ascii to VeskString"),
            ("x = \"a\"  x += { a = 1 }", None),
        ):
            with self.subTest(body=body):
                self.unit("t: { cmdline = []  " + body + " }")
                result = self.run_vesk("-v", "6")
                self.assertEqual(result.status, 1)
                self.assertTrue(result.err.startswith("Error: " + (message or "Cannot convert ")),
                                result.err)


class Conditions(Language):
    def test_comparisons(self):
        cases = (
            ('word = "abc"', True), ('word = "abd"', False), ('word != "abc"', False),
            ('word < "abcd"', True), ('word < "zzz"', False), ('word > "ab"', True),
            ('word > "abc"', False), ("number = 7", True), ("number < 8", True),
            ("number > 7", False), ("number != 8", True), ('list = ["x", "y"]', True),
            ('list = ["x"]', False), ("word", True), ("nothing", False), ('word = 7', False),
            ("ctx.label = \"n\"", True), ('list[1] = "y"', True), ('quoted = "abc"', True),
            ('ref = "abc"', True), ("NUMBER = 7", True),
        )
        body = ['word = "abc" number = 7 list = ["x", "y"] ctx = { label = "n" } ref = word',
                'quote = ascii[34] quoted = "${quote}abc${quote}"']
        for index, (condition, _) in enumerate(cases):
            body.append(f"if {condition} {{ ^c{index:02} = 1 }}")
        lines = self.outputs("\n".join(body)).splitlines()
        held = [f"c{index:02} = 1" for index, (_, holds) in enumerate(cases) if holds]
        self.assertEqual(lines, held)

    def test_merging_in_order(self):
        self.assertEqual(self.outputs("""
            ^flags = ["-a"]
            x = "1"
            if x { flags += "-b"  y = 1 }
            if y { flags += "-c"  if x = "1" { flags += "-e" } }
            if z { flags += "-d" }
            flags += "-f"
            """), "flags = -a -f -b -c -e\n")

    def test_integer_against_text(self):
        self.fails('n = 1  if n = "1" { }',
                   "Error: Cannot convert VeskInt 1 to VeskString\n{*}\n{*}\n")


class Expansion(Language):
    def test_dollar(self):
        self.yields([
            ('one = "1" list = ["x", "y"] ctx = { label = "n" } ^a1 = "<${one}>"', "a1 = <1>"),
            ('^a2 = "${list}"', "a2 = x y"),
            ('^a3 = "${list[1]}!"', "a3 = y!"),
            ('^a4 = "say ${ascii[34]}${one}${ascii[34]}"', 'a4 = say "1"'),
            ('^a5 = "(${a1})"', "a5 = (<1>)"),
            ('^a6 = "${ctx.label}"', "a6 = n"),
            ('^a7 = "$ {one} $one"', "a7 = $ {one} $one"),
            ('^a8 = "${one}${ONE}"', "a8 = 11"),
        ])

    def test_cross(self):
        self.yields([
            ('n = ["1", "2"] l = ["a", "b"]  ^a1 = "#{l}.c"', "a1 = a.c b.c"),
            ('^a2 = "#{l}#{n}"', "a2 = a1 a2 b1 b2"),
            ('^a3 = ["first", "#{l}", "last"]  ^a4 = a3[2]', "a3 = first a b last"),
            ("", "a4 = b"),
            ('e = []  ^a5 = "#{e}.c"', "a5 = "),
            ('w = "p q"  ^a6 = "-#{w}"', "a6 = -p -q"),
        ])

    def test_unknown_variables_become_empty(self):
        self.assertEqual(self.outputs('^a = "[${x}${y.z}${x}]"', err=dedented("""
            [vesk::t] Variable 'x' does not exist.
            [vesk::t] Variable 'y.z' does not exist.
            [vesk::t] Variable 'x' does not exist.
            """)), "a = []\n")

    def test_malformed_references(self):
        for text, message in (
            ("${one", "missing '}'"),
            ("${a${b}}", "nested ${} is not allowed"),
            ("${}", "Empty identifier"),
            ("${a.}", "Expected identifier segment after '.'"),
            ("${1a}", "Invalid identifier start"),
            ("${a[-1]}", "Invalid index expression inside '[]'"),
            ("${a[0x]}", "Expected hexadecimal digit"),
            ("${a['x]}", "Expected closing apostrophe in index name"),
            ("${a[1}", "Expected ']'"),
            ("${a[99999999999999999999]}", "Invalid or out-of-range number"),
            ("#{x", "missing '}'"),
        ):
            with self.subTest(text=text):
                self.unit(f't: {{ cmdline = []  v = "{text}" }}')
                result = self.run_vesk("-v", "6")
                self.assertEqual(result.status, 1)
                first, *notes = result.err.splitlines()
                self.assertTrue(first.startswith("Error: " + message), result.err)
                self.assertTrue(any("'v'" in note for note in notes), result.err)
                self.assertTrue(any("vesk::t" in note for note in notes), result.err)


class Loops(Language):
    def test_references_in_a_circle(self):
        self.fails("x = y  y = z  z = x", """
            Error: Loop detected! Causing term: 'x'
              loop goes as follows: x <- y <- z <- x
              in variable 'x', line 2
              in target vesk::t {*}
            """)

    def test_texts_in_a_circle(self):
        for body in ('x = "${x}"', 'x = "a${y}"  y = "b${x}"'):
            with self.subTest(body=body):
                self.unit("t: { cmdline = []  " + body + " }")
                result = self.run_vesk("-v", "6")
                self.assertEqual(result.status, 1)
                self.assertIn("'x'", result.err)

    def test_growth_without_end(self):
        lines = ['v0 = "xxxxxxxxxxxxxxxx"']
        lines += [f'v{n + 1} = "${{v{n}}}${{v{n}}}"' for n in range(40)]
        self.unit("t: { cmdline = []\n" + "\n".join(lines) + "\n}\n")
        result = self.run_vesk("-v", "6")
        self.assertEqual(result.status, 1)
        self.assertIn("Error: ", result.err)
        self.assertLess(len(result.err), 4096)
