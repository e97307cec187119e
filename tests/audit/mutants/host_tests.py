"""The tests of the host's side, one by one: how long each takes, and which mutants it runs through."""

import bisect
import collections
import concurrent.futures
import re
import subprocess
import tempfile
import time

from builds import Hangs
from cell import run_in_cell
from host_tree import PROGRAMS
from places import read_json, write_json

ROOM = 16384  # as switch.h has it
# What is one test; of the other programs each test counts by itself.
WHOLE = {"afternoons": ["--count", "4000", "--jobs", "1"]}
# Tests that wait for real processes wait side by side.
SIDE_BY_SIDE = 8
SIDE_BY_SIDE_FROM = 1  # second
ENOUGH = 60  # seconds, of tests one after the other; all of them together are 15 minutes
BATCHES = (0.4, 4, ENOUGH)  # seconds until each ends
LONGEST = 120  # seconds, of one test of the unchanged program


class Test(collections.namedtuple("Test", "program name seconds reached")):
    """name: as --gtest_filter takes it; empty: the whole program."""


def names_in(program):
    listed = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True, text=True).stdout
    suite = ""
    for row in listed.splitlines():
        name = row.split("#")[0].rstrip()
        if re.match(r"\S+\.$", name):
            suite = name
        elif name.startswith("  "):
            yield suite + name.strip()


def command_of(tree, program, names):
    if program in WHOLE:
        return [tree.program(program), *WHOLE[program]]
    return [tree.program(program), "--gtest_fail_fast", "--gtest_filter=" + ":".join(names)]


def observed(tree, program, name):
    """The test, run once as it is."""
    with tempfile.NamedTemporaryFile(dir=tree.build) as file:
        file.truncate(ROOM)
        start = time.monotonic()
        status = run_in_cell(command_of(tree, program, [name]), LONGEST, tree.environment | {"MUTANTS_REACHED": file.name})
        seconds = time.monotonic() - start
        if status != 0:
            raise RuntimeError(f"{program} {name} fails on the host's side as it is")
        return Test(program, name, seconds, {number for number, byte in enumerate(file.read()) if byte})


def all_tests(tree, store, digest):
    """Every test; measured once for the sources and tests as they are."""
    known = read_json(store)
    if known.get("digest") != digest:
        wanted = [(program, name) for program in PROGRAMS
                  for name in ([""] if program in WHOLE else names_in(tree.program(program)))]  # fmt: skip
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            tests = list(pool.map(lambda one: observed(tree, *one), wanted))
        known = {"digest": digest, "tests": [[*test[:3], sorted(test.reached)] for test in tests]}
        write_json(store, known)
    return [Test(program, name, seconds, set(reached)) for program, name, seconds, reached in known["tests"]]


def batches_of(tests):
    """The quickest first, so that what is noticed at all is noticed soon. What none of them notices in ENOUGH counts as
    not noticed."""
    spent = 0
    batches = [[] for _ in BATCHES]
    for test in sorted(tests, key=lambda test: test.seconds):
        spent += test.seconds
        if spent > ENOUGH:
            break
        batches[bisect.bisect_left(BATCHES, spent)].append(test)
    return [batch for batch in batches if batch]


def first_failure(tree, tests, environment):
    """What notices the mutant that the tree is, or that the environment turns on; "survived" when nothing does."""
    for batch in batches_of(tests):
        for program in dict.fromkeys(test.program for test in batch):
            chosen = [test for test in batch if test.program == program]
            seconds = 10 + 6 * sum(test.seconds for test in chosen)
            command = command_of(tree, program, [test.name for test in chosen])
            if sum(test.seconds for test in chosen) > SIDE_BY_SIDE_FROM:
                command = [tree.tree / "tests/in_shards", str(SIDE_BY_SIDE), *command]
            try:
                if run_in_cell(command, seconds, tree.environment | environment) != 0:
                    return f"killed by {program}"
            except Hangs:
                return f"hangs in {program}"
    return "survived"
