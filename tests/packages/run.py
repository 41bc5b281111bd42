#!/usr/bin/env python3
"""`make test-package`: two builds of the packages in two folders are the same bytes, the one for Debian has no fault by its
lint, and in a bare Debian it can be installed, used and removed.

    run.py [--folder FOLDER]    as root; what was built in FOLDER is gone on with
"""
import argparse
import filecmp
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
SUITE = "bookworm"
PLACES = ["one", "another/place/of-a-longer-name"]  # of the two builds

# What a user does, in the bare system: each line's status counts, and the last words say that all of them were reached.
USES = r"""
set -eu
cd /tmp
fail() { echo "fails: $*" >&2; exit 1; }
[ "$(echo '1 2 + .' | morvik -q | sed -n 3p)" = ' 3' ] || fail morvik
[ "$(echo '1 2 + .' | morvik-confined -q | sed -n 3p)" = ' 3' ] || fail morvik-confined
echo '1 2 + PRINT .' >a.morvik
[ "$(morvik-run -l matrix a.morvik)" = ' 3' ] || fail morvik-run
morvik-check a.morvik || fail morvik-check
[ "$(echo '1 2 + .' | morvik-prompt -- -q | grep -c '^ 3$')" = 1 ] || fail morvik-prompt
[ "$(printf '2 3 \271' | morvik-signs --to-signs)" = '2 3 ×' ] || fail morvik-signs
for page in morvik morvik-run morvik-check morvik-confined morvik-prompt morvik-signs; do
  gzip -t /usr/share/man/man1/$page.1.gz || fail "$page(1)"
  [ -e /usr/share/bash-completion/completions/$page ] || fail "completion of $page"
done
[ -e /usr/share/doc/morvik/html/docs/words.html ] || fail site
grep -q 'not chosen a licence' /usr/share/doc/morvik/copyright || fail copyright
echo used
"""
BUILDS = r"""
set -eu
cd /tmp
cp /usr/share/doc/morvik/examples/embedding/table.c .
cc table.c $(pkg-config --cflags --libs morvik) -o table
./table | grep -q '^6 and 60$'
printf 'cmake_minimum_required(VERSION 3.21)\nproject(T C)\nfind_package(Morvik REQUIRED)\nadd_executable(t table.c)\n' >CMakeLists.txt
printf 'target_link_libraries(t Morvik::morvik)\nadd_executable(s table.c)\ntarget_link_libraries(s Morvik::static)\n' >>CMakeLists.txt
cmake -S . -B b >/dev/null && cmake --build b >/dev/null
b/t | grep -q '^6 and 60$'
b/s | grep -q '^6 and 60$'
echo built
"""


def call(*words, **more):
    print("+", *words, flush=True)
    return subprocess.run([str(word) for word in words], check=True, text=True, **more)


def sources():
    listed = subprocess.run(["git", "-C", ROOT, "ls-files", "-coz", "--exclude-standard"], capture_output=True, text=True, check=True)
    return [name for name in listed.stdout.split("\0") if name and (ROOT / name).is_file()]


def built(folder, now):
    """The packages of a build of all sources in that folder. They bear the times of the copy, which are to make no difference."""
    for name in sources():
        copy = folder / name
        if not copy.exists() or not filecmp.cmp(ROOT / name, copy, shallow=False):
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, copy)
    call("make", "-s", "package", cwd=folder, env={**os.environ, "SOURCE_DATE_EPOCH": str(now), "CCACHE_DISABLE": "1"},
         stdout=subprocess.DEVNULL)
    return sorted([*(folder / "build-package").glob("*.deb"), *(folder / "build-package").glob("*.tar.gz")])


def compare(packages):
    one, other = packages
    assert [path.name for path in one] == [path.name for path in other] and len(one) == 2, packages
    for first, second in zip(one, other):
        assert first.read_bytes() == second.read_bytes(), "%s and %s differ" % (first, second)
        assert str(first.parents[1]).encode() not in subprocess.run(
            ["sh", "-c", "dpkg-deb --fsys-tarfile %s || zcat %s" % (first, first)], capture_output=True, check=True).stdout, "the place shows"
    print("the packages of both builds are the same")


def lint(package):
    done = subprocess.run(["lintian", "--fail-on", "error", "--tag-display-limit", "0", str(package)], stdout=subprocess.PIPE, text=True,
                          check=False)
    print(done.stdout, end="")
    assert done.returncode == 0, "lintian finds faults"


class Bare:
    """A Debian of nothing but what each has, in a folder."""

    def __init__(self, folder):
        self.root = folder / "bare"
        if not self.root.exists():
            call("mmdebstrap", "--quiet", "--variant=minbase", "--mode=root", SUITE, self.root)
        shutil.copy("/etc/resolv.conf", self.root / "etc" / "resolv.conf")

    def run(self, *words, **more):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8", "HOME": "/root"}
        # Programs find what belongs to them by way of /proc, which goes with the namespace.
        start = 'mount -t proc proc "$0/proc" && exec chroot "$0" "$@"'
        return call("unshare", "--mount", "sh", "-c", start, self.root, *words, env=environment, **more)

    def apt(self, *words):
        self.run("apt-get", "-qq", "-y", "--no-install-recommends", *words, stdout=subprocess.DEVNULL)

    def says(self, script):
        return self.run("sh", input=script, stdout=subprocess.PIPE).stdout.strip()

    def files(self):
        listed = subprocess.run(["find", str(self.root), "-xdev", "-path", str(self.root / "tmp") + "/*", "-prune", "-o", "-iname", "*morvik*",
                                 "-print"], capture_output=True, text=True, check=True)
        return [line for line in listed.stdout.splitlines() if "/var/lib/dpkg" not in line and "/var/cache" not in line]


def use(package, folder):
    bare = Bare(folder)
    shutil.copy(package, bare.root / "tmp")
    bare.apt("update")
    bare.apt("install", "/tmp/" + package.name)
    assert bare.says(USES) == "used"
    bare.apt("install", "gcc", "g++", "make", "cmake", "pkg-config")
    assert bare.says(BUILDS) == "built"
    bare.apt("purge", "morvik")
    left = bare.files()
    assert left == [], "left behind: %s" % left
    print("the package was installed, used, built against and removed")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--folder", type=pathlib.Path)
    given = parser.parse_args().folder
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        folder = (given or pathlib.Path(scratch)).resolve()
        now = subprocess.run(["git", "-C", ROOT, "log", "-1", "--format=%ct"], capture_output=True, text=True, check=True).stdout.strip()
        packages = [built(folder / place, now) for place in PLACES]
        compare(packages)
        package = next(path for path in packages[0] if path.suffix == ".deb")
        lint(package)
        use(package, folder)
    print("passed")


if __name__ == "__main__":
    sys.exit(main())
