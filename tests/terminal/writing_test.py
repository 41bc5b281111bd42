#!/usr/bin/env python3
"""Files are written whole or not at all: whatever breaks a write off, what was there before is still there."""
import glob
import os
import random
import resource
import signal
import subprocess
import time
import unittest

from folder import BINARY, Folder

# A workspace that takes some time to write, and one that takes none.
LARGE = "60 : 5000 .. ; REPEAT .\n"
WORDS = {"SAVE": 713, "DUMPSTACK": 723, "REMEMBER": 726, "WRITE": 711, "TEXTWRITE": 712}
APPENDING = {"APPEND": 712, "TEXTAPPEND": 712}
NOBODY = 65534


def reports(err):
    """The numbers of the messages on standard error."""
    return [int(line.split(" - ")[0]) for line in err.split("\n") if " - " in line]


class Writing(Folder):
    def left(self):
        return sorted(os.listdir(self.folder))

    def check_old(self, out, err, word, number):
        """The word reported its open fault, kept its operands, and left the old file alone in the folder."""
        self.assertEqual(reports(err), [number], word)
        self.assertIn(" 'file'\n", out, word)

    def test_files_may_not_grow(self):
        """Of more than fits, nothing is kept; the name and the value stay."""
        for word, number in WORDS.items():
            self.give("file", "old")
            out, err = self.run_text("5000 .. @v SET 5000 .. 'file' %s .\n'' DUMPSTACK .\n" % word,
                                     limits=[(resource.RLIMIT_FSIZE, 4096)])
            self.check_old(out, err, word, number)
            self.assertEqual((self.contents("file"), self.left()), ("old", ["file"]))

    def test_no_file_may_be_written(self):
        for word, number in WORDS.items():
            out, err = self.run_text("5 'file' %s .\n'' DUMPSTACK .\n" % word, limits=[(resource.RLIMIT_FSIZE, 0)])
            self.check_old(out, err, word, number)
            self.assertEqual(self.left(), [])

    def test_appending_tells(self):
        for word, number in APPENDING.items():
            self.give("file", "old")
            out, err = self.run_text("5000 .. 'file' %s .\n'' DUMPSTACK .\n" % word,
                                     limits=[(resource.RLIMIT_FSIZE, 4096)])
            self.check_old(out, err, word, number)
            self.assertEqual((len(self.contents("file")), self.contents("file")[:3]), (4096, "old"))

    def test_a_full_device(self):
        for word, number in {**WORDS, **APPENDING}.items():
            _, err = self.run_text("1 @v SET 5 '/dev/full' %s .\n" % word, "-u")
            self.assertEqual(reports(err), [number], word)
        self.assertFalse(glob.glob("/dev/.morvik-*"))

    def test_an_editor_on_a_full_disk(self):
        """A draft that is cut is not edited."""
        out, err = self.run_text("5000 .. EDIT 'not run' .\nSHAPE .\n", limits=[(resource.RLIMIT_FSIZE, 4096)],
                                 **{"$EDITOR": "touch edited; true"})
        self.assertEqual((reports(err), out, self.left()), ([711], "\n\n 5000\n", []))

    def test_no_descriptor_is_lost(self):
        """A file may be written over as often as one likes."""
        for word in {**WORDS, **APPENDING}:
            self.give("file", "old")
            out, err = self.run_text("60 : 5 'file' %s CLEAR ; REPEAT 'done' .\n" % word,
                                     limits=[(resource.RLIMIT_NOFILE, 20)])
            self.assertEqual((reports(err), out.split()[-1:]), ([], ["done"]), word)

    def start_saving(self):
        """A run that saves 'ws' again and again, each time whole."""
        os.remove(self.folder / "ws")
        process = self.start(LARGE + "1000000 : 'ws' SAVE ; REPEAT .\n")
        self.wait_until(lambda: (self.folder / "ws").exists())
        return process

    lines = 0

    def check_whole(self):
        """Is the workspace one that was written to its end? And is nothing beside it but what a kill leaves?"""
        text = self.contents("ws")
        self.assertTrue(text.endswith("\n.\n"), text[-100:])
        self.assertEqual(text.count("\n"), self.lines)

    def prepare(self):
        self.run_text(LARGE + "'ws' SAVE .\n")
        self.lines = self.contents("ws").count("\n")
        self.assertGreater(self.lines, 60)

    def test_killed_while_saving(self):
        self.prepare()
        chance = random.Random(2)
        for _ in range(40):
            process = self.start_saving()
            time.sleep(0.02 + chance.random() * 0.03)
            process.kill()
            process.wait()
            self.check_whole()
        others = set(self.left()) - {"ws"}
        for name in others:
            self.assertRegex(name, r"^\.morvik-\w{6}$")
        self.assertLessEqual(len(others), 40)

    def test_interrupted_while_saving(self):
        self.prepare()
        chance = random.Random(3)
        for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGFPE):
            process = self.start_saving()
            for _ in range(12):
                time.sleep(0.02 + chance.random() * 0.03)
                process.send_signal(number)
                time.sleep(0.02)
                process.stdin.write(b"1000000 : 'ws' SAVE ; REPEAT .\n")
                process.stdin.flush()
                self.check_whole()
            process.stdin.write(b"OFF .\n")
            process.stdin.close()
            while process.poll() is None:  # a signal that comes before the text runs is ignored
                process.send_signal(number)
                time.sleep(0.05)
            self.assertEqual(process.returncode, 0)
            self.assertEqual(self.left(), ["ws"])

    def test_two_at_once(self):
        self.give("one", "5000 .. 1 .\n'ws' SAVE .\n")
        first = self.start("1111 : 50 .. ; @f SET 50 f REPEAT 300 : 'ws' SAVE ; REPEAT .\n")
        second = self.start("2222 : 70 .. ; @f SET 70 f REPEAT 300 : 'ws' SAVE ; REPEAT .\n")
        whole = set()
        for process in (first, second):
            process.stdin.close()
        while first.poll() is None or second.poll() is None:
            if (self.folder / "ws").exists():
                text = self.contents("ws")
                self.assertTrue(text.endswith("\n.\n"), text[-80:])
                whole.add(text)
        self.assertLessEqual(len(whole), 2)
        self.assertEqual(self.left(), ["one", "ws"])

    def test_a_pipe(self):
        os.mkfifo(self.folder / "pipe")
        for word, text in (("WRITE", " 5\n"), ("TEXTWRITE", " 5"), ("DUMPSTACK", " 5\n.\n"), ("APPEND", " 5")):
            process = self.start("5 'pipe' %s OFF .\n" % word)
            self.assertEqual(self.contents("pipe"), text)
            process.communicate(timeout=60)
        self.assertEqual(self.left(), ["pipe"])

    def test_a_pipe_that_nobody_empties(self):
        """The write waits; an interrupt ends it and is no failure to write."""
        os.mkfifo(self.folder / "pipe")
        for word in ("WRITE", "APPEND"):
            process = self.start("7 100000 .. 'pipe' %s .\n" % word)
            with open(self.folder / "pipe", "rb"):
                time.sleep(0.3)
                before = time.monotonic()
                process.send_signal(signal.SIGINT)
                out, err = process.communicate(b"CLEAR 77 .\n", timeout=60)
                self.assertLess(time.monotonic() - before, 5)
            self.assertEqual(err, b"")
            self.assertIn(b"\n** User interrupt. **\n", out)
            self.assertIn(b"\n\n 77\n", out)

    def test_devices(self):
        out, err = self.run_text("5 '/dev/null' WRITE '/dev/stdout' WRITE '/dev/stderr' WRITE .\n", "-u")
        self.assertEqual((out, err), (" 5\n\n\n 5", " 5\n"))

    def test_folders(self):
        (self.folder / "folder").mkdir()
        os.symlink("folder", self.folder / "link")
        for word, number in {**WORDS, **APPENDING}.items():
            for name in ("folder", "link", "folder/", "none/file", "."):
                _, err = self.run_text("5 '%s' %s .\n" % (name, word))
                self.assertEqual(reports(err), [number], (word, name))
        self.assertEqual(self.left(), ["folder", "link"])
        self.assertEqual(os.listdir(self.folder / "folder"), [])

    def test_links(self):
        """What a link leads to is replaced, and the link stays; a link to nothing makes what it leads to."""
        (self.folder / "folder").mkdir()
        self.give("folder/file", "old")
        os.symlink("folder/file", self.folder / "one")
        os.symlink("one", self.folder / "two")
        os.symlink(self.folder / "folder" / "new", self.folder / "dangling")
        os.symlink("round", self.folder / "round")
        for word in WORDS:
            _, err = self.run_text("5 'two' %s 'dangling' %s .\n" % (word, word))
            self.assertEqual(err, "")
            for name in ("folder/file", "folder/new"):
                self.assertNotIn("old", self.contents(name))
                os.remove(self.folder / name)
            self.give("folder/file", "old")
            self.assertTrue(all((self.folder / name).is_symlink() for name in ("one", "two", "dangling")))
        _, err = self.run_text("5 'round' WRITE .\n")
        self.assertEqual(reports(err), [711])
        self.assertEqual(self.left(), ["dangling", "folder", "one", "round", "two"])
        self.assertEqual(os.listdir(self.folder / "folder"), ["file"])

    def mode(self, name):
        return (self.folder / name).stat().st_mode & 0o7777

    def test_modes(self):
        """A file that is replaced keeps its mode; a new one has what the host gives to new files."""
        for mode in (0o600, 0o640, 0o666, 0o777, 0o200):
            self.give("file", "old")
            (self.folder / "file").chmod(mode)
            self.run_text("5 'file' WRITE 'new%o' WRITE .\n" % mode)
            self.assertEqual(self.mode("file"), mode)
            mask = os.umask(0)
            os.umask(mask)
            self.assertEqual(self.mode("new%o" % mode), 0o666 & ~mask)

    def test_names_of_any_length(self):
        name = "n" * 255
        _, err = self.run_text("5 '%s' WRITE DISCARD 6 '%s' WRITE .\n" % (name, name))
        self.assertEqual((err, self.contents(name), self.left()), ("", " 6\n", [name]))
        _, err = self.run_text("5 '%sn' WRITE .\n" % name)
        self.assertEqual((reports(err), self.left()), ([711], [name]))

    def run_as_nobody(self, text):
        """A run without the rights of root; the folder and what is in it are given to nobody first."""
        for path in (self.folder, *self.folder.iterdir()):
            os.chown(path, NOBODY, NOBODY)

        def become():
            os.setgroups([])
            os.setgid(NOBODY)
            os.setuid(NOBODY)

        run = subprocess.run(["/proc/self/fd/%d" % self.binary, "-q"], input=text, capture_output=True, text=True,
                             cwd=self.folder, preexec_fn=become, pass_fds=[self.binary], timeout=60, check=False)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout, run.stderr

    @unittest.skipIf(os.geteuid() != 0, "only root can become somebody else")
    def test_rights(self):
        # A folder of the build may be closed to others; what is open already can be run.
        self.binary = os.open(BINARY, os.O_RDONLY)
        self.addCleanup(os.close, self.binary)
        self.give("open", "old")
        self.give("closed", "old")
        (self.folder / "open").chmod(0o644)
        (self.folder / "closed").chmod(0o444)
        self.folder.chmod(0o555)
        for word, number in WORDS.items():
            _, err = self.run_as_nobody("6 'closed' %s .\nCLEAR 6 'new' %s .\nCLEAR 5 'open' %s .\n" % (word, word, word))
            self.assertEqual(reports(err), [number] * 2, "a file that must not be written, and one that can't be made")
            self.assertEqual(self.contents("closed"), "old")
            self.assertNotIn("old", self.contents("open"), "written directly, since nothing can be put beside it")
            self.give("open", "old")
        self.folder.chmod(0o755)
        for word, number in WORDS.items():
            _, err = self.run_as_nobody("5 'closed' %s .\n" % word)
            self.assertEqual((reports(err), self.contents("closed")), ([number], "old"))
        self.assertEqual(self.left(), ["closed", "open"])

    @unittest.skipIf(os.geteuid() != 0, "only root can mount")
    def test_a_mounted_file(self):
        """Nothing can take its place, so that it is written directly."""
        self.give("outer", "outer")
        self.give("inner", "inner")
        mounting = ["unshare", "-m", "sh", "-c", "mount --bind inner outer && exec \"$0\" -q", BINARY]
        run = subprocess.run(mounting, input="5 'outer' WRITE .\n", capture_output=True, text=True, cwd=self.folder,
                             timeout=60, check=False)
        if "--- Spent" not in run.stdout:
            self.skipTest("no mounts here: " + run.stderr)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertEqual((self.contents("inner"), self.contents("outer"), self.left()), (" 5\n", "outer", ["inner", "outer"]))

    @unittest.skipIf(os.geteuid() != 0, "only root can give files away")
    def test_owners(self):
        self.give("file", "old")
        os.chown(self.folder / "file", 1234, 5678)
        (self.folder / "file").chmod(0o640)
        self.run_text("5 'file' SAVE .\n")
        status = (self.folder / "file").stat()
        self.assertEqual((status.st_uid, status.st_gid, self.mode("file")), (1234, 5678, 0o640))


if __name__ == "__main__":
    unittest.main()
