#!/usr/bin/env python3
"""The site: is every page there and reached, does every link lead to something, is code coloured, does the search find, and
does nothing of it ask a network for anything?  site_test.py SOURCE"""
import html.parser
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

SOURCE = pathlib.Path(sys.argv.pop())
# What a browser loads by itself, as against what a person may follow.
LOADED = {("script", "src"), ("img", "src"), ("link", "href"), ("iframe", "src"), ("source", "src"), ("object", "data"), ("use", "href"),
          ("video", "src"), ("audio", "src"), ("embed", "src"), ("image", "href"), ("image", "xlink:href")}
FOREIGN = re.compile(r"(?:[a-z]+:)?//|[a-z]+:(?!//)", re.I)


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loaded, self.classes, self.code, self.texts = set(), [], [], set(), 0, []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        if "id" in attributes:
            if attributes["id"] in self.anchors:
                self.links.append("#twice the same anchor: " + attributes["id"])
            self.anchors.add(attributes["id"])
        for name, value in attrs:
            if (tag, name) in LOADED:
                self.loaded.append(value)
            elif (tag, name) == ("a", "href"):
                self.links.append(value)
        if tag == "span":
            self.classes.update((attributes.get("class") or "").split())

    def handle_data(self, data):
        self.texts.append(data)


def pages(site):
    return {path: Page(path) for path in sorted(site.rglob("*.html"))}


def target(path, link):
    place, _, anchor = link.partition("#")
    return ((path.parent / urllib.parse.unquote(place)).resolve() if place else path), urllib.parse.unquote(anchor)


def deadlinks(read):
    """Links that lead to no file, or to no anchor in a page."""
    for path, page in read.items():
        for link in [*page.links, *page.loaded]:
            if FOREIGN.match(link):
                continue
            file, anchor = target(path, link)
            if not file.is_file() or (anchor and file.suffix == ".html" and anchor not in read[file].anchors):
                yield "%s: %s" % (path.name, link)


def foreign(site, read):
    """What would be loaded from elsewhere: by a page, a style, a picture or a script."""
    for path, page in read.items():
        yield from ("%s: %s" % (path.name, link) for link in page.loaded if FOREIGN.match(link) and not link.startswith("data:"))
    for path in [path for path in site.rglob("*") if path.suffix in (".css", ".svg")]:
        text = path.read_text(encoding="utf-8")
        yield from ("%s: %s" % (path.name, found) for found in re.findall(r"@import.*|url\(\s*['\"]?(?!#|data:)[^)]*\)|(?:href|src)=\"[^#][^\"]*", text))
    for path in site.rglob("*.js"):
        if path.parent.name != "search":  # that one is data
            yield from ("%s: %s" % (path.name, found) for found in
                        re.findall(r"https?://\S*|\bfetch\(|XMLHttpRequest|importScripts|\bWorker\b|\bimport\b.*", path.read_text(encoding="utf-8")))


class Checks(unittest.TestCase):
    """Would the checks see anything?"""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="morvik-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name).resolve()

    def site(self, body, **others):
        (self.folder / "a.html").write_text('<h1 id="top">x</h1>' + body)
        for name, text in others.items():
            (self.folder / name.replace("_", ".")).write_text(text)
        return pages(self.folder)

    def test_dead_links(self):
        for body, dead in [('<a href="a.html#top">', 0), ('<a href="#top">', 0), ('<a href="https://example.org/x#y">', 0), ('<a href="b.html">', 1),
                           ('<a href="#other">', 1), ('<img src="c.svg">', 1), ('<p id="top">', 1)]:
            self.assertEqual(len(list(deadlinks(self.site(body)))), dead, body)

    def test_foreign(self):
        for body, others, count in [("", {}, 0), ('<script src="https://example.org/x.js"></script>', {}, 1), ('<link href="//example.org/x.css">', {}, 1),
                                    ('<a href="https://example.org">', {}, 0), ("", {"x_css": "@import 'x';"}, 1), ("", {"x_css": "a{b:url(//x)}"}, 1),
                                    ("", {"x_css": "a{}", "x_js": "fetch('x')"}, 1), ("", {"x_js": "'https://x'"}, 1)]:
            read = self.site(body, **others)
            self.assertEqual(len(list(foreign(self.folder, read))), count, (body, others))
            for name in others:
                (self.folder / name.replace("_", ".")).unlink()


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="morvik-")
        cls.addClassCleanup(scratch.cleanup)
        cls.site = pathlib.Path(scratch.name).resolve() / "site"
        done = subprocess.run([SOURCE / "tools" / "python", "mkdocs", "pygments", "--", "-B", SOURCE / "web" / "build", cls.site],
                              capture_output=True, text=True, check=False)
        if done.returncode == 77:
            raise unittest.SkipTest("mkdocs is not installed: tools/need docs")
        assert done.returncode == 0, done.stdout + done.stderr
        assert "WARNING" not in done.stderr, done.stderr
        cls.pages = pages(cls.site)
        cls.index = json.loads((cls.site / "search" / "index.js").read_text(encoding="utf-8").removeprefix("searchIndex = ").rstrip(";\n"))

    def test_every_page_is_there_and_reached(self):
        wanted = {self.site / path.relative_to(SOURCE).with_suffix(".html") for path in (SOURCE / "docs").glob("*.md")}
        wanted |= {self.site / name for name in ("index.html", "CHANGELOG.html", "tests/index.html", "packaging/index.html")}
        self.assertLessEqual(wanted, set(self.pages))
        reached, open_ = set(), [self.site / "index.html"]
        while open_:
            path = open_.pop()
            if path not in reached:
                reached.add(path)
                open_ += [target(path, link)[0] for link in self.pages[path].links
                          if not FOREIGN.match(link) and target(path, link)[0] in self.pages]
        self.assertEqual(reached, set(self.pages))

    def test_links_and_anchors(self):
        self.assertGreater(sum(len(page.links) for page in self.pages.values()), 1000)
        self.assertEqual(list(deadlinks(self.pages)), [])

    def test_nothing_comes_from_elsewhere(self):
        self.assertEqual(list(foreign(self.site, self.pages)), [])

    def test_every_fence_became_code(self):
        for path, page in self.pages.items():
            self.assertNotIn("```", "".join(page.texts), path)

    def test_code_is_coloured_by_the_own_grammar(self):
        session, script = ((self.site / name).read_text(encoding="utf-8") for name in ("docs/language.html", "index.html"))
        # A session: the prompt, what is typed with its tokens, what is shown. A script: all of it.
        self.assertIn('<span class="gp">Morvik [0]&gt; </span><span class="m">1</span> <span class="m">2</span> <span class="m">3</span> '
                      '<span class="o">SWAP</span> <span class="k">.</span>', session)
        self.assertIn('<span class="go"> 1 -2 2.5 1000</span>', session)
        self.assertIn('<span class="nl">@pay</span> <span class="o">SET</span>', script)
        style = (self.site / "style.css").read_text(encoding="utf-8")
        plain = {"p", "w", "nv", "n", "nn", "mh", ""}  # these look as text does
        found = set().union(*(page.classes for path, page in self.pages.items() if path.parent.name == "docs"))
        self.assertGreaterEqual(found, {"gp", "go", "k", "o", "m", "s", "c", "nl", "no"})
        for name in found - plain:
            self.assertRegex(style, r"\.code \.%s[ ,]" % name)

    def test_light_and_dark(self):
        style = (self.site / "style.css").read_text(encoding="utf-8")
        blocks = re.findall(r":root[^{]*\{([^}]*)\}", style)
        names = [re.findall(r"(--\w+):", block) for block in blocks]
        self.assertEqual(len(blocks), 3)
        self.assertTrue(names[0] and names[0] == names[1] == names[2])
        self.assertEqual(blocks[1].split(), blocks[2].split())  # as the button says, and as the system asks
        self.assertEqual(set(re.findall(r"var\((--\w+)\)", style)), set(names[0]))
        for page in self.pages.values():
            self.assertIn("theme", page.anchors)

    def test_what_is_searched_is_there(self):
        self.assertGreater(len(self.index), 500)
        for entry in self.index:
            file, anchor = target(self.site / "index.html", entry["location"])
            self.assertIn(anchor, self.pages[file].anchors, entry["location"])

    def found(self, *asked):
        if not shutil.which("node"):
            self.skipTest("node is not installed: tools/need editors")
        line = "const page = require(process.argv[1]); let text = ''; process.stdin.on('data', (part) => text += part).on('end', () => {" \
               "const index = JSON.parse(text); console.log(JSON.stringify(process.argv.slice(2).map((one) => page.find(index, one, 5)))); });"
        done = subprocess.run(["node", "-e", line, self.site / "page.js", *asked], input=json.dumps(self.index), capture_output=True, text=True,
                              check=True)
        return [[entry["location"] for entry in some] for some in json.loads(done.stdout)]

    def test_the_search_finds(self):
        word, spelling, sign, row, words, nothing = self.found("sqrt", "exch", "×", "#SQRT2", "writing values", "zzyzx")
        for found, wanted in ((word, "#sqrt"), (spelling, "#swap"), (sign, "#multiply"), (row, "#row-23SQRT2")):
            self.assertEqual(found[:1], ["docs/words.html" + wanted])
        self.assertIn("docs/language.html#writing-values", words)
        self.assertEqual(nothing, [])


if __name__ == "__main__":
    unittest.main()
