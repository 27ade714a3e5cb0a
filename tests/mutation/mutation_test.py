# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What scripts/check mutate is made of, but for the part that needs clang."""

import contextlib
import io
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import unittest
import unittest.mock

import equivalents
import mutate
import results
import schemata
import suite
from mutants import Edit, Form, Mutant, difference, flat, from_json, head, number_occurrences, to_json

TEXT = """// Whose it is.
int f(int a)
{
    use(a); // first
    emit done();
    return a + 1;
}
"""


def mutant(form, *edits, number=1, operator="op", file="src/f.cpp"):
    """Edits are given as (old, new) of the text above; old texts are unique."""
    places = [Edit(TEXT.index(old), TEXT.index(old) + len(old), new) for old, new in edits]
    found = Mutant(file, "f", operator, form, places, 1, edits[0][0], edits[0][1],
                   difference(*edits[0]))
    found.number = number
    return found


class MutantTest(unittest.TestCase):
    def test_applies_all_its_edits(self):
        swapped = mutant(Form.SWAP, ("use(a);", "emit done();"), ("emit done();", "use(a);"))
        self.assertEqual(swapped.apply(TEXT), TEXT.replace("use(a);", "X").replace("emit done();", "use(a);")
                         .replace("X", "emit done();"))

    def test_survives_being_written_and_read(self):
        original = mutant(Form.EXPRESSION, ("a + 1", "a - 1"))
        self.assertEqual(from_json(to_json(original)), original)

    def test_keeps_its_id_whatever_is_written_around_it(self):
        first, second = mutant(Form.EXPRESSION, ("a + 1", "a - 1")), mutant(Form.EXPRESSION, ("a + 1", "a - 1"))
        second.line, second.number, second.original, second.changed = 77, 5, "b + 1", "b - 1"
        self.assertEqual(first.id, second.id)
        self.assertEqual(first.name, "src/f.cpp f: op: + -> -")
        second.change = "+ -> *"
        self.assertNotEqual(first.id, second.id)

    def test_is_counted_when_another_is_called_the_same_and_dropped_when_it_is_the_same(self):
        first, second = mutant(Form.STATEMENT, ("use(a);", "")), mutant(Form.STATEMENT, ("use(a);", ""))
        third = mutant(Form.STATEMENT, ("emit done();", ""))
        third.change = first.change
        self.assertEqual([item.occurrence for item in number_occurrences([first, second, third])], [1, 2])

    def test_is_called_by_what_differs(self):
        for before, after, change in [("a + 1", "a - 1", "+ -> -"), ("f(a, 1000)", "f(a, 999)", "1000 -> 999"),
                                      ('g("x y")', 'g("")', '"x y" -> ""'), ("!a", "bool(a)", "! a -> bool ( a )")]:
            self.assertEqual(difference(before, after), change)

    def test_statements_are_called_by_what_they_do(self):
        for statement, name in [("d->proxy->Accept();", "Accept()"), ("emit q->told(a(b));", "emit told"),
                                ("if (a) b();", "if"), ("d->total += f();", "total ="), ("return f();", "return"),
                                ("const QString id = f();", "id declared"), ("Host::add(a, b);", "add()"),
                                ("a[f(b)] = c;", "a ="), ("++a;", "+")]:
            self.assertEqual(head(statement), name)

    def test_flat_text_has_no_comments_but_texts_that_look_like_them(self):
        self.assertEqual(flat('a("//b"); // c\n  /* d\n e */ f'), 'a("//b"); f')


class SchemataTest(unittest.TestCase):
    def written(self, *mutants):
        return schemata.Schemata(TEXT, list(mutants), [])

    def test_expression_is_chosen_at_run_time(self):
        self.assertIn("return (mutant(1) ? (a - 1) : (a + 1));",
                      self.written(mutant(Form.EXPRESSION, ("a + 1", "a - 1"))).text)

    def test_condition_keeps_its_type_beside_truth_values(self):
        self.assertIn("(mutant(1) ? (true) : bool(a + 1))",
                      self.written(mutant(Form.EXPRESSION, ("a + 1", "true"), operator="condition constant")).text)

    def test_alternatives_hold_the_original_only(self):
        text = self.written(mutant(Form.EXPRESSION, ("a + 1", "a - 1")),
                            mutant(Form.EXPRESSION, ("1", "2"), number=2)).text
        self.assertIn("(mutant(1) ? (a - 1) : (a + (mutant(2) ? (2) : (1))))", text)

    def test_statement_is_dropped_or_takes_the_place(self):
        text = self.written(mutant(Form.STATEMENT, ("use(a);", "")),
                            mutant(Form.STATEMENT, ("emit done();", "emit done(); emit done();"), number=2)).text
        self.assertIn("{ if (!mutant(1)) { { use(a); } } }", text)
        self.assertIn("{ { if (mutant(2)) { emit done(); emit done(); } else { emit done(); } } }", text)

    def test_statements_take_each_others_place(self):
        text = self.written(mutant(Form.SWAP, ("use(a);", "emit done();"), ("emit done();", "use(a);"))).text
        self.assertIn("{ { if (mutant(1)) { emit done(); } else { use(a); } } }", text)
        self.assertIn("{ { if (mutant(1)) { use(a); } else { emit done(); } } }", text)

    def test_lines_stay_where_they_are(self):
        text = self.written(mutant(Form.SWAP, ("use(a);", "emit done();"), ("emit done();", "use(a);"))).text
        self.assertEqual(text.count("\n"), TEXT.count("\n"))
        self.assertIn("return a + 1;", text.splitlines()[5])

    def test_constants_are_made_at_run_time_when_they_have_mutants(self):
        text = "//\nconstexpr int a = 1;\nconstexpr int b = 2;\n"
        found = Mutant("src/f.h", "-", "op", Form.EXPRESSION, [Edit(21, 22, "2")], 1, "1", "2", "1 -> 2", number=3)
        self.assertEqual(schemata.Schemata(text, [found], [(3, 23), (24, 44)]).text,
                         f"{schemata.INCLUDE}\nconst int a = (mutant(3) ? (2) : (1));\nconstexpr int b = 2;\n")

    def test_every_part_knows_its_mutant(self):
        first = mutant(Form.EXPRESSION, ("a + 1", "a - 1"))
        written = self.written(first, mutant(Form.STATEMENT, ("use(a);", ""), number=2))
        self.assertIs(written.owner(written.text.index("a - 1")), first)
        self.assertIsNone(written.owner(written.text.index("a + 1")))
        self.assertEqual(written.owner(written.text.index("mutant(2)")).number, 2)

    def test_mutants_that_share_a_part_only_are_left_out(self):
        first = mutant(Form.EXPRESSION, ("return a", "x"))
        second = mutant(Form.EXPRESSION, ("a + 1", "a - 1"), number=2)
        written, left_out = schemata.write(TEXT, [first, second], [])
        self.assertEqual(left_out, [second])
        self.assertIn("mutant(1)", written.text)


class ResultsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        (self.root / "src").mkdir()
        for name in ["src/f.cpp", "src/g.cpp", "a_test.cpp", "b_test.cpp"]:
            (self.root / name).write_text(name)
        self.killed = mutant(Form.STATEMENT, ("use(a);", ""))
        self.survivor = mutant(Form.STATEMENT, ("emit done();", ""))
        known = self.open()
        known.add(self.killed, "plain", "killed", suite.Test("A.a", [], "", {}, "a_test.cpp"), "failed")
        known.add(self.survivor, "plain", "survived")

    def open(self):
        return results.Results(self.root / "results.jsonl", self.root, ["src/f.cpp", "src/g.cpp"],
                               ["a_test.cpp", "b_test.cpp"])

    def states(self):
        return [(self.open().get(item, "plain") or {}).get("state") for item in [self.killed, self.survivor]]

    def test_results_are_there_in_the_next_run(self):
        self.assertEqual(self.states(), ["killed", "survived"])
        self.assertIsNone(self.open().get(self.killed, "sanitized"))

    def test_a_change_of_the_mutated_file_takes_all(self):
        (self.root / "src/f.cpp").write_text("changed")
        self.assertEqual(self.states(), [None, None])

    def test_a_change_of_another_source_or_test_leaves_the_kill(self):
        for name in ["src/g.cpp", "b_test.cpp"]:
            (self.root / name).write_text("changed")
            self.assertEqual(self.states(), ["killed", None])

    def test_a_change_of_the_test_takes_its_kill(self):
        (self.root / "a_test.cpp").write_text("changed")
        self.assertEqual(self.states(), [None, None])

    def test_a_later_result_counts(self):
        self.open().add(self.survivor, "plain", "killed", suite.Test("B.b", [], "", {}, "b_test.cpp"), "crashed")
        self.assertEqual(self.states(), ["killed", "killed"])


class EquivalentsTest(unittest.TestCase):
    def test_mutants_are_found_by_their_names(self):
        first, second = mutant(Form.STATEMENT, ("use(a);", "")), mutant(Form.STATEMENT, ("emit done();", ""))
        reasons = equivalents.read(f"# Because\n# of this.\n\n{first.name}\n{second.name}\n")
        found, stale = equivalents.match(reasons, [first])
        self.assertEqual(found, {first.id: "Because of this."})
        self.assertEqual(stale, [second.name])

    def test_other_text_is_refused(self):
        name = mutant(Form.STATEMENT, ("use(a);", "")).name
        for text in [name, f"# why\n{name}\n{name}", "# why\nsrc/f.cpp f: op"]:
            with self.assertRaises(ValueError):
                equivalents.read(text)

    def test_the_list_in_the_tree_can_be_read(self):
        equivalents.read((mutate.HERE / "equivalent.txt").read_text(encoding="utf-8"))


class Work:
    """As much of a run as a report needs."""

    def __init__(self, mutants):
        self.target = mutate.TARGETS[0]
        self.mutants = mutants


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.page = pathlib.Path(folder.name) / "page.md"
        self.page.write_text("before\n<!-- mutants of src -->\nold\n<!-- end -->\nbehind\n<!-- end -->\n")
        self.results = results.Results(pathlib.Path(folder.name) / "results", pathlib.Path(folder.name), [], [])
        self.mutants = [mutant(Form.STATEMENT, ("use(a);", "")), mutant(Form.STATEMENT, ("emit done();", "")),
                        mutant(Form.EXPRESSION, ("a + 1", "a - 1"), operator="other")]
        self.equal = {self.mutants[1].id: "why"}

    def report(self):
        output = io.StringIO()
        with unittest.mock.patch.object(mutate, "PAGE", self.page), contextlib.redirect_stdout(output):
            well = mutate.report(Work(self.mutants), self.mutants, self.results, self.equal, [])
        return well, output.getvalue()

    def finish(self):
        test = suite.Test("A.a", [], "", {}, "a_test.cpp")
        self.results.add(self.mutants[0], "plain", "killed", test, "failed")
        self.results.add(self.mutants[2], "plain", "killed", test, "failed")
        for build in mutate.BUILDS:
            self.results.add(self.mutants[1], build, "survived")

    def test_a_run_that_is_cut_short_prints_no_score_and_writes_nothing(self):
        before = self.page.read_text()
        self.finish()
        self.mutants.append(mutant(Form.EXPRESSION, ("a + 1", "a * 1"), operator="other"))
        well, text = self.report()
        self.assertFalse(well)
        self.assertIn("1 of 4 mutants have not been run to the end", text)
        self.assertNotIn("%", text)
        self.assertEqual(self.page.read_text(), before)

    def test_what_is_listed_as_equal_has_to_be_looked_at_to_the_end(self):
        self.finish()
        for build in mutate.BUILDS:
            known = dict(self.results.known)
            self.results.known.pop((self.mutants[1].id, build))
            self.assertIn("1 of 3 mutants", self.report()[1])
            self.results.known = known

    def test_the_page_gets_a_table_that_adds_up(self):
        self.finish()
        well, _ = self.report()
        self.assertTrue(well)
        page = self.page.read_text()
        self.assertIn("| op | 2 | 1 | 1 | 0 | 0 |", page)
        self.assertIn("| all | 3 | 2 | 1 | 0 | 0 |", page)
        self.assertTrue(page.startswith("before\n") and page.endswith("<!-- end -->\nbehind\n<!-- end -->\n"))
        self.assertNotIn("old", page)

    def test_an_entry_that_is_noticed_fails_the_run(self):
        self.finish()
        self.results.add(self.mutants[1], "observed", "killed", suite.Test("B.b", [], "", {}, "b"), "failed")
        well, text = self.report()
        self.assertFalse(well)
        self.assertIn(f"listed as equal, but was noticed: {self.mutants[1].id}", text)

    def test_a_survivor_fails_the_run_where_all_have_to_be_noticed(self):
        self.finish()
        self.equal = {}
        well, text = self.report()
        self.assertFalse(well)
        self.assertIn("66.7 % of the 3", text)


class OrderTest(unittest.TestCase):
    def test_what_noticed_a_neighbour_comes_first_then_what_is_quick(self):
        tests = [suite.Test(name, [], "", {}, "", seconds)
                 for name, seconds in [("slow", 9), ("quick", 1), ("near", 5)]]
        order = mutate.Order()
        order.learn(mutant(Form.STATEMENT, ("use(a);", "")), "near")
        found = order.sorted(mutant(Form.STATEMENT, ("emit done();", "")), tests)
        self.assertEqual([test.name for test in found], ["near", "quick", "slow"])


def shell(script):
    return suite.Test("T.t", ["sh", "-c", script], "/", {}, "")


class RunnerTest(unittest.TestCase):
    def test_tells_how_a_test_ended(self):
        runner = suite.Runner()
        for script, outcome in [("true", "passed"), ("false", "failed"), ("kill -TRAP $$", "failed"),
                                ("kill -SEGV $$", "crashed")]:
            self.assertEqual(runner.run(shell(script))[0], outcome)
        self.assertEqual(runner.run(shell("sleep 60"), limit=0.1)[0], "timed out")

    def test_switches_the_mutant_on_for_the_one_test_only(self):
        self.assertEqual(suite.Runner().run(shell('[ "$RINGLET_MUTANT" = 7 ]'), 7)[0], "passed")
        self.assertEqual(suite.Runner().run(shell('[ -z "${RINGLET_MUTANT-}" ]'))[0], "passed")

    def test_leaves_no_process_and_no_file_behind(self):
        reader, writer = os.pipe()
        test = suite.Test("T.t", ["sh", "-c", f"echo $TMPDIR >&{writer}; sleep 60 & echo $! >&{writer}"], "/", {}, "")
        with unittest.mock.patch("subprocess.Popen", lambda *given, **named: POPEN(*given, pass_fds=[writer], **named)):
            self.assertEqual(suite.Runner().run(test)[0], "passed")
        os.close(writer)
        with os.fdopen(reader) as pipe:
            # Ends when the last process has gone that could write into it.
            folder, _process = pipe.read().split()
        self.assertFalse(os.path.exists(folder))

    def test_stopping_ends_what_runs(self):
        runner = suite.Runner()
        found = []

        def run():
            try:
                runner.run(shell("sleep 60"))
            except suite.Stopped:
                found.append("stopped")

        thread = threading.Thread(target=run)
        thread.start()
        while not runner.running:
            thread.join(0.01)
        runner.stop()
        thread.join(30)
        self.assertEqual(found, ["stopped"])
        self.assertRaises(suite.Stopped, runner.run, shell("true"))

    def test_a_failure_counts_only_when_the_test_passes_without_the_mutant(self):
        runner = suite.Runner()
        test, how = suite.try_mutant(runner, [shell("true"), shell('[ -z "${RINGLET_MUTANT-}" ]')], 3)
        self.assertEqual((test.command[2][:4], how), ("[ -z", "failed"))
        self.assertIsNone(suite.try_mutant(runner, [shell("true")], 3))
        self.assertEqual(suite.try_mutant(runner, [shell("false")], 0)[1], "failed")
        self.assertRaises(RuntimeError, suite.try_mutant, runner, [shell("false")], 3)


POPEN = subprocess.Popen

if __name__ == "__main__":
    sys.exit(unittest.main())
