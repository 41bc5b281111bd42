#!/usr/bin/env python3
"""The page of words is the one that the tables make."""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

if __name__ == "__main__":
    sys.exit(subprocess.call([sys.executable, "-B", ROOT / "tools" / "reference" / "words.py", "--check"]))
