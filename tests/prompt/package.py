"""The package under test, and the interpreter that it drives."""
import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))
BINARY = os.path.abspath(sys.argv.pop(1))
