#!/usr/bin/env python3
"""Every link between pages leads to a file that is there, and to a heading in it."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BLOCK = re.compile(r"^```.*?^```", re.M | re.S)
HEADING = re.compile(r"^#+ (.*)$", re.M)
LINK = re.compile(r"\]\(([^)\s]+)\)")


def anchor(heading):
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def faults(texts):
    anchors = {page: {anchor(heading) for heading in HEADING.findall(text)} for page, text in texts.items()}
    for page, text in texts.items():
        for link in LINK.findall(text):
            name, _, place = link.partition("#")
            target = (page.parent / name).resolve() if name else page
            if "://" in link:
                continue
            if not target.exists():
                yield "%s: %s is not there" % (page.relative_to(ROOT), link)
            elif place and place not in anchors.get(target, ()):
                yield "%s: %s has no such heading" % (page.relative_to(ROOT), link)


def main():
    pages = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md"), ROOT / "tests" / "README.md"]
    found = list(faults({page: BLOCK.sub("", page.read_text(encoding="utf-8")) for page in pages}))
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
