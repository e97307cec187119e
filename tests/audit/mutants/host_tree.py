"""A copy of the tree in which the host's side and its tests are built."""

import os
import shutil
import subprocess

from builds import run
from places import ROOT

PROGRAMS = ("brain_tests", "afternoons", "serve_tests", "store_tests", "host_tests", "tether_tests")
# Without notes for a debugger the same meaning gives the same object.
OPTIONS = ["-DCMAKE_BUILD_TYPE=Release", "-DCAMERA_WORKER_PAGE=OFF", "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"]


class HostTree:
    def __init__(self, folder, flags=()):
        self.tree, self.build = folder / "tree", folder / "build"
        self.flags = " ".join(["-O1", *flags])
        shutil.rmtree(folder, ignore_errors=True)
        self.tree.mkdir(parents=True)
        listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True).stdout
        copy = subprocess.run(["tar", "--null", "-T", "-", "-cf", "-"], cwd=ROOT, input=listed, check=True,
                              capture_output=True)  # fmt: skip
        subprocess.run(["tar", "-C", self.tree, "-xf", "-"], input=copy.stdout, check=True)
        # One compiler cache for all copies.
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(folder), CCACHE_NOHASHDIR="1",
                                CMAKE_CXX_COMPILER_LAUNCHER="ccache")  # fmt: skip

    def configure(self):
        subprocess.run(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", *OPTIONS,
                        f"-DCMAKE_CXX_FLAGS_RELEASE={self.flags}"], check=True, capture_output=True,
                       env=self.environment)  # fmt: skip

    def built_with_words(self):
        """(status, what the compiler said) of all the programs."""
        built = subprocess.run(["ninja", "-C", self.build, "-k", "0", *PROGRAMS], capture_output=True, text=True,
                               env=self.environment)  # fmt: skip
        return built.returncode, built.stdout + built.stderr

    def builds(self, *targets):
        return run(["ninja", "-C", self.build, "-j", "1", *targets], 600, self.environment) == 0

    def program(self, name):
        return self.build / "bin" / name
