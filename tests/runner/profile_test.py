#!/usr/bin/env python3
"""morvik-run --profile: what it counts and where it says the time went:  profile_test.py BINARY"""
import re
import unittest

from scripts import Scripts

SCRIPT = """: 1 + ; @inc SET
: inc ! inc ! ; @twice SET .
0 @n SET .
2000 : n twice ! @n SET ;
 REPEAT .
n PRINT .
"""
FUNCTION = re.compile(r"^ +([\d.]+) +([\d.]+)% +([\d.]+) +(\d+)  (.*)$", re.M)
LINE = re.compile(r"^ +([\d.]+) +([\d.]+)% +(\d+)  (s\.morvik:\d+)$", re.M)


class Profile(Scripts):
    def test_calls_and_lines_are_counted(self):
        status, output, errors = self.script(SCRIPT, options=["--profile"])
        self.assertEqual((status, output), (0, " 4000\n"))
        calls = {name: int(count) for _, _, _, count, name in FUNCTION.findall(errors)}
        self.assertEqual(calls, {"inc (s.morvik:1)": 4000, "twice (s.morvik:2)": 2000, "(no name) (s.morvik:4)": 2000})
        runs = {place: int(count) for _, _, count, place in LINE.findall(errors)}
        self.assertEqual({place: runs[place] for place in ("s.morvik:5", "s.morvik:6")}, {"s.morvik:5": 1, "s.morvik:6": 1})
        self.assertGreaterEqual(runs["s.morvik:1"], 4000)

    def test_rows_are_sorted_and_times_add_up(self):
        _, _, errors = self.script(SCRIPT, options=["--profile"])
        own = [float(row[0]) for row in FUNCTION.findall(errors)]
        self.assertEqual(own, sorted(own, reverse=True))
        all_time, outside = map(float, re.search(r"^Profile of s\.morvik: ([\d.]+) ms, of which ([\d.]+) ms in no function$",
                                                 errors, re.M).groups())
        self.assertAlmostEqual(sum(own) + outside, all_time, delta=0.01)
        total = {row[4].split()[0]: float(row[2]) for row in FUNCTION.findall(errors)}
        mine = {row[4].split()[0]: float(row[0]) for row in FUNCTION.findall(errors)}
        self.assertAlmostEqual(total["twice"], mine["twice"] + mine["inc"], delta=0.01)

    def test_time_goes_to_the_line_that_takes_it(self):
        _, _, errors = self.script(": 0.2 SLEEP\n 1 ; @slow SET .\nslow ! .\n", options=["--profile"])
        first = LINE.search(errors)
        self.assertEqual(first.group(4), "s.morvik:1")
        self.assertGreater(float(first.group(1)), 190)
        self.assertIn("slow", FUNCTION.search(errors).group(5))

    def test_a_recursion_is_one_function(self):
        _, _, errors = self.script(": DUP CHECK : 1 - down ! ; ?Y ; @down SET 50 down ! .", options=["--profile"])
        rows = [row for row in FUNCTION.findall(errors) if row[4].startswith("down ")]
        self.assertEqual([int(row[3]) for row in rows], [51] if rows else [])

    def test_each_of_many_functions_is_counted(self):
        count = 1000
        functions = "".join(": %d + ; @f%d SET%s\n" % (i, i, " ." * (i % 100 == 99)) for i in range(count))
        calls = "".join("f%d !\n" % i for i in range(count))
        _, _, errors = self.script(functions + ": %s; @all SET . 0 all ! all ! POP ." % calls, options=["--profile"])
        rows = [(row[4].split()[0], int(row[3])) for row in FUNCTION.findall(errors) if re.match(r"f\d", row[4])]
        self.assertGreater(len(rows), 10)
        self.assertEqual(len({name for name, _ in rows}), len(rows))
        self.assertEqual({times for _, times in rows}, {2})

    def test_a_function_is_named_whenever_it_gets_its_name(self):
        text = "".join(": %d ; @f%d SET .\n" % (i, i) for i in range(20)) + ": 1 ; DUP ! POP @late SET . : f9 ! f19 ! ; ! .\n"
        _, _, errors = self.script(text, options=["--profile"])
        self.assertEqual({row[4] for row in FUNCTION.findall(errors)},
                         {"late (s.morvik:21)", "f9 (s.morvik:10)", "f19 (s.morvik:20)", "(no name) (s.morvik:21)"})

    def counted(self, text):
        _, _, errors = self.script(text, options=["--profile"])
        return {(row[4], int(row[3])) for row in FUNCTION.findall(errors)}

    def test_a_function_that_was_assembled_is_known_by_its_name(self):
        self.assertEqual(self.counted("'1 +' ASSEMBLE @f SET\n1 : f ! f ! ; ! ."),
                         {("f (s.morvik:2)", 2), ("(no name) (s.morvik:2)", 1)})

    def test_names_in_a_context_that_a_function_opens(self):
        self.assertEqual(self.counted(": NEWCONTEXT : 2 ; @$inner SET $inner ! POP ; @f SET\nf ! f ! .\n"),
                         {("f (s.morvik:1)", 2), ("inner (s.morvik:1)", 2)})

    def test_a_script_without_a_function(self):
        status, output, errors = self.script("1 PRINT .", options=["--profile"])
        self.assertEqual((status, output, FUNCTION.findall(errors)), (0, " 1\n", []))
        self.assertEqual([row[2:] for row in LINE.findall(errors)], [("1", "s.morvik:1")])

    def test_functions_far_below_each_other_are_counted(self):
        count = 150  # more than the profile follows
        text = ": 0 ; @f0 SET .\n" + "".join(": f%d ! 1 + ; @f%d SET .\n" % (i - 1, i) for i in range(1, count))
        text += "f%d ! PRINT ." % (count - 1)
        self.passes(text, " %d\n" % (count - 1))
        self.assertEqual({calls for _, calls in self.counted(text)}, {1})

    def test_folded_stacks(self):
        _, output, errors = self.script(SCRIPT, options=["--profile=folded"])
        self.assertEqual(output, " 4000\n")
        self.assertRegex(errors, r"\A(?:s\.morvik(?:;[^;\n]+)* \d+\n)+\Z")
        self.assertRegex(errors, r"(?m)^s\.morvik;\(no name\);twice;inc \d+$")

    def test_without_it_nothing_is_written(self):
        self.assertEqual(self.script(SCRIPT), (0, " 4000\n", ""))


if __name__ == "__main__":
    unittest.main()
