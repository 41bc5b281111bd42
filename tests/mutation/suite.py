"""How a change in this tree is built and tried: the tests in the order in which a kill is found soonest."""
import dataclasses
import json
import os
import re
import shutil
import sys

from schemata import support
from trial import Step

CASES = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),", re.M)
SPARE_SECONDS, SLOWER = 10, 4  # a step may take so many times the seconds of the unchanged tree, and so much more
QUICK_SECONDS = 0.15  # of a unit test case
BUILD_SECONDS = 1200
PROGRAMS = ("morvik", "morvik-confined", "morvik-run", "morvik-check", "unit_tests")
RUNNER = ("env", "GTEST_FAIL_FAST=1")
PYTHON = (sys.executable, "-B")


class Suite:
    """The steps for a workshop, but for those whose names begin as in `skip`. `seconds` says what each step, and each unit
    test case, takes in the unchanged tree."""

    def __init__(self, workshop, skip=()):
        self.workshop, self.skip = workshop, skip
        self.tests = workshop.tree / "tests"
        self.binary = workshop.build / "morvik"
        self.runner = workshop.build / "morvik-run"
        self.calls = workshop.build / "calls"
        self.checkingbuild = workshop.build / "checking"
        self.header = workshop.folder / "planted.h"
        self.record = workshop.folder / "seconds.json"
        self.seconds = json.loads(self.record.read_text()) if self.record.exists() else {}

    def configure(self, build, *more):
        """The step that prepares a build: no debug information, no warnings, and the quickest tools there are."""
        options = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1"]
        flags = "-w -include %s" % self.header
        if shutil.which("clang++"):
            options.append("-DCMAKE_CXX_COMPILER=clang++")
            flags += " -ferror-limit=0 -Wno-invalid-constexpr"
        options.append("-DCMAKE_CXX_FLAGS=" + flags)
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        if shutil.which("ld.lld"):
            options.append("-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld")
        if shutil.which("ninja"):
            options += ["-G", "Ninja"]
        return Step("configure", ("cmake", "-S", self.workshop.tree, "-B", build, *options, *more), builds=True)

    def make(self, *targets, **more):
        return self.makein(self.workshop.build, "build", *targets, **more)

    def makein(self, build, name, *targets, keep=False):
        """The step that builds targets; `keep`: goes on after an error."""
        further = ("--", "-k", *(["0"] if shutil.which("ninja") else [])) if keep else ()
        return Step(name, ("cmake", "--build", build, "-j", os.environ.get("BUILD_JOBS", "2"), "--target", *targets, *further),
                    BUILD_SECONDS, builds=True)

    def makeapi(self):
        """Links the calls of the library's header with the same objects as the other programs."""
        script = 'cc -D_DEFAULT_SOURCE -DVERSION="\\"$("$1/tools/version")\\"" -I "$1/src/api" "$1/tests/api/calls.c" -o "$2" "$3" ' \
                 '-lstdc++ -lm -pthread'
        return Step("build", ("sh", "-c", script, "sh", self.workshop.tree, self.calls, self.workshop.build / "libmorvik_core.a"),
                    builds=True)

    def limit(self, names):
        return round(SPARE_SECONDS + SLOWER * sum(self.seconds.get(name, 0) for name in names))

    def test(self, name, command, **more):
        return Step(name, command, self.limit([name]), **more)

    def cases(self, sources):
        return {case for source in sources for case in CASES.findall(source.read_text())}

    def units(self, name, cases, *options):
        """The unit tests of some cases in one step; none where there are no cases."""
        if not cases:
            return []
        chosen = ":".join("%s.*:*/%s.*" % (case, case) for case in sorted(cases))
        command = (*RUNNER, self.workshop.build / "tests" / "unit_tests", "--gtest_brief=1", "--gtest_filter=" + chosen,
                   *options)
        return [Step(name, command, self.limit("case." + case for case in cases))]

    def nearcases(self, path):
        """The cases of the unit tests that are named like a source, or include its header."""
        header = '#include "%s"' % path.relative_to("src").with_suffix(".h")
        return self.cases(source for source in (self.tests / "unit").glob("*_test.cpp")
                          if source.stem == path.stem + "_test" or header in source.read_text())

    def unitsteps(self, path):
        """First the cases that are near to a source, then the quick ones of the others, then the slow ones."""
        near = self.nearcases(path) if path else set()
        others = self.cases((self.tests / "unit").glob("*_test.cpp")) - near
        quick = {case for case in others if self.seconds.get("case." + case, 0) < QUICK_SECONDS}
        return self.units("unit", near), self.units("unit.quick", quick) + self.units("unit.slow", others - quick)

    def lines(self, name, binary):
        return self.test(name, (*PYTHON, self.tests / "lines" / "run.py", "--timeout", "150", binary,
                                *sorted((self.tests / "lines").glob("*.lines"))))

    def transcripts(self, name, binary, path=None):
        """All of them; those that are named like the folder of the source come first."""
        folders = sorted(folder.name for folder in (self.tests / "transcripts").iterdir() if any(folder.glob("*.morvik")))
        if path and path.parent.name in folders:
            folders.sort(key=lambda name: name != path.parent.name)
        return self.test(name, (*PYTHON, self.tests / "transcripts" / "run.py", "--first", "--timeout", "150", binary,
                                *folders, self.workshop.tree / "examples"))

    def texts(self, binary, path=None):
        return [self.lines("lines", binary), self.transcripts("transcripts", binary, path)]

    def programs(self):
        """The other programs, the libraries in the language, and what only their callers see."""
        for script in sorted((self.tests / "runner").glob("*_test.py")):
            yield self.test("runner." + script.stem, (*PYTHON, script, self.runner, "-f"), blocks="unlimited")
        yield self.test("library", (*PYTHON, self.tests / "lines" / "run.py", "--timeout", "150", self.binary,
                                    *sorted((self.tests / "library").glob("*.lines"))))
        yield self.test("scripts", (*PYTHON, self.tests / "examples" / "scripts_test.py", self.binary, self.runner))
        yield self.test("quick", (*PYTHON, self.tests / "quick" / "differential_test.py", self.binary))
        yield self.test("api", (self.calls,))

    def checking(self):
        """What the checking build sees: blocks that are lost, or used after their end, and allocations that fail."""
        binary = self.checkingbuild / "morvik"
        seeds = sorted((self.tests / "fuzz" / "seeds").iterdir())
        examples = sorted((self.workshop.tree / "examples").glob("*.morvik"))
        return [self.lines("checking.lines", binary), self.transcripts("checking.transcripts", binary),
                self.test("checking.pairs", (*PYTHON, self.tests / "pairs" / "run.py", binary)),
                self.test("checking.storage", (*PYTHON, self.tests / "storage" / "run.py", binary, *seeds, *examples))]

    def rest(self):
        """What needs a terminal, the pool, the clock."""
        for folder in ("terminal", "pool"):
            for script in sorted((self.tests / folder).glob("*_test.py")):
                # One of them makes a file that is all hole, and very large.
                yield self.test("%s.%s" % (folder, script.stem), (*PYTHON, script, self.binary, "-f"), timed=True,
                                blocks="unlimited")
        pages = [self.workshop.tree / "README.md", *sorted((self.workshop.tree / "docs").glob("*.md"))]
        yield self.test("pages", (*PYTHON, self.tests / "pages" / "run.py", self.binary, *pages), timed=True)

    def lints(self):
        return [self.test("lint.%s" % name, (*PYTHON, self.tests / "lint" / (name + ".py")))
                for name in ("completeness", "words", "messages")]

    def steps(self, path):
        """The steps for a change of a source. What many sources include is tried as far as possible before the unit
        tests are compiled anew; not so a table, most of whose rows come to the same code in most of them."""
        near, others = self.unitsteps(path)
        programs = sorted(self.programs(), key=lambda step: step.name.split(".")[0] != path.parent.name)
        if path.suffix != ".h":
            order = [self.make(*PROGRAMS), *near, *self.texts(self.binary, path)]
        else:
            order = [self.make("morvik"), *self.texts(self.binary, path), self.make(*PROGRAMS), *near]
        order += [self.makeapi(), *programs, *others]
        checking = [self.makein(self.checkingbuild, "checking.build", "morvik"), *self.checking()]
        return self.left([*order, *(self.lints() if path.suffix == ".def" else []), *checking, *self.rest()])

    def chosensteps(self, path):
        """The steps for a change that is in the build already."""
        near, others = self.unitsteps(path)
        programs = sorted(self.programs(), key=lambda step: step.name.split(".")[0] != path.parent.name)
        first = [step for step in programs if step.name.split(".")[0] == path.parent.name]
        return self.left([*near, *first, *self.texts(self.binary, path), *programs[len(first):], *others, *self.checking(),
                          *self.rest()])

    def left(self, steps):
        """The steps that are not to be skipped."""
        return [step for step in steps if not step.name.startswith(self.skip)]

    def binaries(self):
        build = self.workshop.build
        return [self.binary, self.runner, build / "morvik-check", self.calls, build / "tests" / "unit_tests",
                *([] if "checking" in self.skip else [self.checkingbuild / "morvik"])]

    def perform(self, steps):
        """Runs steps with time to spare. Returns the seconds of each, and a complaint where one fails."""
        seconds = {}
        for step in steps:
            outcome = self.workshop.settle(dataclasses.replace(step, seconds=BUILD_SECONDS))
            seconds[step.name] = outcome.processor
            if not outcome.passed:
                return seconds, "%s:\n%s" % (step.name, outcome.output[-3000:])
        return seconds, ""

    def support(self):
        return support(self.header)

    def checkheaders(self):
        """The step that only asks whether the headers compile, all in one: what does not, fails everywhere."""
        together, sources = self.workshop.folder / "headers.cpp", self.workshop.tree / "src"
        together.write_text("".join('#include "%s"\n' % path.relative_to(sources) for path in sorted(sources.rglob("*.h"))))
        compiler = ("clang++", "-ferror-limit=0") if shutil.which("clang++") else ("c++",)
        return Step("headers", (*compiler, "-std=c++20", "-fno-exceptions", "-fno-rtti", "-w", "-fsyntax-only", "-include",
                                self.header, "-I", sources, together), builds=True)

    def ready(self, schemata, bring):
        """Builds the tree with the changes that can stand side by side, none of them chosen; `bring` brings the sources.
        Returns a complaint."""
        configuring = [self.configure(self.workshop.build)]
        building = [self.checkheaders(), self.make(*PROGRAMS, keep=True)]
        if "checking" not in self.skip:
            configuring.append(self.configure(self.checkingbuild, "-DMORVIK_CHECKING=ON"))
            building.append(self.makein(self.checkingbuild, "build", "morvik", keep=True))
        complaint = self.perform(configuring)[1]
        for step in building:
            complaint = complaint or schemata.settle(lambda step=step: self.workshop.perform(step), bring)
        return complaint or self.perform([self.makeapi()])[1]

    def measure(self):
        """Runs all tests without a change, and learns how long each step takes. Returns a complaint."""
        report = self.workshop.folder / "units.json"
        everycase = self.cases((self.tests / "unit").glob("*_test.cpp"))
        units = self.units("unit", everycase, "--gtest_output=json:%s" % report)
        seconds, complaint = self.perform(self.left([*units, *self.texts(self.binary), *self.programs(), *self.checking(),
                                                     *self.rest(), *self.lints()]))
        if not complaint:
            self.learn({**seconds, **secondsofcases(report, seconds["unit"])})
        return complaint

    def learn(self, seconds):
        self.seconds = seconds
        self.record.write_text(json.dumps(seconds))


def secondsofcases(report, total):
    """What each case took of the seconds of all unit tests, from GoogleTest's report."""
    spent = {}
    for suite in json.loads(report.read_text())["testsuites"]:
        for case in suite["name"].split("/"):  # INSTANCE/CASE, CASE/NUMBER or CASE
            spent["case." + case] = float(suite["time"].rstrip("s"))
    share = total / max(sum(spent.values()), 1e-3)
    return {name: seconds * share for name, seconds in spent.items()}
