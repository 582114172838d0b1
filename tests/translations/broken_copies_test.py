#!/usr/bin/env python3
"""Breaks a copy of the catalogues and the code in each way that scripts/translations is to find."""

import argparse
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
CHECK = PROJECT / "scripts" / "translations"
COPIED = ("cmdframework", "driver", "hostmgmt", "platform", "po")
GOOD = "The translations are complete.\n"
CODE, TEMPLATE, GERMAN, JAPANESE = (
    "hostmgmt/operations/AkHostMgmtAdd.cpp", "po/akhostmgmt.pot", "po/de.po", "po/ja.po",
)  # fmt: skip
OTHER_TEMPLATE = "akhostmgmt.pot does not say what the code says"

# What is broken: the file, what stands there, what comes in its place, and what is said of it.
BREAKS = {
    "a text of the code": (CODE, "%s is successfully mapped", "%s is mapped", OTHER_TEMPLATE),
    "a new text in the code": (
        CODE, "}  // namespace\n", 'constexpr auto x = catalogued("SmeHmm9999N", "New");\n}\n',
        OTHER_TEMPLATE),
    "the template": (TEMPLATE, 'msgid "Yes"', 'msgid "Yea"', OTHER_TEMPLATE),
    "a text without translation": (GERMAN, 'msgstr "Ja"', 'msgstr ""', "untranslated"),
    "a fuzzy translation": (GERMAN, '#, c-format\nmsgctxt "SmeHmm0037N"',
                            '#, fuzzy, c-format\nmsgctxt "SmeHmm0037N"', "fuzzy"),
    "an obsolete text": (GERMAN, "", '\n#~ msgctxt "Old"\n#~ msgid "Old"\n#~ msgstr "Alt"\n',
                         "obsolete"),
    "a text of nobody": (GERMAN, "", '\nmsgctxt "Old"\nmsgid "Old"\nmsgstr "Alt"\n',
                         "the template differ in Old"),
    "another context": (GERMAN, 'msgctxt "SmeHmm0037N"', 'msgctxt "SmeHmm9037N"',
                        "the template differ in SmeHmm"),
    "the catalogue's syntax": (GERMAN, 'msgstr "Ja"', 'msgstr "Ja', "de.po"),
    "the type of a placeholder": (GERMAN, "Status %d fehl", "Status %s fehl", "msgfmt --check"),
    "a placeholder too many": (GERMAN, "Host-ID %s zugeordnet", "Host-ID %s %s zugeordnet",
                               "msgfmt --check"),
    "a per cent sign in a format": (GERMAN, '"Es wurde eine ung', '"100 % ung', "msgfmt --check"),
    "a placeholder that only msgfmt takes": (GERMAN, "Status %d fehl", "Status %9999d fehl",
                                             "the tool would not use"),
    "a leading blank": (GERMAN, '" Weitere', '"Weitere', "blanks or newlines at an end"),
    "a trailing newline": (GERMAN, '[Operation] -help\\n"', '[Operation] -help"', "msgfmt --check"),
    "a prompt's trailing blank": (GERMAN, 'nein (y/n): "', 'nein (y/n):"',
                                  "blanks or newlines at an end"),
    "a paragraph": (GERMAN, '"\\n"\n"Beispiele:', '"Beispiele:', "other paragraphs"),
    "a newline in a sentence": (GERMAN, "Primärserver bekannt; ", "Primärserver bekannt;\\n",
                                "other paragraphs"),
    "a control character": (GERMAN, "Primärserver bekannt", "Primärserver\\r bekannt",
                            "a control character"),
    "an option": (GERMAN, "mit -server oder", "mit -Server oder", "not the same fixed words"),
    "the command": (GERMAN, "Mit dem Befehl akhostmgmt werden", "Mit dem Befehl werden",
                    "not the same fixed words"),
    "an answer": (GERMAN, "Geben Sie 'y' für", "Geben Sie 'j' für", "not the same fixed words"),
    "an option in a synopsis": (GERMAN, "{-hm | -mappingname} <Z", "{-hm | -Zuordnung} <Z",
                                "more of a synopsis than the words"),
    "a tab of a synopsis": (GERMAN, '"\\t {-hm | -mappingname} <Z', '"  {-hm | -mappingname} <Z',
                            "more of a synopsis than the words"),
    "a value of a synopsis": (GERMAN, "<0/1> } [{-r | -reason} <G", "<0> } [{-r | -reason} <G",
                              "more of a synopsis than the words"),
    "a word of a synopsis": (GERMAN, "<Grund>", "<>", "more of a synopsis than the words"),
    "a help request": (GERMAN, 'msgstr "Help requested."', 'msgstr "Hilfe angefordert."',
                       "-help would end with status 144"),
    "a label's length": (GERMAN, 'msgstr "Betriebssystem"',
                         'msgstr "Betriebssystem, das hier auf dem Host läuft"', "room for 39"),
    "a failure's length": (GERMAN, "Unbekannter Laufzeitfehler.", "x" * 1024, "room for 1023"),
    "a wide line": (GERMAN, "werden die Zuordnungen von", "werden hier alle die Zuordnungen von",
                    "wider than 80 columns"),
    "a wide line in letters of two columns": (JAPANESE, "マッピングの追加、削除、一覧",
                                              "追加、削除、" * 6, "wider than 80 columns"),
    "a head without the blanks that line it up": (
        JAPANESE, "自動検出           ", "自動検出", "does not line up"),
    "a label with a blank of another kind": (
        JAPANESE, "コメント\u00a0", "コメント ", "does not line up"),
    "a head as wide as its column": (GERMAN, 'msgstr "Gemeinsam"', 'msgstr "Gemeinsam da"',
                                     "has no blank before the next, 11 columns on"),
    "Yes and No that do not line up": (JAPANESE, 'msgid "No"\nmsgstr "なし"',
                                       'msgid "No"\nmsgstr "いいえ"',
                                       "bytes and columns do not differ as in"),
    "Yes too wide": (GERMAN, 'msgstr "Ja"', 'msgstr "Ja, gewiss!"', "wider than the narrowest"),
    "a language that is not named": ("po/LINGUAS", "de\n", "", "LINGUAS"),
    "a language without a catalogue": ("po/LINGUAS", "fr\n", "es\nfr\n", "LINGUAS"),
}  # fmt: skip


class BrokenCopies(unittest.TestCase):
    program = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="akhostmgmt_translations_")
        cls.addClassCleanup(folder.cleanup)
        cls.copy = pathlib.Path(folder.name)
        for name in COPIED:
            shutil.copytree(PROJECT / name, cls.copy / name)

    def check(self, *options):
        command = [sys.executable, CHECK, "--root", self.copy, "--unfit", self.program, *options]
        result = subprocess.run(command, capture_output=True, encoding="utf-8")
        return result.returncode, result.stdout + result.stderr

    def test_the_copy_is_good(self):
        self.assertEqual((0, GOOD), self.check())

    def test_each_break_is_found(self):
        for name, (path, old, new, said) in BREAKS.items():
            with self.subTest(name):
                file = self.copy / path
                good = file.read_text("utf-8")
                self.assertIn(old, good)
                file.write_text(good.replace(old, new, 1) if old else good + new, "utf-8")
                try:
                    status, found = self.check()
                finally:
                    file.write_text(good, "utf-8")
                self.assertEqual(1, status)
                self.assertIn(said, found)

    def test_an_identifier_has_one_text(self):
        file = self.copy / CODE
        good = {path: path.read_text("utf-8") for path in (file, *(self.copy / "po").glob("*.po*"))}
        added = 'constexpr auto x = catalogued("SmeHmm0003N", "Other");\n}  // namespace\n'
        file.write_text(good[file].replace("}  // namespace\n", added, 1), "utf-8")
        try:
            status, found = self.check("--update")
        finally:
            for path, text in good.items():
                path.write_text(text, "utf-8")
        self.assertEqual(1, status)
        self.assertIn("SmeHmm0003N has more than one text", found)

    def test_an_update_changes_nothing_where_nothing_has_changed(self):
        good = {path: path.read_text("utf-8") for path in (self.copy / "po").glob("*.po*")}
        self.assertEqual((0, GOOD), self.check("--update"))
        self.assertEqual(good, {path: path.read_text("utf-8") for path in good})


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--unfit", required=True, help="finds texts that the tool would not use")
    options, rest = parser.parse_known_args()
    BrokenCopies.program = options.unfit
    unittest.main(argv=[sys.argv[0], *rest])
