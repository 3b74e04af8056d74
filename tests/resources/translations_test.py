"""The tables of texts and the desktop files: complete, well-formed and consistent in every language. Read with parsers
of its own. Takes the source folder and the built pane."""

import pathlib
import re
import sys
import unicodedata
import unittest

SOURCES = pathlib.Path(sys.argv.pop(1))
PANE = pathlib.Path(sys.argv.pop(1))

LANGUAGES = {"ar", "de", "en", "es", "fr", "it", "ja", "ko", "nl", "pl", "pt_BR", "ru", "zh-Hans", "zh-Hant"}
WRITTEN_FROM_THE_RIGHT = {"ar"}
# The language in the names that desktop files give their entries.
DESKTOP_LANGUAGES = {"zh-Hans": "zh_CN", "zh-Hant": "zh_TW"}
DESKTOP_FILES = ["hosts/window/kelvo-touch-display.desktop",
                 "peers/status-bar/kelvo-touch-display-status-bar.desktop.in",
                 "peers/calibration/kelvo-touch-display-calibration.desktop.in"]
TRANSLATED_ENTRIES = {"Name", "GenericName", "Comment", "Keywords"}

# Names, which may stand as they are in any language.
NAMES = {"Product.Name", "PreferenceFolderName", "MissionControl", "AppExposé", "Launchpad"}
# What is on the screen at once, so that one shortcut may not stand for two.
SHOWN_TOGETHER = [
    {"Device.Label", "StatusMenu.Show"},
    {"Tab.Label", "StatusMenu.Show", "Touch.RightClick.Switch"},
    {"Tab.Label", "StatusMenu.Show", "Calibration.Automatic", "Calibration.Manual", "Calibration.Width",
     "Calibration.Height", "Calibration.Apply"},
]
# The letters that are not joined to the next one.
UNJOINED_IN_ARABIC = "اأإآدذرزوؤةىء"
# By what each script of the world outside of Latin letters is told.
SCRIPTS = {"ar": "ARABIC", "ja": "HIRAGANA|KATAKANA|CJK", "ko": "HANGUL", "ru": "CYRILLIC", "zh-Hans": "CJK",
           "zh-Hant": "CJK"}

BLANK = re.compile(r"(?:\s|/\*.*?\*/)*", re.DOTALL)
ENTRY = re.compile(r'"((?:[^"\\]|\\.)+)"\s*=\s*"((?:[^"\\]|\\.)*)"\s*;', re.DOTALL)
SENTENCE_ENDS = {".": ".。", ":": ":：", "?": "?？؟"}


def entries_of(path):
    """The entries of a table in their order. Anything else than entries and comments in it is an error."""
    text = path.read_bytes().decode("utf-8", errors="strict")
    entries = []
    place = BLANK.match(text).end()
    while place < len(text):
        entry = ENTRY.match(text, place)
        if not entry:
            raise ValueError(f"{path}: no entry: {text[place:place + 40]!r}")
        entries.append((entry[1], entry[2]))
        place = BLANK.match(text, entry.end()).end()
    return entries


def mnemonics(text):
    return re.findall(r"&(\w)", text.lower())


def gesture_section(entries):
    """The keys of the gestures, and those of how they are done, as the English table lists them."""
    keys = [key for key, _ in entries]
    gestures = keys[keys.index("SecondaryClick"):keys.index("ClickOrTapWithTwoFingers")]
    actions = keys[keys.index("ClickOrTapWithTwoFingers"):keys.index("SpreadWithThumbAndThreeFingers") + 1]
    return gestures, actions


class Tables(unittest.TestCase):
    def setUp(self):
        self.entries = {folder.stem: entries_of(folder / "Localizable.strings")
                        for folder in (SOURCES / "Resources").glob("*.lproj")}
        self.tables = {language: dict(entries) for language, entries in self.entries.items()}
        self.english = self.tables["en"]

    def check_texts(self, check):
        """Checks every text of every language, beside the English one."""
        for language, table in sorted(self.tables.items()):
            for key, text in table.items():
                with self.subTest(language=language, key=key):
                    check(language, key, text, self.english[key])

    def test_there_is_one_for_each_language(self):
        self.assertEqual(set(self.tables), LANGUAGES)

    def test_each_has_every_key_of_english_once_and_in_its_order(self):
        for language, entries in self.entries.items():
            with self.subTest(language=language):
                self.assertEqual([key for key, _ in entries], [key for key, _ in self.entries["en"]])
                self.assertEqual(len(self.tables[language]), len(entries))

    def test_no_text_is_empty_or_has_blanks_around_it(self):
        def check(language, key, text, english):
            self.assertTrue(text)
            self.assertEqual(text, text.strip())

        self.check_texts(check)

    def test_texts_are_composed_characters(self):
        def check(language, key, text, english):
            self.assertTrue(unicodedata.is_normalized("NFC", key + text))

        self.check_texts(check)

    def test_placeholders_and_line_ends_are_those_of_english(self):
        def check(language, key, text, english):
            self.assertEqual(re.findall(r"%.|\\.", text), re.findall(r"%.|\\.", english))

        self.check_texts(check)

    def test_sentences_end_as_in_english(self):
        def check(language, key, text, english):
            last = re.sub(r"\(&\w\)", "", text)[-1]
            if english[-1] in SENTENCE_ENDS:
                self.assertIn(last, SENTENCE_ENDS[english[-1]])
            else:
                self.assertNotIn(last, ".。:：?？؟")

        self.check_texts(check)

    def test_texts_are_translated(self):
        def check(language, key, text, english):
            if language == "en" or key in NAMES:
                return
            self.assertFalse(text == english and len(text) > 15)
            if language in SCRIPTS and re.search("[a-z]{2}", english):
                self.assertTrue(any(re.match(SCRIPTS[language], unicodedata.name(c, "")) for c in text))

        self.check_texts(check)

    def test_shortcuts_are_where_english_has_them(self):
        def check(language, key, text, english):
            self.assertEqual(len(mnemonics(text)), len(mnemonics(english)))

        self.check_texts(check)

    def test_shortcuts_in_arabic_do_not_tear_words_apart(self):
        """A letter is underlined by itself, so that it must be joined to neither neighbour."""
        for key, text in self.tables["ar"].items():
            for found in re.finditer(r"&(\w)", text):
                before = re.sub(r"[\u064b-\u0652]", "", text[:found.start()])[-1:]
                after = text[found.end():][:1]
                with self.subTest(key=key):
                    self.assertTrue(not before.isalpha() or before in UNJOINED_IN_ARABIC)
                    self.assertTrue(not after.isalpha() or found.group(1) in UNJOINED_IN_ARABIC)

    def test_no_two_shortcuts_on_the_screen_are_the_same(self):
        for language, table in self.tables.items():
            for keys in SHOWN_TOGETHER:
                letters = [letter for key in keys for letter in mnemonics(table[key])]
                with self.subTest(language=language, keys=keys):
                    self.assertEqual(sorted(set(letters)), sorted(letters))

    def test_gestures_and_what_is_done_for_them_are_told_apart(self):
        for language, table in self.tables.items():
            for keys in gesture_section(self.entries["en"]):
                with self.subTest(language=language):
                    self.assertEqual(len({table[key] for key in keys}), len(keys))

    def test_folder_of_the_files_is_the_same_in_every_language(self):
        self.assertEqual({table["PreferenceFolderName"] for table in self.tables.values()}, {"KelvoTouchDisplay"})

    def test_each_says_which_way_it_is_written(self):
        for language, table in self.tables.items():
            with self.subTest(language=language):
                self.assertEqual(table["Layout.Direction"], "RTL" if language in WRITTEN_FROM_THE_RIGHT else "LTR")

    def test_keywords_are_a_list(self):
        for table in self.tables.values():
            self.assertRegex(table["Pane.Keywords"], r"^([^;\s][^;]*;){5,}$")

    def test_built_pane_has_every_table_as_it_is(self):
        for language in LANGUAGES:
            built = PANE / f"Contents/Resources/{language}.lproj/Localizable.strings"
            source = SOURCES / f"Resources/{language}.lproj/Localizable.strings"
            self.assertEqual(built.read_bytes(), source.read_bytes())


class DesktopFiles(unittest.TestCase):
    def entries(self, name):
        lines = (SOURCES / name).read_text(encoding="utf-8").splitlines()
        pairs = [line.split("=", 1) for line in lines if "=" in line]
        self.assertEqual(len(dict(pairs)), len(pairs), "an entry stands twice")
        return dict(pairs)

    def test_what_people_read_is_in_every_language(self):
        for name in DESKTOP_FILES:
            entries = self.entries(name)
            for entry in TRANSLATED_ENTRIES & set(entries):
                translated = {f"{entry}[{DESKTOP_LANGUAGES.get(language, language)}]" for language in LANGUAGES - {"en"}}
                with self.subTest(file=name, entry=entry):
                    self.assertEqual({key for key in entries if key.startswith(f"{entry}[")}, translated)
                    self.assertTrue(all(entries[key].strip() for key in translated))

    def test_window_is_called_as_the_tables_call_the_pane(self):
        entries = self.entries(DESKTOP_FILES[0])
        for language in LANGUAGES:
            table = dict(entries_of(SOURCES / f"Resources/{language}.lproj/Localizable.strings"))
            place = "" if language == "en" else f"[{DESKTOP_LANGUAGES.get(language, language)}]"
            for entry, key in {"Name": "Pane.Name", "Comment": "Pane.Description", "Keywords": "Pane.Keywords"}.items():
                with self.subTest(language=language, entry=entry):
                    self.assertEqual(entries[entry + place], table[key])

    def test_pane_is_not_called_as_the_desktops_own_page_for_touchscreens(self):
        for language in LANGUAGES:
            table = dict(entries_of(SOURCES / f"Resources/{language}.lproj/Localizable.strings"))
            with self.subTest(language=language):
                self.assertIn("Kelvo", table["Pane.Name"])
                self.assertEqual(table["Window.Title"], table["Pane.Name"])


if __name__ == "__main__":
    unittest.main()
