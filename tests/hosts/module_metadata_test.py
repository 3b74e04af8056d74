"""What System Settings shows of the module before it loads it, in the languages of the bundle's string tables."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = sys.argv.pop(1)

ENGLISH = '''/* A comment with "Pane.Name" = "Wrong"; */
"Pane.Name" = "Touch \\"Display\\"";
"Pane.Description" = "Set it up";
"Pane.Keywords" = "touch;display;";
"Other" = "Not there";
'''


class ModuleMetadata(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kelvo-test-")))
        self.tables = []

    def add_table(self, language, contents):
        self.tables.append(self.folder / f"{language}.lproj/Localizable.strings")
        self.tables[-1].parent.mkdir()
        self.tables[-1].write_text(contents, encoding="utf-8")

    def write(self):
        template, result = self.folder / "template.json", self.folder / "result.json"
        template.write_text('{"KPlugin": {"Icon": "display"}, "X-Kept": true}', encoding="utf-8")
        finished = subprocess.run([sys.executable, "-B", SCRIPT, template, result, *self.tables],
                                  capture_output=True, text=True, check=False)
        return finished, result

    def test_each_language_has_its_texts_under_the_desktops_name_for_it(self):
        self.add_table("en", ENGLISH)
        self.add_table("zh-Hans", '"Pane.Name" = "触摸屏";\n"Pane.Keywords" = "触摸;手势;";\n')
        self.add_table("zh-Hant", '"Pane.Name" = "觸控螢幕";\n')
        self.add_table("pt_BR", '"Pane.Description" = "Configurar";\n')
        self.add_table("de", '"Tab.Label" = "Einstellungen";\n')

        finished, result = self.write()

        self.assertEqual((finished.returncode, finished.stderr), (0, ""))
        self.assertEqual(json.loads(result.read_text(encoding="utf-8")), {
            "KPlugin": {
                "Icon": "display", "Name": 'Touch "Display"', "Description": "Set it up", "Name[zh_CN]": "触摸屏",
                "Name[zh_TW]": "觸控螢幕", "Description[pt_BR]": "Configurar"},
            "X-Kept": True,
            "X-KDE-Keywords": "touch,display",
            "X-KDE-Keywords[zh_CN]": "触摸,手势"})

    def test_a_text_that_is_missing_in_english_is_an_error_that_names_it(self):
        self.add_table("en", '"Pane.Name" = "Touch Display";\n')

        finished, result = self.write()

        self.assertEqual(finished.returncode, 1)
        self.assertIn("Pane.Description", finished.stderr)
        self.assertFalse(result.exists())


if __name__ == "__main__":
    unittest.main()
