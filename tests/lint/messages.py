#!/usr/bin/env python3
"""The page of messages is the one that the table makes, and each session on it shows its message."""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

if __name__ == "__main__":
    sys.exit(subprocess.call([sys.executable, "-B", ROOT / "tools" / "reference" / "messages.py", "--check"]))
