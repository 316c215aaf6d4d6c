"""The manual as a musician gets it: a page and a document that say the same, and
nothing that the effect and the program do not say as well."""

import os
import pathlib
import re
import subprocess
import unittest
import xml.etree.ElementTree

SOURCE = pathlib.Path(os.environ["PARVANE_SOURCE"])
RESOURCES = pathlib.Path(os.environ["PARVANE_RESOURCES"])
HTML = "{http://www.w3.org/1999/xhtml}"
SOURCE_FOLDERS = ("Audio Engine", "Platform", "Support", "User Interface")
# Shorter pieces of a line stand anywhere and tell nothing.
SHORTEST_PIECE = 6


def one_line(text):
    return " ".join(text.split())


def text_of(element):
    return one_line("".join(element.itertext()))


def number(text):
    return float(text.replace("\N{MINUS SIGN}", "-"))


def blocks(turtle, kind):
    """The innermost bracketed parts of a file that are of that kind."""
    return [block for block in re.findall(r"\[([^\[\]]*)\]", turtle) if kind in block]


def value(block, name):
    return re.search(rf'{name} "?([^";\]\s][^";\]]*?)"?\s*(?:;|$)', block).group(1)


class Page(unittest.TestCase):
    """help.html, and what it says about the effect."""

    @classmethod
    def setUpClass(cls):
        # Reading it as XML fails where it is not well-formed.
        cls.page = xml.etree.ElementTree.parse(RESOURCES / "help.html").getroot()

    def table(self, name):
        for table in self.page.iter(HTML + "table"):
            if table.get("class") == name:
                return [[text_of(cell) for cell in row] for row in table.iter(HTML + "tr")]
        return self.fail(f"There is no table '{name}'.")

    def test_its_links_and_pictures_are_there(self):
        names = [each.get("id") for each in self.page.iter() if each.get("id")]
        self.assertEqual(len(names), len(set(names)), "An id stands for two places.")
        addresses = [each.get(attribute) for each in self.page.iter()
                     for attribute in ("href", "src") if each.get(attribute)]
        self.assertGreater(len(addresses), 10)
        for address in addresses:
            with self.subTest(address):
                if address.startswith("#"):
                    self.assertIn(address[1:], names)
                else:
                    self.assertTrue((RESOURCES / address).is_file())

    def test_its_contents_list_the_headings(self):
        headings = [text_of(each) for each in self.page.iter(HTML + "h2")]
        listed = [text_of(each) for each in self.page.find(f".//{HTML}nav").iter(HTML + "a")]
        self.assertGreater(len(listed), 5)
        self.assertEqual(["Contents"] + listed, headings)

    def test_its_pictures_are_drawings_with_a_description(self):
        for picture in self.page.iter(HTML + "img"):
            with self.subTest(picture.get("src")):
                self.assertIsNotNone(picture.get("alt"))
                drawing = xml.etree.ElementTree.parse(RESOURCES / picture.get("src")).getroot()
                self.assertEqual(drawing.tag, "{http://www.w3.org/2000/svg}svg")

    def test_it_names_every_parameter_with_its_range(self):
        turtle = (SOURCE / "Effect" / "parvane.ttl").read_text(encoding="utf-8")
        # A port's marks are brackets within its own.
        turtle = re.sub(r";\s*lv2:scalePoint \[[^\]]*\](\s*,\s*\[[^\]]*\])*", "", turtle)
        controls = blocks(turtle, "lv2:ControlPort")
        inputs = [each for each in controls if "lv2:InputPort" in each]
        shown = {row[0]: row[1:] for row in self.table("parameters")[1:]}
        self.assertEqual(list(shown), [value(each, "lv2:name") for each in inputs])
        for each in inputs:
            if "lv2:toggled" in each:
                continue
            name = value(each, "lv2:name")
            with self.subTest(name):
                least, most, standard = (float(value(each, key)) for key in
                                         ("lv2:minimum", "lv2:maximum", "lv2:default"))
                found = re.match(r"(\S+) to ([\d.]+)", shown[name][0])
                self.assertEqual([number(end) for end in found.groups()], [least, most])
                self.assertEqual(number(re.match(r"[\d.]+", shown[name][1]).group()), standard)
        everything = text_of(self.page)
        for each in controls:
            self.assertIn(value(each, "lv2:name"), everything)

    def test_it_names_every_preset_with_its_values(self):
        turtle = (SOURCE / "Effect" / "presets.ttl").read_text(encoding="utf-8")
        header, *rows = self.table("presets")
        symbols = [name.lower() for name in header[1:]]
        presets = []
        for text in turtle.split("a pset:Preset")[1:]:
            values = dict(re.findall(r'lv2:symbol "(\w+)" ;\s*pset:value (-?[\d.]+)', text))
            self.assertEqual(sorted(values), sorted(symbols))
            presets.append([value(text, "rdfs:label")] +
                           [float(values[symbol]) for symbol in symbols])
        self.assertGreater(len(presets), 0)
        self.assertEqual([[row[0]] + [number(cell) for cell in row[1:]] for row in rows], presets)

    def test_it_registers_an_effect_as_the_program_looks_for_it(self):
        manifest = (SOURCE / "Effect" / "manifest.ttl").read_text(encoding="utf-8")
        example = text_of(self.page.find(f".//{HTML}pre"))
        for key in ("au:type", "au:subtype", "au:manufacturer"):
            statement = re.search(rf'{key} "\w+"', manifest).group()
            self.assertIn(statement, example)
            self.assertIn(statement.split('"')[1], text_of(self.page))
        readme = (SOURCE / "README.md").read_text(encoding="utf-8")
        shown = re.search(r"```turtle\n(.*?)```", readme, re.DOTALL).group(1)
        self.assertEqual(example, one_line(shown))


class LogLines(unittest.TestCase):
    """The lines that the page explains are those that the program writes."""

    @staticmethod
    def literals():
        """The texts in the sources; those that stand side by side are one."""
        found = []
        for folder in SOURCE_FOLDERS:
            for path in (SOURCE / folder).rglob("*.[ch]pp"):
                code = path.read_text(encoding="utf-8")
                code = re.sub(r"^\s*//.*$", "", code, flags=re.MULTILINE)
                for run in re.findall(r'"(?:[^"\\\n]|\\.)*"(?:\s+"(?:[^"\\\n]|\\.)*")*', code):
                    parts = re.findall(r'"((?:[^"\\\n]|\\.)*)"', run)
                    # What the program puts in place of {} differs from time to time.
                    found.extend(one_line(part) for part in "".join(parts).split("{}"))
        return found

    @staticmethod
    def pieces(element):
        """The parts of a line that are always the same."""
        fixed = [element.text or ""] + [each.tail or "" for each in element.iter(HTML + "var")]
        return [one_line(text) for text in fixed]

    def test_every_line_explained_is_written(self):
        page = xml.etree.ElementTree.parse(RESOURCES / "help.html").getroot()
        sections = {section.find(HTML + "h2").get("id"): section
                    for section in page.iter(HTML + "section")}
        lines = list(sections["log"].iter(HTML + "code"))
        self.assertGreater(len(lines), 30)
        literals = self.literals()
        for line in lines:
            pieces = self.pieces(line)
            with self.subTest(text_of(line)):
                self.assertGreaterEqual(max(map(len, pieces)), SHORTEST_PIECE)
                for piece in pieces:
                    self.assertTrue(any(piece in text for text in literals), piece)


class Document(unittest.TestCase):
    """manual.pdf is the page, printed."""

    @classmethod
    def setUpClass(cls):
        cls.path = RESOURCES / "manual.pdf"
        cls.text = one_line(subprocess.run(
            ["pdftotext", "-layout", str(cls.path), "-"], capture_output=True, text=True,
            check=True).stdout)
        cls.page = xml.etree.ElementTree.parse(RESOURCES / "help.html").getroot()

    def information(self):
        lines = subprocess.run(["pdfinfo", str(self.path)], capture_output=True, text=True,
                               check=True).stdout.splitlines()
        return {name: text.strip() for name, _, text in (line.partition(":") for line in lines)}

    def test_it_is_a_document_with_the_pages_headings(self):
        self.assertEqual(self.path.read_bytes()[:5], b"%PDF-")
        headings = [text_of(each) for level in ("h1", "h2", "h3")
                    for each in self.page.iter(HTML + level)]
        self.assertGreater(len(headings), 15)
        for heading in headings:
            with self.subTest(heading):
                self.assertIn(heading, self.text)

    def test_it_has_the_pages_title_and_a_readable_size(self):
        information = self.information()
        self.assertEqual(information["Title"], text_of(self.page.find(f".//{HTML}title")))
        self.assertIn("(A4)", information["Page size"])
        self.assertLess(3, int(information["Pages"]))
        self.assertLess(int(information["Pages"]), 20)

    def test_it_brings_its_fonts_along(self):
        fonts = subprocess.run(["pdffonts", str(self.path)], capture_output=True, text=True,
                               check=True).stdout.splitlines()[2:]
        self.assertGreater(len(fonts), 0)
        for font in fonts:
            # From the end: embedded, subset, unicode, object, generation.
            self.assertEqual(font.split()[-5], "yes", font)

    def test_its_contents_tell_the_pages(self):
        for entry in self.page.find(f".//{HTML}nav").iter(HTML + "a"):
            with self.subTest(text_of(entry)):
                found = re.search(rf"{re.escape(text_of(entry))}[ .]+(\d+)", self.text)
                page = found.group(1)
                on_it = subprocess.run(
                    ["pdftotext", "-f", page, "-l", page, str(self.path), "-"],
                    capture_output=True, text=True, check=True).stdout
                self.assertIn(text_of(entry), one_line(on_it))


if __name__ == "__main__":
    unittest.main(verbosity=2)
