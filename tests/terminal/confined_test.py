#!/usr/bin/env python3
"""morvik-confined: the prompt with the files of its own folder, wherever links lead:  confined_test.py BINARY"""
import os
import subprocess
import unittest

from folder import BINARY, PATIENCE, Folder

CONFINED = os.path.join(os.path.dirname(BINARY), "morvik-confined")
REFUSED = r"\n720 - "


class Confined(Folder):
    def setUp(self):
        super().setUp()
        outside, self.folder = self.folder, self.folder / "in"
        self.folder.mkdir()
        self.give("own", "inside")
        (outside / "other").write_text("outside")
        (self.folder / "link").symlink_to(outside / "other")
        (self.folder / "same").symlink_to("own")

    def said(self, text):
        run = subprocess.run([CONFINED, "-q"], input=text.encode("latin-1"), capture_output=True, cwd=self.folder,
                             timeout=PATIENCE, check=False)
        self.assertEqual(run.returncode, 0, run.stderr[-2000:])
        return run.stdout.decode("latin-1").rpartition("\n--- Spent: ")[0], run.stderr.decode("latin-1")

    def test_files_of_the_folder(self):
        for name in ("own", "./own", "same"):
            self.assertEqual(self.said("'%s' TEXTREAD ." % name), ("\n\ninside\n", ""), name)
        self.said("'new' 'made' TEXTWRITE .")
        self.assertEqual(self.contents("made"), "new\n")

    def test_files_elsewhere(self):
        for name in ("link", "../other", "/etc/hostname"):
            self.assertRegex(self.said("'%s' TEXTREAD ." % name)[1], REFUSED, name)

    def test_no_editor(self):
        self.assertRegex(self.said("'text' EDIT .")[1], REFUSED)

    def test_a_folder_that_is_gone(self):
        gone = self.folder / "gone"
        gone.mkdir()
        run = subprocess.run(["sh", "-c", 'rmdir "$PWD" && exec "$0" -q', CONFINED], capture_output=True, cwd=gone, input=b"",
                             timeout=PATIENCE, check=False)
        self.assertEqual((run.returncode, run.stdout), (1, b""))
        self.assertEqual(run.stderr, b"morvik-confined: the present folder: No such file or directory\n")


if __name__ == "__main__":
    unittest.main()
