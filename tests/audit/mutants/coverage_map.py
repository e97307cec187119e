"""Which transcript runs through which line of the worker, and how long it takes."""

import collections
import concurrent.futures
import json
import os
import subprocess
import tempfile
import time

from places import ROOT, COVERAGE, digest_of, read_json, write_json


def transcripts():
    return sorted(str(path.relative_to(ROOT)) for path in (ROOT / "tests/worker/transcripts").rglob("*.transcript"))


def is_slow(transcript):
    return "@ slow" in (ROOT / transcript).read_text().splitlines()


def run_one(transcript):
    """(seconds, lines as FILE:LINE) of one transcript."""
    worker = COVERAGE / "Contents/MacOS/sony-worker"
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, LLVM_PROFILE_FILE=f"{folder}/%p.profraw")
        start = time.monotonic()
        command = [ROOT / "build/dev/bin/transcripts", "--worker", worker, ROOT / transcript]
        subprocess.run(command, env=environment, capture_output=True)
        seconds = time.monotonic() - start
        raw = [f"{folder}/{name}" for name in os.listdir(folder)]
        if not raw:
            return seconds, []
        merged = f"{folder}/all.profdata"
        subprocess.run(["llvm-profdata-19", "merge", "-sparse", "-o", merged, *raw], check=True)
        export = ["llvm-cov-19", "export", "-format=lcov", f"-instr-profile={merged}", worker]
        rows = subprocess.run(export, check=True, capture_output=True, text=True).stdout.splitlines()
    lines, file = [], ""
    for row in rows:
        if row.startswith("SF:"):
            file = os.path.relpath(row[3:], ROOT)
        elif row.startswith("DA:") and not row.endswith(",0"):
            lines.append(f"{file}:{row[3:].split(',')[0]}")
    return seconds, lines


def coverage_map(store):
    """The map for the sources and transcripts as they are; measured once."""
    digest = digest_of(*(ROOT / name for name in transcripts()))
    known = read_json(store)
    if known.get("digest") == digest:
        return known
    lines, seconds = collections.defaultdict(list), {}
    names = sorted(transcripts(), key=is_slow, reverse=True)
    # The slow ones wait rather than work.
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        for name, (took, covered) in zip(names, pool.map(run_one, names)):
            seconds[name] = took
            for line in covered:
                lines[line].append(name)
    known = {"digest": digest, "seconds": seconds, "lines": lines}
    write_json(store, known)
    return known
