"""Whether what the documents refer to is there: links.py SOURCES

Every relative link and picture of a Markdown file must lead to a file of the source
tree, and its fragment to a heading of it."""

import pathlib
import re
import sys
import unittest

SOURCES = pathlib.Path(sys.argv.pop())
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
FENCED = re.compile(r"^```.*?^```$", re.DOTALL | re.MULTILINE)
ELSEWHERE = re.compile(r"[a-z]+:")


def documents():
    return [path for path in sorted(SOURCES.rglob("*.md"))
            if "build" not in path.relative_to(SOURCES).parts]


def prose(path):
    """The document without its blocks of code."""
    return FENCED.sub("", path.read_text(encoding="utf-8"))


def headings(path):
    """The fragments under which a document's headings are reached."""
    titles = re.findall(r"^#+ (.*)$", prose(path), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def links():
    return [(document, link) for document in documents() for link in LINK.findall(prose(document))]


class Documents(unittest.TestCase):
    def test_refer_to_files_and_headings_that_are_there(self):
        seen = 0
        for document, link in links():
            if ELSEWHERE.match(link):
                continue
            seen += 1
            file, _, heading = link.partition("#")
            target = (document.parent / file).resolve() if file else document
            with self.subTest(document=str(document.relative_to(SOURCES)), link=link):
                self.assertTrue(target.exists(), "There is no such file.")
                self.assertTrue(target.is_relative_to(SOURCES.resolve()), "It lies elsewhere.")
                self.assertNotIn("build", target.relative_to(SOURCES.resolve()).parts,
                                 "A fresh clone does not have it.")
                if heading:
                    self.assertIn(heading, headings(target), "There is no such heading.")
        self.assertGreater(seen, 10, "The links were not understood.")

    def test_hold_every_guide_within_reach_of_the_front_page(self):
        reached, waiting = set(), [SOURCES / "README.md"]
        while waiting:
            document = waiting.pop()
            if document in reached:
                continue
            reached.add(document)
            waiting += [(document.parent / link.partition("#")[0]).resolve()
                        for link in LINK.findall(prose(document))
                        if re.search(r"\.md(#|$)", link) and not ELSEWHERE.match(link)]
        self.assertEqual([path for path in documents() if path.resolve() not in
                          {each.resolve() for each in reached}], [])

    def test_show_the_program_that_is_tested(self):
        guide = (SOURCES / "Documentation" / "animation.md").read_text(encoding="utf-8")
        program = SOURCES / "Tests" / "Animation" / "Package" / "ten-lines.cpp"
        self.assertIn(f"```cpp\n{program.read_text(encoding='utf-8')}```", guide)


if __name__ == "__main__":
    unittest.main(verbosity=2)
