"""Builds one mutant of the host's side at a time, in a copy of the tree, and runs the tests against it until one fails."""

import json
import os
import shlex
import shutil
import subprocess

from builds import Hangs, run
from places import ROOT, STORE

# In the order in which a mistake is found soonest: program, what it is told, seconds after which it hangs.
PROGRAMS = [
    ("brain_tests", ["--gtest_fail_fast"], 60),
    ("store_tests", ["--gtest_fail_fast"], 120),
    ("afternoons", ["--count", "4000", "--jobs", "1"], 120),
    ("host_tests", ["--gtest_fail_fast"], 300),
    ("tether_tests", ["--gtest_fail_fast"], 300),
]  # fmt: skip
# Their tests wait for real processes: side by side, in so many parts.
PARTS = {"host_tests": 8, "tether_tests": 24}
# Without notes for a debugger the same meaning gives the same object.
OPTIONS = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1"]


def output_of(entry):
    """What a compile command makes. Not every CMake says so beside the command."""
    words = shlex.split(entry["command"])
    return words[words.index("-o") + 1]


class HostWorkshop:
    def __init__(self, folder):
        self.tree = folder / "tree"
        self.build = folder / "build"
        shutil.rmtree(folder, ignore_errors=True)
        self.tree.mkdir(parents=True)
        listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True).stdout
        copy = subprocess.run(["tar", "--null", "-T", "-", "-cf", "-"], cwd=ROOT, input=listed, check=True,
                              capture_output=True)  # fmt: skip
        subprocess.run(["tar", "-C", self.tree, "-xf", "-"], input=copy.stdout, check=True)
        # One compiler cache for all copies.
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(folder), CCACHE_NOHASHDIR="1",
                                CMAKE_CXX_COMPILER_LAUNCHER="ccache")  # fmt: skip
        log = (STORE / "build.log").open("a")
        for command in (["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", *OPTIONS],
                        ["ninja", "-C", self.build, *(name for name, _, _ in PROGRAMS)]):  # fmt: skip
            subprocess.run(command, check=True, stdout=log, stderr=log, env=self.environment)
        self.objects = {os.path.relpath(entry["file"], self.tree): made
                        for entry in json.loads((self.build / "compile_commands.json").read_text())
                        if (self.build / (made := output_of(entry))).exists()}  # fmt: skip
        self.unchanged = {file: (self.build / made).read_bytes() for file, made in self.objects.items()
                          if file.startswith("host/")}  # fmt: skip

    def judge(self, mutant):
        """What becomes of it: "killed by ...", "hangs in ...", "survived", "does not compile", "same object", or
        "not judged" and why."""
        path = self.tree / mutant.file
        source = path.read_text()
        path.write_text(mutant.applied_to(source))
        try:
            return self.first_failure(mutant)
        except (Hangs, OSError) as failure:
            return f"not judged: {failure!r}"
        finally:
            path.write_text(source)

    def first_failure(self, mutant):
        if self.is_as_before(mutant):
            return "same object"
        for name, arguments, seconds in PROGRAMS:
            program = self.build / "bin" / name
            before = program.stat().st_mtime_ns
            if not self.builds(name):
                return "does not compile"
            if not mutant.changes_nothing and program.stat().st_mtime_ns == before and name != "tether_tests":
                continue  # nothing of the change is in it
            try:
                parts = [ROOT / "tests/in_shards", str(PARTS[name])] if name in PARTS else []
                if run([*parts, program, *arguments], seconds, self.environment) != 0:
                    return f"killed by {name}"
            except Hangs:
                return f"hangs in {name}"
        return "survived"

    def builds(self, *targets):
        return run(["ninja", "-C", self.build, "-j", "1", *targets], 600, self.environment) == 0

    def is_as_before(self, mutant):
        if mutant.changes_nothing or mutant.file not in self.unchanged:
            return False
        made = self.objects[mutant.file]
        return self.builds(made) and (self.build / made).read_bytes() == self.unchanged[mutant.file]
