"""Builds of the whole tree, of which a mutant takes everything but what it changes."""

import os
import shlex
import shutil
import signal
import subprocess
import threading

from places import FOLDERS, ROOT, STORE, digest_of, read_json

class DoesNotCompile(Exception):
    pass


class Hangs(Exception):
    pass


def run(command, seconds, environment=None):
    """The status. What runs for too long is killed with all that it has started in its session, and Hangs."""
    quiet = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    parts = [str(part) for part in command]
    process = subprocess.Popen(parts, **quiet, env=environment, cwd=ROOT, start_new_session=True)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        raise Hangs() from None


class Build:
    def __init__(self, folder, flags=()):
        self.folder = folder
        self.flags = flags
        self.commands = {}
        for entry in read_json(folder / "compile_commands.json"):
            command = [part for part in shlex.split(entry["command"]) if "ccache" not in part]
            if self.takes(command[command.index("-o") + 1]):
                self.commands[os.path.relpath(entry["file"], ROOT)] = command

    def takes(self, output):
        """Whether this build is made of that object."""
        return "tests/explore/" not in output

    def compile(self, source, output, overlay):
        """The object of a source of the tree, seen through a folder with changed files."""
        # Without notes for a debugger the same meaning gives the same object; what warnings are about is not.
        command = [part for part in self.commands[source] if not part.startswith(("-W", "-g"))]
        changed = overlay / source
        command[command.index("-o") + 1] = output
        command[command.index("-c") + 1] = changed if changed.exists() else ROOT / source
        command[1:1] = ["-I", overlay / "worker", "-I", overlay]
        if run(command, seconds=120) != 0:
            raise DoesNotCompile()
        return output

    def base_object(self, source):
        """The object of the source as it is."""
        base = STORE / f"base-{digest_of()[:12]}" / (source.replace("/", "_") + ".o")
        if not base.exists():
            base.parent.mkdir(parents=True, exist_ok=True)
            fresh = base.with_suffix(f".{threading.get_ident()}")
            self.compile(source, fresh, STORE / "nothing")
            fresh.rename(base)
        return base

    def sources_with(self, file, folders=FOLDERS):
        """The sources in these folders that are made of a file: itself, or all that include it."""
        if file.endswith(".cpp"):
            return [file]
        return [source for source in self.commands if source.startswith(tuple(folder + "/" for folder in folders))
                and str(ROOT / file) in self.files_in(source)]  # fmt: skip

    def files_in(self, source):
        command = list(self.commands[source])
        del command[command.index("-o") : command.index("-o") + 2]
        listed = subprocess.run([*command, "-MM"], cwd=ROOT, capture_output=True, text=True, check=True)
        return {os.path.normpath(path) for path in listed.stdout.replace("\\\n", " ").split()}

    def changed_objects(self, file, overlay, into, folders=FOLDERS):
        """The objects that a changed file makes, newly compiled into a folder."""
        shutil.rmtree(into, ignore_errors=True)
        into.mkdir(parents=True)
        return {source: self.compile(source, into / (source.replace("/", "_") + ".o"), overlay)
                for source in self.sources_with(file, folders)}  # fmt: skip

    def objects_of(self, program):
        """The objects of a test program: {source: object}."""
        folder = self.folder / "tests/worker" / program
        return {f"tests/worker/{program}/{path.name.removesuffix('.o')}": path
                for path in folder.glob("CMakeFiles/*_tests.dir/*.cpp.o")}  # fmt: skip

    def link(self, output, objects, libraries=(), run_path=None):
        # The linker takes from the library only what the objects before it leave open.
        sdk = self.folder / "Contents/Frameworks/SonySDK"
        command = ["c++", *self.flags, "-o", output, *objects, self.folder / "worker/libworker_core.a", "-L", sdk, "-lCr_Core",
                   *libraries, "-pthread", f"-Wl,-rpath,{run_path or sdk}"]  # fmt: skip
        if run(command, seconds=120) != 0:
            raise RuntimeError(f"{output} cannot be linked")
        return output


class ExploredBuild(Build):
    """The worker's sources once more, in the way in which the scheduler of tests/explore plays them."""

    def takes(self, output):
        return "/explored_objects.dir/" in output

    def link_worker(self, output, objects):
        wrapped = (ROOT / "tests/explore/wrapped.txt").read_text().split()
        command = ["c++", "-shared", "-o", output, "-Wl,-Bsymbolic,-z,now,--undefined=main",
                   *(f"-Wl,--wrap={call}" for call in wrapped),
                   *objects, self.folder / "tests/explore/libexplored_objects.a"]  # fmt: skip
        if run(command, seconds=120) != 0:
            raise RuntimeError(f"{output} cannot be linked")
        return output
