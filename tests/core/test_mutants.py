# SPDX-License-Identifier: MIT

"""tools/mutants.py makes the faults that it should, and leaves the rest of the source alone."""
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
import mutants  # noqa: E402


def changes(source):
    """What each mutant makes of the source, by the kind of the fault."""
    found = {}
    for mutant in mutants.mutants_of("a.cpp", source):
        found.setdefault(mutant.kind, []).append(mutant.source)
    return found


class Mutants(unittest.TestCase):
    def test_a_comparison_moves_by_one_and_a_template_does_not(self):
        self.assertEqual(changes("x = a < b;")["operator"], ["x = a <= b;"])
        self.assertNotIn("operator", changes("std::vector<int> a;"))

    def test_a_logical_operation_is_exchanged_and_a_reference_is_not(self):
        self.assertEqual(changes("f(a && b);")["operator"], ["f(a || b);"])
        self.assertNotIn("operator", changes("f(auto&& a);"))

    def test_a_condition_is_negated_and_a_declared_value_counts_as_false(self):
        self.assertIn("if (!(a)) {}", changes("if (a) {}")["condition"])
        self.assertEqual(changes("if (const auto a = f()) {}")["condition"],
                         ["if (const auto a = f(); false) {}"])

    def test_a_statement_is_removed_and_a_declaration_stays(self):
        self.assertEqual(changes("{ f(a); return; }")["statement"], ["{ ; return; }", "{ f(a); ; }"])
        self.assertNotIn("statement", changes("{ const int a = f(b); }"))

    def test_arguments_trade_places_and_parameters_do_not(self):
        self.assertEqual(changes("f(a, b);")["swap"], ["f(b, a);"])
        self.assertNotIn("swap", changes("void f(int a, int b);"))

    def test_numbers_and_texts_change(self):
        self.assertEqual(changes("a(0.3);")["constant"], ["a(1.3);"])
        self.assertEqual(changes("a(0x7F);")["constant"], ["a(0x80);"])
        self.assertEqual(changes('a("text");')["text"], ['a("");'])

    def test_comments_and_directives_stay(self):
        self.assertEqual(changes("// a < b\n#if A < B\n#endif\n"), {})

    def test_equal_lines_have_different_keys(self):
        keys = [mutant.key for mutant in mutants.mutants_of("a.cpp", "{\nf();\nf();\n}")]
        self.assertEqual(keys, ["a.cpp: f(); => ;", "a.cpp: f(); => ; #2"])


if __name__ == "__main__":
    unittest.main()
