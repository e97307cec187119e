"""The report's text and tables."""

from results import number


def table(rows):
    head, *body = rows
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in body])


def with_unit(value, unit, like=None):
    return f"{number(value, like)} {unit}".strip()


def picture(folder, name, title):
    return [f"![{title}]({name}.svg)"] if (folder / f"{name}.svg").exists() else []


def machine(results):
    return ", ".join(f"{value} cores" if key == "Cores" else value for key, value in results.all["machine"])


def says_the_same(results, folder):
    """Whether the report that stands there differs by noise only."""
    readme = folder / "README.md"
    text = readme.read_text() if readme.is_file() else ""
    rows = [[cell.strip() for cell in line.split("|")[1:-1]] for line in text.splitlines() if line.startswith("| ")]
    # The figures with bounds have five cells, those without three.
    told = {row[0]: row for row in rows if len(row) == 5 and row[0] != "Figure"}
    bounded = [figure for figure in results.all["figures"] if "bound" in figure]
    if f"Measured on {machine(results)}." not in text or told.keys() != {figure["name"] for figure in bounded}:
        return False
    for figure in bounded:
        _, measured, bound, met, _ = told[figure["name"]]
        before = float(measured.split()[0].replace(",", ""))
        if (bound != f"{figure['sense']} {number(figure['bound'])}" or (met == "met") != figure["met"]
                or abs(figure["value"] - before) > abs(figure["bound"]) / 10):  # fmt: skip
            return False
    return True


def write_text(results, functions, folder):
    everything = results.all
    bounded = [figure for figure in everything["figures"] if "bound" in figure]
    plain = [figure for figure in everything["figures"] if "bound" not in figure]
    met = sum(figure["met"] for figure in bounded)
    parts = [
        "# How fast the worker is",
        "Written by `bench/run`; [what each figure means](../README.md). " +
        f"Measured on {machine(results)}.",
        f"**{met} of {len(bounded)} figures met.**",
        "![What is allowed, and what is used of it](bounds.svg)",
        table([("Figure", "Measured", "Bound", "", "In numbers")] + [
            (figure["name"], with_unit(figure["value"], figure["unit"], figure["bound"]),
             f"{figure['sense']} {number(figure['bound'])}", "met" if figure["met"] else "**missed**",
             figure["measured"]) for figure in bounded]),
    ]
    if everything["skipped"]:
        parts.append("Not measured here:\n\n" +
                     "\n".join(f"- {what}: {why}" for what, why in everything["skipped"]))
    for name, title in (("latency", "One line there, one line back"),
                        ("burst", "A hundred thousand lines at once"),
                        ("memory", "Memory over a million commands"),
                        ("shutter", "From CAPTURE to the file")):
        parts += picture(folder, name, title)
    parts += [
        "## How cost grows", "Nothing is promised of these.", *picture(folder, "growth", "How cost grows"),
        table([("", "Measured", "In numbers")] + [
            (figure["name"], with_unit(figure["value"], figure["unit"]), figure["measured"])
            for figure in plain]),
    ]
    parts += [
        "## The functions one by one",
        table([("Function", "Time")] + [
            (entry["name"].replace("_line", "").replace("_", " ").replace("/", ": "),
             f"{number(entry['cpu_time'])} {entry['time_unit']}") for entry in functions]),
    ]
    (folder / "README.md").write_text("\n\n".join(parts) + "\n")
