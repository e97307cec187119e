"""Judges mutants of the host's side: most behind their switches, in the one build that holds them all; what cannot stand
behind one is built by itself, in a copy of the tree."""

import json
import os
import shlex
import threading

from builds import Hangs
from host_tests import first_failure
from host_tree import PROGRAMS, HostTree


def output_of(entry):
    """What a compile command makes. Not every CMake says so beside the command."""
    words = shlex.split(entry["command"])
    return words[words.index("-o") + 1]


class HostWorkshop:
    one_builds = threading.Lock()  # the others then find it all in the compiler's cache

    def __init__(self, folder, switched, tests):
        self.switched = switched
        self.numbered = switched.numbered()
        self.tests = tests
        self.tests_of_file = {}  # that run through anything in the file
        for file, mutants in switched.mutants.items():
            numbers = {self.numbered[mutant] for mutant in mutants}
            self.tests_of_file[file] = [test for test in tests if not numbers or numbers & test.reached]
        self.folder = folder
        self.own = None

    def judge(self, mutant):
        """What becomes of it: "killed by ...", "hangs in ...", "survived", "does not compile", "same object", or
        "not judged" and why."""
        try:
            if mutant.changes_nothing:
                return first_failure(self.switched.tree, self.tests, {})
            if mutant not in self.numbered:
                return self.judged_by_itself(mutant, lambda: self.verdict_of_own(mutant))
            number = self.numbered[mutant]
            reaching = [test for test in self.tests if number in test.reached]
            verdict = first_failure(self.switched.tree, reaching, {"MUTANT": str(number)})
            if verdict == "survived" and self.judged_by_itself(mutant, lambda: self.is_as_before(mutant)):
                return "same object"
            return verdict
        except (Hangs, OSError) as failure:
            return f"not judged: {failure!r}"

    def judged_by_itself(self, mutant, judge):
        if self.own is None:
            with HostWorkshop.one_builds:
                self.make_own()
        path = self.own.tree / mutant.file
        source = path.read_text()
        path.write_text(mutant.applied_to(source))
        try:
            return judge()
        finally:
            path.write_text(source)

    def make_own(self):
        self.own = HostTree(self.folder, ["-w"])
        self.own.configure()
        status, printed = self.own.built_with_words()
        if status != 0:
            raise RuntimeError(printed)
        self.objects = {os.path.relpath(entry["file"], self.own.tree): self.own.build / output_of(entry)
                        for entry in json.loads((self.own.build / "compile_commands.json").read_text())}  # fmt: skip
        self.unchanged = {file: made.read_bytes() for file, made in self.objects.items()
                          if file.startswith("host/") and made.exists()}  # fmt: skip

    def verdict_of_own(self, mutant):
        if mutant.file in self.unchanged and not self.own.builds(os.path.relpath(self.objects[mutant.file], self.own.build)):
            return "does not compile"
        if self.is_as_before(mutant):
            return "same object"
        for program in PROGRAMS:
            tests = [test for test in self.tests_of_file[mutant.file] if test.program == program]
            if not tests:
                continue
            if not self.own.builds(program):
                return "does not compile"
            verdict = first_failure(self.own, tests, {})
            if verdict != "survived":
                return verdict
        return "survived"

    def is_as_before(self, mutant):
        """Whether it makes the same object. What a header makes is not looked at."""
        if mutant.file not in self.unchanged:
            return False
        made = self.objects[mutant.file]
        return self.own.builds(os.path.relpath(made, self.own.build)) and made.read_bytes() == self.unchanged[mutant.file]
