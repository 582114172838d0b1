#!/usr/bin/env python3
"""What the marked language makes of outputs: the English, and what is marked or not by mistake."""

import unittest

import case_files
import marked_language

LABEL = "Allow Auto Reissue Certificate Validity"
USAGE = "\nUSAGE:\n\nakhostmgmt ...\n"


class Outputs(unittest.TestCase):
    language = marked_language.Marked()

    def assert_english(self, wanted, printed):
        self.assertEqual((wanted.encode(), []), self.language.plain("stdout", printed.encode()))

    def assert_wrong(self, reason, printed):
        _, problems = self.language.plain("stdout", printed.encode())
        self.assertEqual(1, len(problems), problems)
        self.assertIn(f"stdout: {reason}", problems[0])

    def test_marks_are_taken_out(self):
        self.assert_english("Unknown run time error.\n", "«Unknown run time error.»\n")
        self.assert_english("x is successfully updated.\n", "«x is successfully updated.»\n")
        self.assert_english("Exit Status 5930: x", "Exit Status 5930: x")

    def test_a_filled_in_text_may_hold_anything(self):
        text = "a\nb is successfully mapped to \t."
        self.assert_english(text, f"«{text}»")

    def test_a_label_is_filled_up_to_its_column(self):
        self.assert_english(f"\n{'Host':40} : h", f"\n{'«Host»':38} : h")
        self.assert_english(f"\n{LABEL:40} : ", f"\n«{LABEL[:35]}»  : ")
        self.assert_english(f"{'Conflict':12}{'Shared':11}|", f"{'«Conflict»':10}{'«Shared»':9}|")

    def test_a_label_without_a_column_is_not_filled_up(self):
        self.assert_english("Mapped Names\n", "«Mapped Names»\n")

    def test_what_is_marked_is_in_the_catalogue(self):
        self.assert_wrong("marked, but not in the catalogue", "«Exit Status 7610: »")
        self.assert_wrong("marked, but not in the catalogue", "«x is successfully»")
        self.assert_wrong("marked, but not in the catalogue", f"«{LABEL}»")

    def test_what_is_in_the_catalogue_is_marked(self):
        for printed in (
            "Unknown run time error.\n",
            f"Exit Status 37: {case_files.status_text(37)}\n",
            "x is successfully mapped to y.",
            f"\n{'Host':40} : h",
            f"\n{'Host ID':39} «Mapped Names»",
            f"\nname{'Yes':14}{'No':12}x",
            "«Unknown run time error.» Unknown run time error.",
        ):
            self.assert_wrong("in the catalogue, but not marked", printed)

    def test_fixed_words_need_no_marks(self):
        self.assert_english(f"\n{'Secure':40} : Yes", f"\n{'«Secure»':38} : Yes")
        self.assert_english('{"comment": "Comment"}', '{"comment": "Comment"}')
        example = "akhostmgmt -list -host testhost\n"
        self.assert_english(example, example)


class Expectations(unittest.TestCase):
    language = marked_language.Marked()

    def expected(self, **case):
        texts = case_files.Texts({"top_level_help": f"{USAGE}top"}, None)
        plain = {"environment": {}, "stdout": "", "stderr": ""}
        return self.language.expected(plain | case, texts, {})

    def test_a_request_for_help_becomes_a_failure(self):
        last = "2 akhostmgmt: Return value is: "
        case = self.expected(stdout=USAGE, log=["2 x", f"{last}0"])
        self.assertEqual((144, ["Help requested.\n", ""]), (case["status"], case["stderr"]))
        wanted = ["2 x", "2 akhostmgmt: Command did not complete successfully.", f"{last}144"]
        self.assertEqual(wanted, case["log"])

    def test_the_top_level_help_does_not(self):
        case = self.expected(stdout="{text:top_level_help}")
        self.assertEqual(("", None), (case["stderr"], case.get("status")))

    def test_a_long_failure_is_cut_earlier(self):
        cut = {"hex": (b"x" * 1018 + b"\n").hex()}
        long = "x" * 1018 + "ä" + "y" * 3 + "\n"
        self.assertEqual(cut, self.expected(status=144, stderr=long)["stderr"])

    def test_a_language_of_the_case_s_own_stays(self):
        base = {"name": "x", "files": [], "environment": dict(marked_language.CHOOSING)}
        own = {"files": [{"path": "root/locale/de/LC_MESSAGES/akhostmgmt.mo"}]}
        plain = {"environment": base["environment"] | {"LC_ALL": "C"}}
        spoken = [self.language.speaks(base | each) for each in ({}, own, plain)]
        self.assertEqual([True, False, False], spoken)


if __name__ == "__main__":
    unittest.main()
