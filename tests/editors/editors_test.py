#!/usr/bin/env python3
"""The files for editors, each loaded by the editor itself. What is not installed is skipped with a word."""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = ROOT / "tests" / "editors"
EDITORS = ROOT / "editors"
MODULES = ROOT / ".cache" / "textmate" / "node_modules"
BINARY = os.path.abspath(sys.argv.pop(1))
SOURCE = """: 1 +
'it''s' "note"
[. 2
.]
;
@inc SET a+b SINX
SIN 2 3 \xb9 .
"""
INDENTED = """: 1 +
  'it''s' "note"
  [. 2
  .]
;
@inc SET a+b SINX
SIN 2 3 \xb9 .
"""


def run(*command, given="", folder=None):
    return subprocess.run([str(part) for part in command], input=given, capture_output=True, encoding="utf-8", check=False,
                          cwd=folder, timeout=300, env={**os.environ, "LC_ALL": "C.UTF-8"})


class Editors(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="morvik-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def need(self, command):
        if not shutil.which(command):
            self.skipTest("%s is not installed" % command)

    def source(self, text=SOURCE, encoding="latin-1"):
        path = self.folder / "a.morvik"
        path.write_bytes(text.encode(encoding))
        return path


class Vim(Editors):
    def vim(self, path, *commands):
        """Runs commands; what they add to the list `out` comes back."""
        self.need("vim")
        script = self.folder / "script.vim"
        script.write_text("\n".join(["set nocompatible encoding=utf-8", "set runtimepath^=%s" % (EDITORS / "vim"), "let out = []",
                                     "filetype plugin indent on", "syntax on", "edit %s" % path, *commands,
                                     "call writefile(out, '%s')" % (self.folder / "out"), "qall!"]))
        done = run("vim", "-u", "NONE", "-i", "NONE", "-n", "-es", "-S", script)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return (self.folder / "out").read_text(errors="replace").splitlines()

    def groups(self, text, encoding):
        places = "for line in range(1, line('$')) | for column in range(1, len(getline(line)))" \
                 " | call add(out, synIDattr(synID(line, column, 1), 'name') . ' ' . getline(line)[column - 1:]) | endfor | endfor"
        return self.vim(self.source(text, encoding), places)

    def test_colours(self):
        found = self.groups(SOURCE, "latin-1")
        for wanted in ("morvikStructure : 1 +", "morvikKeyword +", "morvikString 'it''s' \"note\"", "morvikString 's' \"note\"",
                       "morvikComment \"note\"", "morvikAddress @inc SET a+b SINX", "morvikKeyword SET a+b SINX",
                       "morvikName a+b SINX", "morvikName +b SINX", "morvikName SINX", "morvikKeyword SIN 2 3 ¹ .",
                       "morvikKeyword ¹ .", "morvikStructure ."):
            self.assertIn(wanted, found)

    def test_signs(self):
        path = self.source("2 3 × ⍝ + ⍝ + .\n", "utf-8")
        found = self.vim(path, "edit ++enc=utf-8", "for column in range(1, len(getline(1))) | "
                         "call add(out, synIDattr(synID(1, column, 1), 'name') . ' ' . getline(1)[column - 1:]) | endfor")
        for wanted in ("morvikKeyword × ⍝ + ⍝ + .", "morvikComment + ⍝ + .", "morvikKeyword + ."):
            self.assertIn(wanted, found)

    def test_indentation(self):
        found = self.vim(self.source(), "normal! gg=G", "let out = getline(1, '$')")
        self.assertEqual(found, INDENTED.replace("\xb9", "¹").splitlines())

    def test_what_belongs_together(self):
        found = self.vim(self.source(), "packadd matchit", "normal! gg0", "normal %",
                         "call add(out, line('.') . ' ' . getline('.'))")
        self.assertEqual(found, ["5 ;"])

    def test_bytes_are_kept(self):
        path = self.source()
        self.vim(path, "write!")
        self.assertEqual(path.read_bytes(), SOURCE.encode("latin-1"))


class Emacs(Editors):
    def setUp(self):
        super().setUp()
        self.need("emacs")

    def emacs(self, path):
        done = run("emacs", "-Q", "--batch", "-L", EDITORS / "emacs", "-l", HERE / "emacs.el", path, BINARY)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def test_the_mode(self):
        said = self.emacs(self.source())
        for wanted in ("mode morvik-mode iso-latin-1", "face font-lock-keyword-face :", "face font-lock-builtin-face +",
                       "face font-lock-string-face 'it''s'", "face font-lock-comment-face \"note\"", "face nil a+b", "face nil SINX",
                       "face font-lock-variable-name-face @inc", "face font-lock-builtin-face SIN",
                       "face font-lock-builtin-face ¹", "face font-lock-constant-face 2", "pair ;"):
            self.assertIn(wanted + "\n", said.replace("iso-latin-1-unix", "iso-latin-1"))
        self.assertIn("\n" + INDENTED.replace("\xb9", "¹"), said)

    def test_a_text_is_sent(self):
        said = self.emacs(self.source(": 1 +\n;\nDISCARD . 6 7 \xb9 .\n"))
        self.assertRegex(said, r"answer > \n\n 42\n\nMorvik \[1\]>")

    def test_it_compiles_without_a_warning(self):
        for name in ("morvik-grammar.el", "morvik.el"):
            shutil.copy(EDITORS / "emacs" / name, self.folder)
        done = run("emacs", "-Q", "--batch", "-L", self.folder, "--eval", "(setq byte-compile-error-on-warn t)", "-f",
                   "batch-byte-compile", self.folder / "morvik-grammar.el", self.folder / "morvik.el")
        self.assertEqual(done.returncode, 0, done.stderr)


class Code(Editors):
    def setUp(self):
        super().setUp()
        self.need("node")

    def test_grammar(self):
        if not MODULES.is_dir():
            self.skipTest("vscode-textmate is not installed: tools/need editors")
        done = run("node", HERE / "textmate.js", MODULES, EDITORS / "vscode" / "syntaxes" / "morvik.tmLanguage.json",
                   given=SOURCE + "4 5 × ⍝ + ⍝ - .\n")
        self.assertEqual(done.returncode, 0, done.stderr)
        said = done.stdout.splitlines()
        for wanted in ("keyword.control.morvik :", "keyword.operator.morvik +", "constant.character.escape.morvik ''",
                       "comment.block.morvik note", "entity.name.morvik @inc", "variable.morvik a+b", "variable.morvik SINX",
                       "keyword.operator.morvik SIN", "keyword.operator.morvik ¹", "keyword.operator.morvik ×",
                       "comment.block.morvik  + ", "keyword.operator.morvik -", "keyword.control.morvik ."):
            self.assertIn(wanted, said)

    def test_indentation(self):
        for source, indented in ((SOURCE, INDENTED), ("(1 2\n3\n) .\n", "(1 2\n  3\n) .\n"),
                                 (": 1 'a;b' +\n2\n; .\n3 .\n", ": 1 'a;b' +\n  2\n; .\n3 .\n"),
                                 ("1 : 2 ; POP (3) .\n4 .\n", "1 : 2 ; POP (3) .\n4 .\n"),
                                 ("MONADIC\n@a SET\nFUNCTIONEND .", "MONADIC\n  @a SET\nFUNCTIONEND .")):
            done = run("node", HERE / "indent.js", EDITORS / "vscode" / "language-configuration.json", given=source)
            self.assertEqual((done.returncode, done.stdout), (0, indented), done.stderr)

    def test_hover_and_completion(self):
        done = run("node", HERE / "extension.js", EDITORS / "vscode" / "extension.js", given="1 SIN × \xb9 nothing DUP.")
        self.assertEqual(done.returncode, 0, done.stderr)
        said = json.loads(done.stdout)
        self.assertEqual((said["language"], said["subscriptions"]), ("morvik", 2))
        hovers = dict(said["said"])
        self.assertIn("the sine", hovers["SIN"][0])
        self.assertIn("`x -- y`", hovers["SIN"][0])
        self.assertIn("x times y", hovers["×"][0])
        self.assertEqual(hovers["×"], hovers["\xb9"])
        self.assertIn("pushes the top once more", hovers["DUP."][0])
        self.assertIsNone(hovers["nothing"])
        self.assertIn("the sine", {label: text for label, _, text in said["items"]}["SIN"])

    def test_package(self):
        target, again = self.folder / "morvik.vsix", self.folder / "again.vsix"
        for one in (target, again):
            done = run(sys.executable, "-B", EDITORS / "package", one)
            self.assertEqual(done.returncode, 0, done.stderr)
            time.sleep(2.1)  # what a time in the package would show
        self.assertEqual(target.read_bytes(), again.read_bytes())
        with zipfile.ZipFile(target) as package:
            names = package.namelist()
            described = json.loads(package.read("extension/package.json"))
            self.assertTrue(described["version"].startswith(run(ROOT / "tools" / "version").stdout.strip()), described["version"])
            self.assertIn('Id="morvik" Version="%s"' % described["version"], package.read("extension.vsixmanifest").decode())
            suffixes = {name.rpartition(".")[2] for name in names}
            for suffix in suffixes - {"xml"}:
                self.assertIn('Extension=".%s"' % suffix, package.read("[Content_Types].xml").decode())
            for part in (described["main"], described["contributes"]["grammars"][0]["path"],
                         described["contributes"]["languages"][0]["configuration"]):
                self.assertIn("extension/" + part.removeprefix("./"), names)


if __name__ == "__main__":
    unittest.main()
