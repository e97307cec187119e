"""Where things are, and small files."""

import hashlib
import json
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[3]
PLAIN = ROOT / "build/dev"
TSAN = ROOT / "build/tsan"
COVERAGE = ROOT / "build/coverage"
STORE = ROOT / "build/mutants"
FOLDERS = ("worker",)


def files_in(*folders):
    listed = subprocess.run(["git", "ls-files", *folders], cwd=ROOT, check=True, capture_output=True, text=True)
    return [ROOT / name for name in listed.stdout.split("\n") if name]


def sources(*folders):
    """The worker's files, or those of other folders, by their paths below the root."""
    return [str(path.relative_to(ROOT)) for path in files_in(*(folders or FOLDERS)) if path.suffix in (".cpp", ".h")]


def digest_of(*files):
    """Of these files and the worker's."""
    digest = hashlib.sha1()
    for path in [*(ROOT / name for name in sources()), *files]:
        digest.update(path.read_bytes())
    return digest.hexdigest()


def digest_of_text(text):
    return hashlib.sha1(text.encode()).hexdigest()


def read_json(path):
    return json.loads(path.read_text()) if path.exists() else {}


def write_json(path, value):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(json.dumps(value))
