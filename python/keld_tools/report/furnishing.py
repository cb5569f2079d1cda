"""What stands round the part in a picture: title, colour bar, notes, axes, a length, marks. Called by picture."""

from __future__ import annotations

import math

import numpy as np
from matplotlib import colormaps, patheffects
from matplotlib.cm import ScalarMappable
from matplotlib.colors import ListedColormap, Normalize
from matplotlib.lines import Line2D

BANDS = 16
HALO = [patheffects.withStroke(linewidth=3, foreground="white")]


def colouring(values: np.ndarray) -> ScalarMappable:
    """Bands of the range of some values; a constant field has one colour, that of its own value."""
    low, high = float(values.min(initial=math.inf)), float(values.max(initial=-math.inf))
    if not math.isfinite(low):
        low = high = 0.0
    turbo = colormaps["turbo"]
    if high - low <= 1e-6 * max(abs(low), abs(high), 1e-6):
        return ScalarMappable(Normalize(low - 0.5, low + 0.5), ListedColormap([turbo(0.5)]))
    return ScalarMappable(Normalize(low, high), ListedColormap(turbo((np.arange(BANDS) + 0.5) / BANDS)))


def furnish(figure, axes, title: str, subtitle: str, label: str, notes: list[str], axes3, mapping, constant) -> None:
    """constant: the one value of a field that is the same everywhere, else None."""
    figure.text(0.03, 0.955, title, fontsize=15, fontweight="bold", va="center")
    figure.text(0.03, 0.92, subtitle, fontsize=10.5, va="center", color="0.25")
    colour_bar(figure, mapping, label, constant)
    figure.text(0.26, 0.075, "\n".join(notes), fontsize=9.5, va="center", linespacing=1.5)
    draw_directions(figure, axes3)
    draw_length(figure, axes)


def colour_bar(figure, mapping: ScalarMappable, label: str, constant: float | None) -> None:
    bar = figure.colorbar(mapping, cax=figure.add_axes((0.87, 0.2, 0.022, 0.62)))
    bar.ax.set_title(label, fontsize=10.5, loc="left", pad=10, x=-0.6)
    bar.ax.tick_params(labelsize=10)
    if constant is not None:
        bar.set_ticks([constant], labels=[f"{constant:.4g}"])


def mark(axes, place, text: str, marker: str, seen: bool) -> None:
    """A boundary node or a gate; one that the part hides is faint."""
    x, y = place
    strength = 1.0 if seen else 0.35
    axes.plot([x], [y], marker, markersize=8, markerfacecolor="white", markeredgecolor="black", alpha=strength)
    axes.annotate(
        text, (x, y), (6, -11), textcoords="offset points", fontsize=8, alpha=strength, path_effects=HALO, clip_on=False
    )


def mark_greatest(axes, place, text: str) -> None:
    """A ring and its value at the node of the greatest value."""
    x, y = place
    axes.plot([x], [y], marker="o", markersize=8, markerfacecolor="none", markeredgecolor="black", markeredgewidth=1.4)
    left, right = axes.get_xlim()
    inward = -1 if x > 0.5 * (left + right) else 1
    axes.annotate(
        text,
        (x, y),
        (16 * inward, 14),
        textcoords="offset points",
        fontsize=10,
        fontweight="bold",
        ha="left" if inward > 0 else "right",
        path_effects=HALO,
    )


def draw_length(figure, axes) -> None:
    """A bar of 1, 2 or 5 times a power of ten mm, true to the undistorted part."""
    figure.canvas.draw()
    left, right = axes.get_xlim()
    share = axes.get_window_extent().width / figure.bbox.width
    per_mm = share / (right - left)
    wanted = 0.14 / per_mm
    power = 10.0 ** math.floor(math.log10(wanted))
    length = max(step for step in (1.0, 2.0, 5.0) if step * power <= wanted) * power
    figure.add_artist(
        Line2D([0.12, 0.12 + length * per_mm], [0.05, 0.05], color="black", linewidth=2.5, solid_capstyle="butt")
    )
    figure.text(0.12 + 0.5 * length * per_mm, 0.062, f"{length:g} mm", ha="center", va="bottom", fontsize=10)


def draw_directions(figure, axes3: np.ndarray) -> None:
    """x, y, z as arrows; one that points along the view is a dot."""
    inset = figure.add_axes((0.01, 0.01, 0.09, 0.12))
    inset.set_xlim(-1.5, 1.5)
    inset.set_ylim(-1.5, 1.5)
    inset.set_aspect("equal")
    inset.axis("off")
    for axis, name in enumerate("xyz"):
        dx, dy = axes3[0, axis], axes3[1, axis]
        if math.hypot(dx, dy) < 0.05:
            inset.plot([0], [0], "o", color="black", markersize=4)
            inset.text(0.12, -0.4, name, fontsize=9, ha="center", va="center")
            continue
        inset.annotate(
            "",
            (dx, dy),
            (0, 0),
            arrowprops={"arrowstyle": "-|>", "color": "black", "linewidth": 1.2, "shrinkA": 0, "shrinkB": 0},
        )
        away = 1.0 + 0.28 / math.hypot(dx, dy)
        inset.text(dx * away, dy * away, name, fontsize=10, ha="center", va="center")
