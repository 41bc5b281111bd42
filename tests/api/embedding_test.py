#!/usr/bin/env python3
"""The library as another program finds it: installed, built against with pkg-config, and called:
embedding_test.py BUILD SOURCE"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = pathlib.Path(sys.argv.pop()), pathlib.Path(sys.argv.pop())
EXAMPLES = SOURCE / "examples" / "embedding"
C99 = ["cc", "-std=c99", "-Wall", "-Wextra", "-pedantic", "-Werror"]
LIMIT = 300
VERSION = subprocess.run([SOURCE / "tools" / "version"], capture_output=True, text=True, check=True).stdout.strip()


def call(*words, **more):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=LIMIT, **more)
    if done.returncode != 0:
        raise AssertionError("%s: %d\n%s%s" % (words[0], done.returncode, done.stdout, done.stderr))
    return done.stdout


class Embedding(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.scratch.cleanup)
        cls.folder = pathlib.Path(cls.scratch.name)
        cls.prefix = cls.folder / "installed"
        call("cmake", "--install", BUILD, "--prefix", cls.prefix)
        places = list(cls.prefix.rglob("morvik.pc"))
        assert len(places) == 1, places
        cls.settings = dict(os.environ, PKG_CONFIG_PATH=str(places[0].parent))
        cls.libraries = places[0].parent.parent

    def flags(self, *options):
        return call("pkg-config", *options, "morvik", env=self.settings).split()

    def built(self, compiler, source, *more):
        """Builds with what pkg-config says, and runs. Returns the output."""
        binary = self.folder / source.stem
        call(*compiler, source, "-o", binary, *more, *self.flags("--cflags", "--libs"), "-pthread")
        return call(binary, env=dict(self.settings, LD_LIBRARY_PATH=str(self.libraries)))

    def test_what_is_installed(self):
        found = {str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if path.is_file()}
        for name in ("bin/morvik", "bin/morvik-run", "bin/morvik-check", "include/morvik.h"):
            self.assertIn(name, found)
        self.assertTrue((self.libraries / "libmorvik.a").exists() and (self.libraries / "libmorvik.so").exists())
        self.assertEqual(self.flags("--modversion"), [VERSION])

    def test_a_c99_compiler_takes_the_header(self):
        for lines in ("#include <morvik.h>\n", "#include <morvik.h>\n#include <morvik.h>\nint main(void) { return MORVIK_OK; }\n"):
            file = self.folder / "header.c"
            file.write_text(lines + "typedef int something;\n")
            for compiler in (C99, ["cc", "-std=c11", *C99[2:]], ["c++", "-x", "c++", "-std=c++11", *C99[2:]]):
                call(*compiler, "-c", file, "-o", self.folder / "header.o", *self.flags("--cflags"))

    def test_the_example_in_c(self):
        self.assertEqual(self.built(C99, EXAMPLES / "table.c"),
                         "Rows summed:\n\n6 and 60\nhalved: ( 0.5 1 1.5 5 10 15 )[3 2]\n 1\n"
                         "table, line 2: 17 - dyadic function arguments are not conformable.\na message came\n")

    # Half a turn about the third axis: x and y change sign, z stays.
    def test_the_example_in_cpp(self):
        self.assertEqual(self.built(["c++", "-std=c++17", "-Wall", "-Wextra", "-Werror"], EXAMPLES / "turn.cpp"),
                         "-1 -2 3\n1 0 5\ninterrupted\n")

    def test_every_call(self):
        self.assertEqual(self.built([*C99, "-D_DEFAULT_SOURCE", '-DVERSION="%s"' % VERSION], SOURCE / "tests" / "api" / "calls.c"), "all well\n")

    def test_the_static_library(self):
        binary = self.folder / "static"
        call(*C99, EXAMPLES / "table.c", "-o", binary, *self.flags("--cflags"), self.libraries / "libmorvik.a", "-lstdc++",
             "-lm", "-pthread")
        self.assertTrue(call(binary).startswith("Rows summed:\n\n6 and 60\n"))
        self.assertNotIn("libmorvik", call("ldd", binary))

    # A project in C alone, which knows nothing of C++, and the version that it asks for.
    def test_a_project_finds_the_package(self):
        project = self.folder / "project"
        project.mkdir()
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.21)\nproject(Table C)\nfind_package(Morvik %s REQUIRED)\n"
            "foreach(kind morvik static)\n  add_executable(table_${kind} %s)\n"
            "  target_link_libraries(table_${kind} Morvik::${kind})\nendforeach()\n" % (VERSION, EXAMPLES / "table.c"))
        call("cmake", "-S", project, "-B", project / "build", "-DCMAKE_PREFIX_PATH=%s" % self.prefix)
        call("cmake", "--build", project / "build")
        for kind in ("morvik", "static"):
            self.assertTrue(call(project / "build" / ("table_" + kind)).startswith("Rows summed:\n\n6 and 60\n"))
        self.assertNotIn("libmorvik", call("ldd", project / "build" / "table_static"))

    def test_the_shared_library_shows_only_its_own_names(self):
        names = set(re.findall(r" [TDBRVWAuwi] (\S+)", call("nm", "-D", "--defined-only", self.libraries / "libmorvik.so")))
        declared = set(re.findall(r"\b(morvik_\w+)\(", (SOURCE / "src/api/morvik.h").read_text())) - {"morvik_"}
        self.assertEqual(names, declared)

    def test_the_library_leaves_the_process_its_signals_and_its_heap(self):
        used = call("nm", "-D", "--undefined-only", self.libraries / "libmorvik.so")
        self.assertNotRegex(used, r"\bsbrk\b")
        self.assertRegex(used, r"\bmalloc\b")


if __name__ == "__main__":
    unittest.main()
