"""One build of the host's side and its tests that holds every mutant that can stand behind a switch."""

import collections
import concurrent.futures
import os
import re
import subprocess

from host_tree import HostTree
from mutations import mutants_of
from places import ROOT, STORE, digest_of_text, read_json, sources, write_json
from switches import Switched

SWITCH = ROOT / "tests/audit/mutants/switch.h"
PLACE = re.compile(r"^([^:\s][^:\n]*):(\d+):\d+: (error|fatal error|note):(.*)", re.MULTILINE)
# What the compiler says of a switch where it wants a constant, and a variable that need not be one.
CONSTANT = re.compile("call to non-.constexpr. function|called in a constant expression")
VARIABLE = re.compile(r"\bconstexpr [^(]*=|\bconstexpr [\w:]+ \w+;")
ROUNDS = 20


class SwitchedBuild:
    def __init__(self, folder):
        self.tree = HostTree(folder, ["-include", str(SWITCH), "-w"])
        self.numbers = {}
        self.mutants = {}  # of each file, those that stand in it still
        for file in sources("host"):
            self.mutants[file] = mutants_of(file, (ROOT / file).read_text())
            for mutant in self.mutants[file]:
                self.numbers[mutant] = len(self.numbers) + 1
        self.memory = folder.with_suffix(".json")
        self.variables = collections.defaultdict(set)
        self.written = {}
        for file in self.mutants:
            self.write(file)

    def write(self, file):
        numbered = {mutant: self.numbers[mutant] for mutant in self.mutants[file]}
        self.written[file] = written = Switched((ROOT / file).read_text(), numbered, self.variables[file])
        self.mutants[file] = [mutant for mutant in self.mutants[file] if mutant not in written.left_out]
        (self.tree.tree / file).write_text(written.text)

    def numbered(self):
        """{mutant: its number} of those that are in the build."""
        return {mutant: self.numbers[mutant] for mutants in self.mutants.values() for mutant in mutants}

    def build(self):
        self.recall()
        self.settle_sources()
        self.remember()
        self.tree.configure()
        for _ in range(ROUNDS):
            status, printed = self.tree.built_with_words()
            if status == 0:
                self.remember()
                return
            if not self.learn_from(printed):
                break
        (STORE / "build.log").write_text(printed)
        raise RuntimeError(f"the switched tree does not compile: {STORE / 'build.log'}")

    def remember(self):
        """What was found to compile, for the next run: finding it takes minutes."""
        write_json(self.memory, {file: {"source": digest_of_text((ROOT / file).read_text()),
                                        "mutants": [mutant.name for mutant in mutants],
                                        "variables": sorted(self.variables[file])}
                                 for file, mutants in self.mutants.items()})  # fmt: skip

    def recall(self):
        for file, known in read_json(self.memory).items():
            if file in self.mutants and known["source"] == digest_of_text((ROOT / file).read_text()):
                self.mutants[file] = [mutant for mutant in self.mutants[file] if mutant.name in known["mutants"]]
                self.variables[file] = set(known["variables"])
                self.write(file)

    def settle_sources(self):
        """Leaves out what does not compile, file by file: quicker than whole builds. Headers first, or each of their
        errors would come once for every source."""
        for ending in (".h", ".cpp"):
            files = [file for file in self.mutants if file.endswith(ending)]
            for _ in range(ROUNDS):
                with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
                    failed = {file: printed for file, printed in zip(files, pool.map(self.errors_in, files)) if printed}
                if not failed or not self.learn_from("".join(failed.values())):
                    break  # what is left is told by the whole build
                files = list(failed)

    def errors_in(self, file):
        command = ["g++", "-std=c++20", "-w", "-fsyntax-only", "-fmax-errors=0", "-include", SWITCH,
                   "-I", self.tree.tree, "-x", "c++", self.tree.tree / file]  # fmt: skip
        compiled = subprocess.run(command, capture_output=True, text=True)
        return compiled.stderr if compiled.returncode != 0 else ""

    def learn_from(self, printed):
        """Whether the compiler's words showed something to leave out."""
        # The compiler's cache has it name files as seen from where they are built.
        found = {(os.path.relpath(self.tree.build / path, self.tree.tree), int(line), kind != "note", bool(CONSTANT.search(words)))
                 for path, line, kind, words in PLACE.findall(printed)}  # fmt: skip
        found = [place for place in found if place[0] in self.written]
        variables, blamed = set(), set()
        for file, line, is_error, is_constant in found:
            if not is_error:
                continue
            text = self.written[file].source_line_of(line) if is_constant else ""
            if VARIABLE.search(text) and text not in self.variables[file]:
                variables.add((file, text))
            else:
                blamed |= {(file, mutant) for mutant in self.written[file].blamed_for(line)}
        if not variables and not blamed:
            # What is wrong here may come from a variable elsewhere, which a note names.
            blamed = {(file, mutant) for file, line, _, _ in found for mutant in self.written[file].blamed_for(line)}
        for file, text in variables:
            self.variables[file].add(text)
        for file, mutant in blamed:
            if mutant in self.mutants[file]:
                self.mutants[file].remove(mutant)
        for file in {file for file, _ in variables | blamed}:
            self.write(file)
        return bool(variables or blamed)
