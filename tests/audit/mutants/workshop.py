"""Builds one mutant at a time in a bundle of its own and runs the tests against it until one of them fails."""

import os
import pathlib
import shutil
import signal

from builds import DoesNotCompile, Hangs, run
from places import ROOT

CODEC = "worker/protocol/fields."  # the exhaustive tests of the codec are for the codec's own mutants


def end_processes_of(program):
    """A mutant may not end when its test has; nothing but this workshop runs this program."""
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and os.readlink(entry / "exe").removesuffix(" (deleted)") == str(program):
                os.kill(int(entry.name), signal.SIGKILL)
        except OSError:
            pass


class Workshop:
    def __init__(self, folder, plain, explored, tsan, coverage):
        self.folder = folder
        self.plain = plain
        self.explored = explored
        self.tsan = tsan
        self.coverage = coverage
        self.overlay = folder / "overlay"
        shutil.rmtree(folder, ignore_errors=True)
        for build in (plain, tsan):
            shutil.copytree(build.folder / "Contents", self.place(build) / "Contents")
            (self.place(build) / "bin").mkdir()
            shutil.copy(build.folder / "bin/process_tests", self.place(build) / "bin")

    def place(self, build):
        return self.folder / build.folder.name

    def worker(self, build):
        return self.place(build) / "Contents/MacOS/sony-worker"

    def judge(self, mutant):
        """What becomes of it: "killed by ...", "hangs in ...", "survived", "does not compile", "same object", or
        "not judged" and why."""
        shutil.rmtree(self.overlay, ignore_errors=True)
        changed = self.overlay / mutant.file
        changed.parent.mkdir(parents=True)
        changed.write_text(mutant.applied_to((ROOT / mutant.file).read_text()))
        try:
            return self.first_failure(mutant)
        except DoesNotCompile:
            return "does not compile"
        except (Hangs, OSError, RuntimeError) as failure:
            return f"not judged: {failure!r}"
        finally:
            for build in (self.plain, self.tsan):
                end_processes_of(self.worker(build))

    def first_failure(self, mutant):
        objects = self.objects(self.plain, mutant)
        if not mutant.changes_nothing and self.are_as_before(objects):
            return "same object"
        self.build_worker(self.plain, objects)
        # A changed header changes the test programs too: they come later, because they take longer to compile.
        in_source = mutant.file.endswith(".cpp")
        steps = [("unit tests", lambda: self.unit_tests(self.plain, mutant, objects))] if in_source else []
        for number, batch in enumerate(self.batches(mutant), 1):
            steps.append((f"transcripts, batch {number}", lambda batch=batch: self.transcripts(batch)))
        if not in_source:
            steps.append(("unit tests", lambda: self.unit_tests(self.plain, mutant, objects)))
        steps += [
            ("interleavings", lambda: self.interleavings(mutant)),
            ("process tests", lambda: self.process_tests(self.plain)),
            ("the thread sanitizer", lambda: self.under_the_thread_sanitizer(mutant)),
        ]
        for name, passes in steps:
            try:
                if not passes():
                    return f"killed by {name}"
            except Hangs:
                return f"hangs in {name}"
        return "survived"

    def objects(self, build, mutant):
        return build.changed_objects(mutant.file, self.overlay, self.place(build) / "objects")

    def are_as_before(self, objects):
        return all(path.read_bytes() == self.plain.base_object(source).read_bytes() for source, path in objects.items())

    def build_worker(self, build, objects):
        main = build.folder / "worker/CMakeFiles/sony-worker.dir/program/main.cpp.o"
        own = [] if "worker/program/main.cpp" in objects else [main]
        worker = self.worker(build)
        worker.unlink(missing_ok=True)
        build.link(worker, [*own, *objects.values()], run_path="$ORIGIN/../Frameworks/SonySDK")

    def build_tests(self, build, program, mutant, objects, libraries):
        tests = build.objects_of(program)
        if mutant.file.endswith(".h"):
            folder = self.place(build) / f"{program}_objects"
            tests |= build.changed_objects(mutant.file, self.overlay, folder, [f"tests/worker/{program}"])
        own = [path for source, path in objects.items() if source != "worker/program/main.cpp"]
        return build.link(self.place(build) / f"bin/{program}_tests", [*tests.values(), *own], libraries)

    def unit_tests(self, build, mutant, objects):
        if mutant.file == "worker/program/main.cpp":
            return True
        program = self.build_tests(build, "unit", mutant, objects, ["-lgtest_main", "-lgtest"])
        left_out = "" if mutant.file.startswith(CODEC) and build is self.plain else "-Codec.*"
        return run([program, f"--gtest_filter={left_out or '*'}", "--gtest_fail_fast"], seconds=40) == 0

    def interleavings(self, mutant):
        """A look at each scene and each fault, far from what the proof itself goes through."""
        objects = self.explored.changed_objects(mutant.file, self.overlay, self.folder / "explored")
        worker = self.explored.link_worker(self.folder / "explored/worker.so", objects.values())
        explore = [self.explored.folder / "bin/explore", "--worker", worker, "--jobs", "1"]
        return (
            run([*explore, "--bound", "1", "--runs", "45000"], seconds=120) == 0
            and run([*explore, "--faults"], seconds=120) == 0
        )

    def batches(self, mutant):
        """The transcripts that run through the changed lines, the quickest first."""
        end = mutant.line + mutant.before.count("\n")
        found = {name for line in range(mutant.line, end + 1)
                 for name in self.coverage["lines"].get(f"{mutant.file}:{line}", [])}  # fmt: skip
        if not found:
            # Constants and fields have no line that runs.
            found = set(self.coverage["seconds"])
        ordered = sorted(found, key=lambda name: (self.coverage["seconds"][name], name))
        quick = [name for name in ordered if self.coverage["seconds"][name] < 10]
        slow = [name for name in ordered if self.coverage["seconds"][name] >= 10]
        return [batch for batch in (quick[:8], quick[8:40], quick[40:], slow) if batch]

    def transcripts(self, batch):
        longest = max(self.coverage["seconds"][name] for name in batch)
        jobs = "32" if longest >= 10 else "8"
        command = [self.plain.folder / "bin/transcripts", "--worker", self.worker(self.plain), "--jobs", jobs, *batch]
        return run(command, seconds=60 + 2 * longest) == 0

    def process_tests(self, build, only="*"):
        command = [self.place(build) / "bin/process_tests", "--gtest_fail_fast", f"--gtest_filter={only}"]
        return run(command, seconds=240) == 0

    def under_the_thread_sanitizer(self, mutant):
        objects = self.objects(self.tsan, mutant)
        self.build_worker(self.tsan, objects)
        return self.unit_tests(self.tsan, mutant, objects) and self.process_tests(
            self.tsan, "TornLines.*:Bursts.*:*ExitUnderFire.*/Everything:Exits.*Dropped")  # fmt: skip
