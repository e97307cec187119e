"""Runs tests where a mutant can do no harm: with processes and a /tmp of their own, which go when the tests have."""

import os
import shutil

from builds import run

ALONE = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc", "sh", "-c",
         'mount -t tmpfs tmpfs /tmp && cd /tmp && ulimit -v 4000000 && ulimit -t "$1" && shift && exec "$@"', "cell"]  # fmt: skip
# What goes round in circles need not be waited for as long as what waits.
OF_THE_PROCESSOR = 3


def can_be_made():
    return os.geteuid() == 0 and shutil.which("unshare") is not None


def run_in_cell(command, seconds, environment=None):
    """As builds.run. A signal to every process reaches none outside."""
    return run([*ALONE, str(int(seconds / OF_THE_PROCESSOR) + 1), *command], seconds, environment)
