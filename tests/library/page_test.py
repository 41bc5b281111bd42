#!/usr/bin/env python3
"""Every public word of the libraries stands on docs/library.md with its stack effect and in a session, and is tested.

A public word is what lib/NAME.morvik sets as `@NAME:word`. The comment before it begins with its stack effect. All other names
that a library sets begin with `NAME::`, so that none can clash with a user's.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]


def publicwords(source, library):
    """The public words of a library and the comment before each."""
    parts = re.split(r'"([^"]*)"', source)
    for comment, code in zip(parts[1::2], parts[2::2]):
        found = re.search("@(%s:[a-z]+) SET" % library, code)
        if found:
            yield found.group(1), comment


def main():
    page = (ROOT / "docs" / "library.md").read_text()
    sessions = "\n".join(re.findall(r"^Morvik \[\d+\]> (.*)$", page, re.M))
    complaints, words = [], 0
    for path in sorted((ROOT / "lib").glob("*.morvik")):
        library, source = path.stem, path.read_text()
        tests = (ROOT / "tests" / "library" / (library + ".lines")).read_text()
        complaints += ["%s sets %s, which is not its own" % (path.name, name) for name in re.findall(r"@(\S+)", source)
                       if not name.startswith(library + ":")]
        for word, comment in publicwords(source, library):
            words += 1
            row = re.search(r"^\| `%s` \| `(.*?)` \|" % word, page, re.M)
            if not row or not comment.startswith(row.group(1)):
                complaints.append("docs/library.md does not tell what %s takes and leaves" % word)
            if not re.search(word + "(?![a-z])", sessions):
                complaints.append("no session on docs/library.md shows %s" % word)
            if not re.search(word + "(?![a-z])", tests):
                complaints.append("no line tests %s" % word)
    print("\n".join(complaints + ["%d words, %d complaints" % (words, len(complaints))]))
    return 1 if complaints or words < 50 else 0


if __name__ == "__main__":
    sys.exit(main())
