#!/usr/bin/env python3
"""What an installation gives: programs that find each other wherever it is put, pages of the manual, completions, and
nothing that the list of it would not take away:  install_test.py BUILD SOURCE"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = pathlib.Path(sys.argv.pop()), pathlib.Path(sys.argv.pop())
PREFIX = "/opt/morvik"
PROGRAMS = ["morvik", "morvik-check", "morvik-confined", "morvik-prompt", "morvik-run", "morvik-signs"]
EVERYBODYS = {"bin", "include", "lib", "share"}
LIMIT = 120


def longoptions(table):
    text = (SOURCE / "src/runner/choices.cpp").read_text()
    return ["--" + name for name in re.search(r"^constexpr option %s\[.*?\};" % table, text, re.M | re.S).group().split('"')[1::2]]


# Each option, as the sources that read them have it.
OPTIONS = {
    "morvik": re.findall(r"-\w+", re.search(r'"Usage: %s (.*?)-i\{', (SOURCE / "src/driver/options.cpp").read_text()).group(1)) +
              ["-i", "-if", "-it", "-is"],
    "morvik-confined": ["-h", "-c"],
    "morvik-run": longoptions("OPTIONS"),
    "morvik-check": longoptions("CHECK_OPTIONS"),
    "morvik-prompt": re.findall(r'add_argument\("(--[\w-]+)"', (SOURCE / "python/morvik/prompt.py").read_text()),
    "morvik-signs": re.findall(r'add_argument\("(--[\w-]+)"', (SOURCE / "python/morvik/signs.py").read_text()),
}


def run(*words, given="", **more):
    environment = {"PATH": "/usr/bin:/bin", "HOME": "/nonexistent", "LC_ALL": "C.UTF-8", **more.pop("environment", {})}
    return subprocess.run([str(word) for word in words], input=given, capture_output=True, text=True, timeout=LIMIT,
                          env=environment, check=False, **more)


def install(folder, prefix=PREFIX):
    done = run("cmake", "--install", BUILD, "--prefix", prefix, environment={"DESTDIR": str(folder)})
    assert done.returncode == 0, done.stdout + done.stderr
    return pathlib.Path(str(folder) + prefix)


def scratch(test):
    made = tempfile.TemporaryDirectory(prefix="morvik-")
    test.addCleanup(made.cleanup) if isinstance(test, unittest.TestCase) else test.addClassCleanup(made.cleanup)
    return pathlib.Path(made.name)


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # Installed at one place and moved to another, since nothing in it may depend on where it is.
        folder = scratch(cls)
        cls.prefix = folder / "elsewhere"
        install(folder / "destination").rename(cls.prefix)
        cls.bin, cls.share = cls.prefix / "bin", cls.prefix / "share"
        cls.folder = folder

    def passes(self, *words, **more):
        done = run(*words, **more)
        self.assertEqual((done.returncode, done.stderr), (0, ""), words)
        return done.stdout

    def need(self, command):
        if not shutil.which(command):
            self.skipTest("%s is not installed: tools/need test" % command)


class Programs(Installed):
    def script(self, text):
        path = self.folder / "script.morvik"
        path.write_text(text)
        return path

    def test_there_are_these(self):
        self.assertEqual(sorted(path.name for path in self.bin.iterdir()), PROGRAMS)

    def test_the_interpreter(self):
        for name in ("morvik", "morvik-confined"):
            self.assertIn("\n 3\n", self.passes(self.bin / name, "-q", given="1 2 + .\n"))

    def test_the_runner_finds_each_library(self):
        names = sorted(path.stem for path in (SOURCE / "lib").glob("*.morvik"))
        self.assertTrue(names)
        path = self.script("1 2 + PRINT .\n")
        for name in names:
            self.assertEqual(self.passes(self.bin / "morvik-run", "-l", "arrays", "-l", "text", "-l", name, path), " 3\n")

    def test_the_checker(self):
        self.passes(self.bin / "morvik-check", "-l", "arrays", self.script("1 2 + PRINT .\n"))
        self.assertEqual(run(self.bin / "morvik-check", self.script("1 'open\n")).returncode, 1)

    def test_the_prompt_finds_its_interpreter(self):
        said = self.passes(SOURCE / "tools" / "python", "prompt_toolkit", "pygments", "--", "-B", self.bin / "morvik-prompt", "--", "-h",
                           environment={"PATH": os.environ["PATH"]})
        self.assertTrue(said.startswith("Usage: %s " % (self.bin / "morvik").resolve()), said[:200])

    def test_the_filter_of_signs(self):
        there = subprocess.run([self.bin / "morvik-signs", "--to-signs"], input=b"2 3 \xb9 .\n", capture_output=True, check=True).stdout
        self.assertEqual(there.decode(), "2 3 × .\n")


class Pages(Installed):
    def pages(self):
        found = sorted((self.share / "man" / "man1").iterdir())
        self.assertEqual([path.name for path in found], sorted(name + ".1" for name in PROGRAMS))
        return found

    def test_lint(self):
        self.need("mandoc")
        for path in self.pages():
            self.assertEqual(self.passes("mandoc", "-T", "lint", "-W", "warning", path), "", path)

    def test_each_option_is_told(self):
        for path in self.pages():
            options = OPTIONS[path.stem]
            self.assertTrue(options)
            for option in options:
                written = option[1:].replace("-", r"\-")
                self.assertRegex(path.read_text(), r"(?m)^\.It .*Fl %s(?: |$)" % re.escape(written), path)

    def test_version_and_name(self):
        version = self.passes(SOURCE / "tools" / "version").strip()
        for path in self.pages():
            self.assertIn('.Os "Morvik %s"\n' % version, path.read_text())
            self.assertIn(".Nm %s\n.Nd " % path.stem, path.read_text())


class Completions(Installed):
    def each(self, folder, form):
        for name in PROGRAMS:
            path = self.share / folder / form.format(name)
            self.assertTrue(path.is_file(), path)
            yield name, path

    def path(self):
        return {"PATH": "%s:/usr/bin:/bin" % self.bin}

    def bash(self, name, *words):
        line = 'source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _%s; printf "%%s\\n" "${COMPREPLY[@]}"' % name.replace("-", "_")
        return self.passes("bash", "--norc", "-c", line, self.share / "bash-completion" / "completions" / name, name, *words,
                           environment=self.path(), cwd=self.folder).split()

    def fish(self, name, line):
        said = self.passes("fish", "--no-config", "-c", 'source $argv[1]; complete -C $argv[2]',
                           self.share / "fish" / "vendor_completions.d" / (name + ".fish"), name + " " + line,
                           environment={**self.path(), "HOME": str(self.folder)}, cwd=self.folder)
        return [row.split("\t")[0] for row in said.splitlines()]

    def test_bash(self):
        for name, path in self.each("bash-completion/completions", "{}"):
            self.passes("bash", "-n", path)
            for option in OPTIONS[name]:
                self.assertIn(option, self.bash(name, "-"), name)
        self.assertEqual(self.bash("morvik-run", "--pro"), ["--processors", "--profile", "--profile=folded"])
        self.assertEqual(self.bash("morvik-run", "-l", "ma"), ["matrix"])
        self.assertEqual(self.bash("morvik-prompt", "--large", "p"), ["pager"])

    def test_bash_offers_files(self):
        (self.folder / "plan.morvik").touch()
        (self.folder / "plan.txt").touch()
        self.assertEqual(self.bash("morvik-run", "pl"), ["plan.morvik"])

    def test_zsh(self):
        self.need("zsh")
        for name, path in self.each("zsh/site-functions", "_{}"):
            self.passes("zsh", "-n", path)
            text = path.read_text()
            self.assertTrue(text.startswith("#compdef %s\n" % name))
            for option in OPTIONS[name]:
                self.assertRegex(text, r"['*)]%s[-=]*\[" % option)
        # The function for libraries, with what takes its answer put in place of the shell's own.
        said = self.passes("zsh", "-f", "-c", 'compadd() { print -l ${(P)2} }; _arguments() { :; }; source "$0"; _morvik_libraries',
                           self.share / "zsh" / "site-functions" / "_morvik-run", environment=self.path())
        self.assertIn("matrix", said.split())

    def test_fish(self):
        self.need("fish")
        for name, path in self.each("fish/vendor_completions.d", "{}.fish"):
            self.passes("fish", "--no-config", "-n", path)
            for option in OPTIONS[name]:
                self.assertIn(option, self.fish(name, "--" if option.startswith("--") else "-"), name)
        self.assertEqual(self.fish("morvik-run", "-l ma"), ["matrix"])
        self.assertEqual(self.fish("morvik-prompt", "--large p"), ["pager"])


class Others(Installed):
    def test_vim_finds_its_files(self):
        self.need("vim")
        done = run("vim", "-u", "NONE", "-i", "NONE", "-n", "-es", "-c", "set runtimepath^=%s/vim/vimfiles" % self.share, "-c",
                   "filetype plugin on", "-c", "edit a.morvik", "-c", "verbose set filetype?", "-c", "qall!", cwd=self.folder)
        self.assertIn("filetype=morvik", done.stdout + done.stderr)

    def test_documents(self):
        documents = self.share / "doc" / "morvik"
        for name in ("README.md", "CHANGELOG.md", "docs/words.md", "examples/hello.morvik", "examples/embedding/table.c"):
            self.assertTrue((documents / name).is_file(), name)

    def test_nothing_names_the_build(self):
        for path in self.prefix.rglob("*"):
            # Programs hold the names of sources for a debugger; packages do not.
            if path.is_file() and path.suffix not in (".a",) and path.parent.name not in ("bin", "lib"):
                self.assertNotIn(str(BUILD).encode(), path.read_bytes(), path)


class Uninstalling(unittest.TestCase):
    def test_nothing_is_left(self):
        prefix = install(scratch(self), "/usr")
        # A run by who may write there leaves what Python compiled.
        run("python3", prefix / "bin" / "morvik-signs", "--help", environment={"PATH": os.environ["PATH"]})
        self.assertTrue(list(prefix.rglob("*.pyc")))
        mine = prefix / "share" / "man" / "man1" / "mine.1"
        mine.touch()
        done = run("cmake", "-P", prefix / "share" / "morvik" / "uninstall.cmake")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual({str(path.relative_to(prefix)) for path in prefix.rglob("*")},
                         EVERYBODYS | {"share/man", "share/man/man1", "share/man/man1/mine.1"})

    def test_the_list_is_whole(self):
        prefix = install(scratch(self))
        listed = (prefix / "share" / "morvik" / "installed.txt").read_text().splitlines()
        self.assertEqual(sorted(listed), sorted(str(path.relative_to(prefix)) for path in prefix.rglob("*")
                                                if path.is_symlink() or not path.is_dir()))


if __name__ == "__main__":
    unittest.main()
