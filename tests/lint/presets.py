#!/usr/bin/env python3
"""A warning ends a build in the developers' presets, and in no other."""
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
USERS = {"release", "package"}
SWITCH = "CMAKE_COMPILE_WARNING_AS_ERROR"


def iserror(preset, presets):
    return preset.get("cacheVariables", {}).get(SWITCH) == "ON" or any(
        iserror(presets[name], presets) for name in [preset.get("inherits")] if name)


def faults():
    listed = json.loads((ROOT / "CMakePresets.json").read_text(encoding="utf-8"))["configurePresets"]
    presets = {preset["name"]: preset for preset in listed}
    for name, preset in presets.items():
        if iserror(preset, presets) == (name in USERS):
            yield "CMakePresets.json: %s: %s" % (name, SWITCH)
    for path in [ROOT / "CMakeLists.txt", *ROOT.glob("cmake/*"), *ROOT.glob("bench/CMake*"), *ROOT.glob("tests/**/CMake*")]:
        if "-Werror" in path.read_text(encoding="utf-8"):
            yield "%s: -Werror" % path.relative_to(ROOT)


if __name__ == "__main__":
    found = list(faults())
    print(*found, sep="\n", end="\n" if found else "")
    sys.exit(bool(found))
