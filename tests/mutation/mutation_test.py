# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What scripts/check mutate is made of, but for the part that needs clang."""

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
from mutants import Edit, Form, Mutant, flat, from_json, number_occurrences, to_json

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
    found = Mutant(file, "f", operator, form, places, 1, edits[0][0], edits[0][1])
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

    def test_keeps_its_id_when_it_moves(self):
        first, second = mutant(Form.EXPRESSION, ("a + 1", "a - 1")), mutant(Form.EXPRESSION, ("a + 1", "a - 1"))
        second.line, second.number = 77, 5
        self.assertEqual(first.id, second.id)
        second.changed = "a * 1"
        self.assertNotEqual(first.id, second.id)

    def test_is_counted_when_another_reads_the_same_and_dropped_when_it_is_the_same(self):
        first, second = mutant(Form.STATEMENT, ("use(a);", "")), mutant(Form.STATEMENT, ("use(a);", ""))
        third = mutant(Form.STATEMENT, ("emit done();", ""))
        third.original = first.original
        self.assertEqual([item.occurrence for item in number_occurrences([first, second, third])], [1, 2])

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

    def test_later_statement_runs_first_and_not_again(self):
        text = self.written(mutant(Form.SWAP, ("use(a);", "emit done();"), ("emit done();", "use(a);"))).text
        self.assertIn("{ if (mutant(1)) { emit done(); } { { use(a); } } }", text)
        self.assertIn("{ if (!mutant(1)) { { emit done(); } } }", text)

    def test_lines_stay_where_they_are(self):
        text = self.written(mutant(Form.SWAP, ("use(a);", "emit done();"), ("emit done();", "use(a);"))).text
        self.assertEqual(text.count("\n"), TEXT.count("\n"))
        self.assertIn("return a + 1;", text.splitlines()[5])

    def test_constants_are_made_at_run_time_when_they_have_mutants(self):
        text = "//\nconstexpr int a = 1;\nconstexpr int b = 2;\n"
        found = Mutant("src/f.h", "-", "op", Form.EXPRESSION, [Edit(21, 22, "2")], 1, "1", "2", number=3)
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
    def test_mutants_are_found_by_their_text(self):
        first, second = mutant(Form.STATEMENT, ("use(a);", "")), mutant(Form.STATEMENT, ("emit done();", ""))
        entries = "\n\n".join(map(equivalents.entry, [first, second]))
        reasons = equivalents.read(f"# Because\n# of this.\n\n{entries}\n")
        found, stale = equivalents.match(reasons, [first])
        self.assertEqual(found, {first.id: "Because of this."})
        self.assertEqual(stale, [equivalents.entry(second)])

    def test_other_text_is_refused(self):
        entry = equivalents.entry(mutant(Form.STATEMENT, ("use(a);", "")))
        for text in [entry, f"# why\n{entry}\n\n{entry}", "# why\nsrc/f.cpp: f: op\n- a",
                     "# why\nsrc/f.cpp: f: op\n+ a\n- b"]:
            with self.assertRaises(ValueError):
                equivalents.read(text)

    def test_the_list_in_the_tree_can_be_read(self):
        equivalents.read((mutate.HERE / "equivalent.txt").read_text(encoding="utf-8"))


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
