"""The pictures of the report: one colour for each program, labels where the lines are."""

import io
import math
import subprocess

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
import numpy as np

from results import number

INK, QUIET, FAINT = "#1d2733", "#6b7683", "#e3e7eb"
COLOR = {"worker": "#0a66c2", "echo": "#e07b00", "bare pipes": "#8b96a3"}
CABLES = ["#0b3c6f", "#0a66c2", "#5aa9e6"]
MISSED = "#c62828"

plt.rcParams.update({
    "svg.hashsalt": "bench", "svg.fonttype": "none", "font.size": 10.5, "font.family": "DejaVu Sans",
    # A line may leave out points that lie closer to it than anybody sees.
    "path.simplify_threshold": 0.35,
    "text.color": INK, "axes.labelcolor": QUIET, "axes.edgecolor": QUIET, "axes.linewidth": 0.8,
    "xtick.color": QUIET, "ytick.color": QUIET, "xtick.labelsize": 9, "ytick.labelsize": 9,
    "axes.spines.top": False, "axes.spines.right": False, "axes.grid": True, "axes.axisbelow": True,
    "grid.color": FAINT, "grid.linewidth": 0.8, "lines.linewidth": 2, "lines.solid_capstyle": "round",
    "figure.facecolor": "white",
})


# Four digits are a tenth of a pixel here.
SMALLER = ["scour", "--quiet", "--set-precision=4", "--enable-id-stripping", "--enable-comment-stripping", "--shorten-ids",
           "--indent=none", "--no-line-breaks", "--remove-metadata", "--strip-xml-prolog",
           "--disable-style-to-xml"]  # fmt: skip


def canvas(title, subtitle, panels=1, height=3.6, width=9, **options):
    figure, axes = plt.subplots(1, panels, figsize=(width, height), squeeze=False, **options)
    figure.text(0.012, 1 - 0.14 / height, title, fontsize=14, fontweight="bold", va="top")
    figure.text(0.012, 1 - 0.44 / height, subtitle, fontsize=10, color=QUIET, va="top")
    return figure, axes[0]


def save(figure, folder, name, **margins):
    height = figure.get_figheight()
    figure.subplots_adjust(**{"top": 1 - 1.0 / height, "bottom": 0.62 / height, "left": 0.075,
                              "right": 0.95, **margins})
    drawn = io.StringIO()
    figure.savefig(drawn, format="svg", metadata={"Date": None, "Creator": None})
    # Whoever has another font reads it in that one.
    text = drawn.getvalue().replace("'DejaVu Sans'", "'DejaVu Sans', Verdana, sans-serif")
    small = subprocess.run(SMALLER, input=text, check=True, capture_output=True, text=True).stdout
    (folder / f"{name}.svg").write_text(small)
    plt.close(figure)


def label(axes, x, y, text, color, **options):
    axes.annotate(text, (x, y), color=color, fontweight="bold", fontsize=9.5,
                  **{"xytext": (6, 0), "textcoords": "offset points", "va": "center",
                     "annotation_clip": False, **options})


def draw_bounds(results, folder):
    """Every figure that has a bound, but for those that must be 0, as the share of the bound that it uses."""
    bounded = [figure for figure in results.all["figures"] if figure.get("bound")]
    figure, (axes,) = canvas("What is allowed, and what is used of it",
                             "Each figure against its bound: left of the line is met",
                             height=1.25 + 0.29 * len(bounded))
    for row, entry in enumerate(reversed(bounded)):
        value, bound = entry["value"], entry["bound"]
        share = value / bound if entry["sense"] == "at most" else bound / value
        share = max(0, min(share, 1.25))
        color = COLOR["worker"] if entry["met"] else MISSED
        axes.plot([0, share], [row, row], color=color, linewidth=2, alpha=0.35)
        axes.plot([share], [row], "o", color=color, markersize=6.5)
        axes.text(-0.02, row, entry["name"], ha="right", va="center", fontsize=9.5)
        unit = "" if entry["unit"].startswith("of ") else " " + entry["unit"]
        axes.text(1.52, row, f"{number(value, bound)}{unit}", ha="right", va="center", fontsize=9.5,
                  color=color, fontweight="bold")
        axes.text(1.55, row, f"{entry['sense']} {number(bound)}", va="center", fontsize=9, color=QUIET)
    axes.axvline(1, color=INK, linewidth=1.2)
    axes.set(xlim=(0, 1.52), ylim=(-0.7, len(bounded) - 0.3), yticks=[],
             xticks=[0, 0.25, 0.5, 0.75, 1])
    axes.set_xticklabels(["0", "¼", "½", "¾", "the bound"])
    axes.grid(axis="y", visible=False)
    axes.spines["left"].set_visible(False)
    axes.spines["bottom"].set_visible(False)
    axes.tick_params(length=0)
    save(figure, folder, "bounds", left=0.42, right=0.87, bottom=0.4 / figure.get_figheight())


def draw_latency(results, folder):
    """Distributions one above the other, with the median and the 99th percentile."""
    pictures = results.pictures("latency")
    figure, panels = canvas("One line there, one line back",
                            "Round trips of PRELOAD: distribution, median and 99th percentile, in microseconds",
                            len(pictures), height=4.2)
    for axes, picture in zip(panels, pictures):
        curves = results.curves(picture)
        low = min(points[5, 0] for _, points in curves) * 0.8
        high = max(points[995, 0] for _, points in curves) * 1.3
        edges = np.geomspace(low, high, 120)
        for row, (name, points) in enumerate(reversed(curves)):
            # Each thousandth of the trips lies between two neighbours.
            density = np.interp(edges[1:], points[:, 0], points[:, 1]) \
                - np.interp(edges[:-1], points[:, 0], points[:, 1])
            kernel = np.hanning(7)
            density = np.convolve(density, kernel / kernel.sum(), "same")
            density *= 0.78 / density.max()
            middle = np.sqrt(edges[1:] * edges[:-1])
            color = COLOR[name]
            axes.fill_between(middle, row, row + density, color=color, alpha=0.28, linewidth=0)
            axes.plot(middle, row + density, color=color, linewidth=1.6)
            median, p99 = points[500, 0], points[990, 0]
            axes.plot([median, median], [row, row + 0.78], color=color, linewidth=1.2)
            axes.plot([p99], [row], "|", color=color, markersize=12, markeredgewidth=2)
            axes.annotate(f"{median:.1f}", (median, row + 0.8), ha="center", va="bottom",
                          fontsize=9.5, fontweight="bold", color=color)
            far_right = math.log(p99 / low) > 0.75 * math.log(high / low)
            axes.annotate(f"p99  {p99:,.{1 if p99 < 100 else 0}f}", (p99, row + 0.16), ha="right" if far_right else "left",
                          va="bottom", fontsize=8.5, color=color)
            axes.text(-0.02, row + 0.12, name, transform=axes.get_yaxis_transform(), ha="right",
                      color=color, fontweight="bold")
        axes.set_xscale("log")
        near = (1, 2, 3, 4, 5, 6, 8, 10, 12, 15, 20, 30, 40, 50)
        far = (1, 2, 5, 10, 20, 50, 100, 200, 500, 1000)
        ticks = [tick for tick in (near if high < 15 * low else far) if low <= tick <= high]
        axes.set_xticks(ticks, [f"{tick}" for tick in ticks])
        axes.minorticks_off()
        axes.set(ylim=(-0.05, len(curves) + 0.05), yticks=[], xlim=(low, high), xlabel="µs")
        axes.set_title(picture.split(", ")[1], loc="left", fontsize=10, color=QUIET)
        axes.grid(axis="y", visible=False)
        axes.spines["left"].set_visible(False)
    save(figure, folder, "latency", left=0.115, right=0.985, wspace=0.32, top=1 - 1.15 / 4.2)


def draw_burst(results, folder):
    pictures = results.pictures("burst")
    figure, panels = canvas("A hundred thousand lines at once",
                            "Lines answered since the first was written, in thousands; each thin line is a round",
                            len(pictures), sharey=True)
    for axes, picture in zip(panels, pictures):
        curves = results.curves(picture)
        for name, points in curves:
            # Of a hundred lines side by side nobody sees more.
            shown = np.append(np.arange(0, len(points) - 1, len(points) // 20 + 1), len(points) - 1)
            axes.plot(points[shown, 0], points[shown, 1] / 1e3, color=COLOR[name], linewidth=0.9, alpha=0.55)
        for name in ("worker", "echo"):
            ends = [points[-1, 0] for curve, points in curves if curve == name]
            end = sorted(ends)[len(ends) // 2]
            axes.plot([end], [curves[0][1][-1, 1] / 1e3], "o", color=COLOR[name], markersize=5)
            axes.text(0.97, 0.16 if name == "worker" else 0.06, f"{name}: {end:.0f} ms",
                      transform=axes.transAxes, ha="right", color=COLOR[name], fontweight="bold",
                      fontsize=9.5)
        axes.set(xlim=(0, None), ylim=(0, None), xlabel="ms")
        axes.set_title(picture.split(", ")[1], loc="left", fontsize=10, color=QUIET)
    save(figure, folder, "burst", wspace=0.08, top=1 - 1.15 / 3.6, left=0.06, right=0.98)


def draw_memory(results, folder):
    figure, (axes,) = canvas("Memory over a million commands", "Resident megabytes")
    highest = 0
    for name, points in results.curves("memory"):
        axes.plot(points[:, 0] / 1e3, points[:, 1] / 1e6, color=COLOR[name])
        label(axes, points[-1, 0] / 1e3, points[-1, 1] / 1e6, f"{name}, {points[-1, 1] / 1e6:.2f} MB",
              COLOR[name])
        highest = max(highest, points[:, 1].max() / 1e6)
    axes.set(xlim=(0, points[-1, 0] / 1e3), ylim=(0, highest * 1.25), xlabel="thousand commands")
    save(figure, folder, "memory", left=0.05, right=0.84)


def draw_shutter(results, folder):
    figure, (axes,) = canvas("From CAPTURE to the file",
                             "Seconds by the size of the file; dots: measured, lines: the camera and its cable alone",
                             height=4)
    alone = dict(results.curves("shutter to file, camera alone"))
    for (name, points), color in zip(results.curves("shutter to file"), CABLES):
        axes.plot(alone[name][:, 0], alone[name][:, 1], color=color, linewidth=1.4, alpha=0.6)
        axes.plot(points[:, 0], points[:, 1], "o", color=color, markersize=6)
        label(axes, points[-1, 0], points[-1, 1], name, color, xytext=(9, 0))
    axes.axhspan(0, 0.7, color=FAINT, alpha=0.5, linewidth=0)
    axes.text(51, 0.35, "half-press, 0.7 s", ha="right", va="center", color=QUIET, fontsize=9)
    axes.set(xlim=(0, 52), ylim=(0, None), xlabel="MB")
    save(figure, folder, "shutter", left=0.05, right=0.82)


def draw_growth(results, folder):
    figure, (queue, side) = canvas(
        "How cost grows",
        "Left: memory of commands that wait behind a hanging call. Right: an answer, by the number of workers",
        2)
    for (name, points), color in zip(results.curves("queue"), CABLES[::-1]):
        queue.plot(points[:, 0] / 1e3, points[:, 1] / 1e6, color=color)
        label(queue, points[-1, 0] / 1e3, points[-1, 1] / 1e6, name, color)
    queue.set(xlim=(0, 100), ylim=(0, None), xlabel="thousand commands", ylabel="MB")
    highest = 0
    for name, points in results.curves("side by side"):
        side.plot(points[:, 0], points[:, 1], "o-", color=COLOR[name], markersize=5)
        highest = max(highest, points[:, 1].max())
        label(side, points[-1, 0], points[-1, 1], name, COLOR[name],
              xytext=(8, 6 if name == "worker" else -6))
    side.set(xlim=(0.5, 10.2), ylim=(0, highest * 1.25), xticks=[1, 2, 4, 6, 8, 10], xlabel="workers at once",
             ylabel="µs a worker")
    save(figure, folder, "growth", wspace=0.42, left=0.06, right=0.92)


def draw(results, folder):
    draw_bounds(results, folder)
    draw_latency(results, folder)
    draw_burst(results, folder)
    if results.curves("memory"):
        draw_memory(results, folder)
    if results.curves("queue"):
        draw_growth(results, folder)
    draw_shutter(results, folder)
