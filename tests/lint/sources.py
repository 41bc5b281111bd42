#!/usr/bin/env python3
"""Rules about the sources that no compiler checks."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SOURCES = ROOT / "src"
MAP = ROOT / "docs" / "architecture.md"
# From the ground up: a module includes its own headers and those of lower layers. Modules of one layer do not include each
# other. What must call upward goes through a hook, a variable of the lower module that the upper one sets.
LAYERS = [["tables"], ["spaces"], ["failure"], ["text"], ["arithmetic", "frontend", "coprocessor"], ["operators"],
          ["files"], ["machine"], ["api"], ["driver", "runner"]]
HEIGHT = {module: height for height, layer in enumerate(LAYERS) for module in layer}
# The one recursion: the machine calls handlers, and some of them run the machine.
RECURSIVE = "machine"
INCLUDE = re.compile(r'^#include "(\w+)/(\w+)\.(?:h|def)"', re.M)
HEADER = re.compile(r'^#include "(\w+/\w+)\.h"', re.M)
COMMENT = re.compile(r"//.*")
LONGEST_FILE = 700
NAMESPACE = "namespace morvik"
# What has its name from outside: the start of the process, and the heap under the names that the process knows.
GLOBAL = {"driver/main.cpp", "driver/confined.cpp", "runner/morvikrun.cpp", "runner/morvikcheck.cpp", "api/morvik.h"}
# The landings of a jump, and the jump.
COUNTED = {r"\bsetjmp\s*\(": 3, r"\blongjmp\s*\(": 1}
BANNED = {
    r"\b(?:try|catch|throw)\b\s*[({\w]": "exceptions are off",
    r"\bstd::(?:vector|string|map|unordered_map|function|unique_ptr|shared_ptr)\b": "a jump would leak it",
    r"#include <(?:iostream|fstream|sstream|regex)>": "costs time at the start of the process",
    r"(?m)^using namespace \w+": "names of its own, one by one",
}
# Nothing in a recount can fail, and so nothing jumps out of it.
JUMPLESS = {"src/spaces/recount.h", "src/spaces/recount.cpp"}
# Declarations and definitions that stand for themselves at the beginning of a line, as clang-format leaves them.
EXTERN = re.compile(r"^extern (?!\"C\")[^;({]*?\(?\*?(\w+)(?:\[[^\]]*\])*\)?(?:\([^;]*\))?(?:, \w+)*;", re.M)
PROTOTYPE = re.compile(r"^(?:\[\[[\w:, ]+\]\] )?(?!return|using|static_assert|extern|typedef|template|struct|class|enum|"
                       r"inline|constexpr)[\w:]+(?: [\w:]+)*(?:<[^;{}]*?>)?[ *&]+(\w+)\(([^;{}]*)\)(?: noexcept)?;", re.M)
FORWARD = re.compile(r"^(?:struct|class|union|enum(?: class)?) (\w+);", re.M)


def read(path):
    return path.read_text(encoding="utf-8")


def paths(*suffixes):
    return sorted(path for path in SOURCES.rglob("*") if path.suffix in suffixes)


def faults():
    counts = dict.fromkeys(COUNTED, 0)
    for path in paths(".cpp", ".h", ".def"):
        name = path.relative_to(ROOT)
        text = read(path)
        code = COMMENT.sub("", text)
        if not text.startswith(("//", "/*")):
            yield "%s: does not open with what it is for" % name
        if text.count("\n") > LONGEST_FILE and path.suffix != ".def":
            yield "%s: more than %d lines" % (name, LONGEST_FILE)
        if path.suffix == ".h" and "#pragma once" not in text:
            yield "%s: no #pragma once" % name
        if path.suffix != ".def" and NAMESPACE not in text and str(path.relative_to(SOURCES)) not in GLOBAL:
            yield "%s: no %s" % (name, NAMESPACE)
        yield from faultsoflayers(name, path.relative_to(SOURCES).parts[0], text)
        for pattern in counts:
            counts[pattern] += len(re.findall(pattern, code))
        for pattern, why in BANNED.items():
            if str(name) in JUMPLESS:
                break
            for found in re.findall(pattern, code):
                yield "%s: %s: %s" % (name, found, why)
    for pattern, count in counts.items():
        if count != COUNTED[pattern]:
            yield "%s occurs %d times, not %d" % (pattern, count, COUNTED[pattern])
    yield from faultsofheaders()
    yield from faultsofcircles()
    yield from faultsofstems()
    yield from faultsofmap()


def faultsoflayers(name, module, text):
    for other, _ in INCLUDE.findall(text):
        if other != module and HEIGHT.get(other, 99) >= HEIGHT.get(module, -1):
            yield "%s: includes %s, which is no lower layer" % (name, other)


def definitions():
    """The sources that define a name outside of any unnamed namespace; what a macro makes does not count."""
    found = {}
    for path in paths(".cpp"):
        code = outside(COMMENT.sub("", read(path)))
        stem = str(path.relative_to(SOURCES).with_suffix(""))
        for match in re.finditer(r"^(?!\s|#|using|namespace|extern|return|static_assert)[^\n;={]*?\b(\w+)"
                                 r"(?:\(|\[|\)\(| ?=|;|, )", code, re.M):
            found.setdefault(match.group(1), set()).add(stem)
        for match in re.finditer(r"^[\w:]+ \*?\w+(?:, \w+)+;", code, re.M):
            for other in re.findall(r"\w+", match.group(0)):
                found.setdefault(other, set()).add(stem)
    return found


def outside(code):
    """Without what is in unnamed namespaces."""
    return re.sub(r"^namespace \{\n.*?^\}  *", "", re.sub(r"^\}  $", "}  ", code, flags=re.M), flags=re.M | re.S)


def declared(path):
    code = COMMENT.sub("", read(path))
    names = set(re.findall(r"^extern [^;]*?(\w+)(?:\[[^\]]*\])*;", code, re.M))
    names |= set(re.findall(r"^extern [^;]*?\(\*(\w+)\)", code, re.M))
    return names | {match[0] for match in PROTOTYPE.findall(code)}


def faultsofheaders():
    """Does each header declare what the source of its own name defines, and nothing else?"""
    defined = definitions()
    types = {}
    for path in paths(".h"):
        for name in re.findall(r"^(?:template <[^\n]*>\n)?(?:struct|class|enum class|enum|union) (\w+)(?: [:{]| :)", read(path), re.M):
            types.setdefault(name, []).append(path)
    for path in paths(".h", ".cpp"):
        name = path.relative_to(ROOT)
        module = path.relative_to(SOURCES).parts[0]
        stem = str(path.relative_to(SOURCES).with_suffix(""))
        if path.suffix == ".h":
            for one in sorted(declared(path)):
                sources = defined.get(one, set())
                if sources and stem not in sources:
                    yield "%s: declares %s of %s" % (name, one, ", ".join(sorted(sources)))
        else:
            for one in EXTERN.findall(outside(COMMENT.sub("", read(path)))):
                yield "%s: declares %s by hand" % (name, one)
        for one in FORWARD.findall(COMMENT.sub("", read(path))):
            for home in types.get(one, []):
                other = home.relative_to(SOURCES).parts[0]
                if other != module and HEIGHT[other] >= HEIGHT[module]:
                    yield "%s: speaks of %s, which belongs to %s" % (name, one, other)


def faultsofcircles():
    """Files that need each other: a header and its source are one, and so are strongly connected components."""
    graph = {}
    for path in paths(".h", ".cpp"):
        node = str(path.relative_to(SOURCES).with_suffix(""))
        graph.setdefault(node, set()).update(set(HEADER.findall(read(path))) - {node})
    for circle in components(graph):
        if any(not node.startswith(RECURSIVE + "/") for node in circle):
            yield "a circle: %s" % " ".join(sorted(circle))


def components(graph):
    """The strongly connected components of more than one node, as Tarjan finds them."""
    index, lowest, stack, found = {}, {}, [], []

    def visit(node):
        index[node] = lowest[node] = len(index)
        stack.append(node)
        for other in graph.get(node, ()):
            if other not in index:
                visit(other)
                lowest[node] = min(lowest[node], lowest[other])
            elif other in stack:
                lowest[node] = min(lowest[node], index[other])
        if lowest[node] == index[node]:
            at = stack.index(node)
            if len(stack) > at + 1:
                found.append(stack[at:])
            del stack[at:]

    for node in graph:
        if node not in index:
            visit(node)
    return found


def faultsofstems():
    """A name of a file means one thing; a table and what is made of it may share one."""
    folders = {}
    for path in paths(".h", ".cpp"):
        folders.setdefault(path.stem, set()).add(path.parent.name)
    for stem, where in sorted(folders.items()):
        if len(where) > 1:
            yield "%s is in %s" % (stem, " and ".join(sorted(where)))


def faultsofmap():
    """Does the map name each file in its module, and no other in its first column?"""
    modules = re.split(r"^`src/(\w+)`\n", read(MAP).split("## File by file")[1], flags=re.M)[1:]
    modules = dict(zip(modules[::2], modules[1::2]))
    for module in sorted(path.name for path in SOURCES.iterdir() if path.is_dir()):
        if module not in HEIGHT:
            yield "src/%s: has no layer" % module
        rows = re.findall(r"^\|(.*?)\|(.*)\|$", modules.get(module, ""), re.M)
        first, all_names = (set(re.findall(r"`(\w+)(?:\.def)?`", " ".join(parts)))
                            for parts in ([row[0] for row in rows], [" ".join(row) for row in rows]))
        files = {path.stem for path in (SOURCES / module).iterdir()}
        for name in sorted(files - all_names):
            yield "docs/architecture.md: %s/%s is not named" % (module, name)
        for name in sorted(first - files):
            yield "docs/architecture.md: there is no %s/%s" % (module, name)


def main():
    found = list(faults())
    for fault in found:
        print(fault)
    print("%d faults" % len(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
