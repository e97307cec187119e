#!/usr/bin/env python3
"""report.py RESULTS FUNCTIONS FOLDER: writes the report from what the two programs measured. FOLDER is new or empty, or has
an earlier report, whose pictures are deleted. An earlier report that says the same is left alone: on the same machine, the
same figures, each met or missed as before and within a tenth of its bound of what it was."""

import json
import sys
from pathlib import Path


LARGEST = 150_000  # bytes of all pictures: they are kept in the tree


def has_a_report(folder):
    text = folder / "README.md"
    return text.is_file() and "Written by `bench/run`" in text.read_text(errors="replace")


def main():
    folder = Path(sys.argv[3])
    if folder.exists() and not has_a_report(folder) and (not folder.is_dir() or any(folder.iterdir())):
        sys.exit(f"bench/report.py: {folder} is not empty and has no earlier report: name another folder")
    # Only now: NumPy and Matplotlib take a second, and need not be there to refuse.
    import pictures
    from results import Results
    from tables import says_the_same, write_text

    results = Results(sys.argv[1])
    if says_the_same(results, folder):
        print(f"Nothing that {folder}/README.md says has changed: it is left as it is")
        return
    folder.mkdir(exist_ok=True)
    for old in folder.glob("*.svg"):
        old.unlink()
    pictures.draw(results, folder)
    write_text(results, json.loads(Path(sys.argv[2]).read_text())["benchmarks"], folder)
    size = sum(picture.stat().st_size for picture in folder.glob("*.svg"))
    if size > LARGEST:
        sys.exit(f"bench/report.py: the pictures take {size} bytes, more than {LARGEST}: draw fewer points")


if __name__ == "__main__":
    main()
