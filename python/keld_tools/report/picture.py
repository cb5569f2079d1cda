"""BASE.png: the distorted part, coloured, with the undistorted outline. Called by view_cli.

Orthographic projection, triangles painted from back to front with smooth colours and shading; a coarse depth
picture hides the edges that lie behind the part.
"""

from __future__ import annotations

import math
from dataclasses import dataclass
from pathlib import Path

import matplotlib
import numpy as np

matplotlib.use("Agg")
from matplotlib import patheffects, pyplot  # noqa: E402
from matplotlib.cm import ScalarMappable  # noqa: E402
from matplotlib.collections import LineCollection, TriMesh  # noqa: E402
from matplotlib.colors import Normalize  # noqa: E402
from matplotlib.tri import Triangulation  # noqa: E402

from ..base import atomic  # noqa: E402
from ..base.ownership import MADE_BY_VIEW  # noqa: E402
from ..meshes import surface  # noqa: E402

# view -> (azimuth, elevation) in degrees: where the eye stands
VIEWS = {
    "iso": (-60.0, 30.0),
    "front": (-90.0, 0.0),
    "back": (90.0, 0.0),
    "left": (180.0, 0.0),
    "right": (0.0, 0.0),
    "top": (-90.0, 90.0),
    "bottom": (-90.0, -90.0),
}
SMOOTH_TRIANGLES = 60000  # coarser meshes are divided to about this many, for smooth colour and order
DEPTH_CELLS = 220
MARK = {"Software": MADE_BY_VIEW}


@dataclass
class Scene:
    """What to draw; mm."""

    points: np.ndarray  # (N, 3) undistorted
    triangles: np.ndarray  # (T, 3)
    displacement: np.ndarray  # (N, 3) that distorts the part
    values: np.ndarray  # (N,) that colour it
    label: str  # of the colours, with unit
    title: str
    notes: list[str]
    scale: float  # exaggeration
    view: tuple[float, float]


def automatic_scale(points: np.ndarray, displacement: np.ndarray) -> float:
    """1, 2 or 5 times a power of ten that shows the greatest displacement as a tenth of the part; at least 1."""
    greatest = np.linalg.norm(displacement, axis=1).max(initial=0.0)
    extent = float(np.ptp(points, axis=0).max())
    if greatest <= 0 or extent <= 0:
        return 1.0
    wanted = 0.1 * extent / greatest
    power = 10.0 ** math.floor(math.log10(wanted))
    return max(1.0, max(step for step in (1.0, 2.0, 5.0) if step * power <= wanted * (1 + 1e-9)) * power)


def frame(view: tuple[float, float]) -> np.ndarray:
    """Rows: to the right, up, and towards the eye."""
    azimuth, elevation = np.radians(view)
    eye = np.array(
        [math.cos(elevation) * math.cos(azimuth), math.cos(elevation) * math.sin(azimuth), math.sin(elevation)]
    )
    right = np.array([-math.sin(azimuth), math.cos(azimuth), 0.0])
    return np.array([right, np.cross(eye, right), eye])


def divided(corners: np.ndarray, values: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Triangles (T, 3, 3) with corner values (T, 3) cut into four until there are enough of them."""
    while 0 < len(corners) < SMOOTH_TRIANGLES:

        def quarters(c):
            m = 0.5 * (c + c[:, [1, 2, 0]])
            return np.concatenate(
                [
                    np.stack([c[:, 0], m[:, 0], m[:, 2]], 1),
                    np.stack([m[:, 0], c[:, 1], m[:, 1]], 1),
                    np.stack([m[:, 2], m[:, 1], c[:, 2]], 1),
                    m,
                ]
            )

        corners, values = quarters(corners), quarters(values)
    return corners, values


def shaded(colours: np.ndarray, normals: np.ndarray) -> np.ndarray:
    """Colours (T, 3, 4) darkened by the angle between normal and eye, from either side."""
    light = np.array([0.25, 0.45, 0.86])
    strength = 0.62 + 0.38 * np.abs(normals @ (light / np.linalg.norm(light)))
    result = colours.copy()
    result[..., :3] *= strength[:, None, None]
    return result


def visible(segments: np.ndarray, samples: np.ndarray, low: np.ndarray, span: float) -> np.ndarray:
    """Mask of short segments (n, 2, 3) whose middle isn't behind the `samples` (m, 3) of the surface."""

    def cell(p):
        index = np.clip(((p[:, :2] - low) / span * DEPTH_CELLS).astype(int), 0, DEPTH_CELLS - 1)
        return index[:, 0] * DEPTH_CELLS + index[:, 1]

    depth = np.full(DEPTH_CELLS * DEPTH_CELLS, -np.inf)
    np.maximum.at(depth, cell(samples), samples[:, 2])
    middle = segments.mean(axis=1)
    return middle[:, 2] >= depth[cell(middle)] - 0.02 * span


def cut_up(points: np.ndarray, edges: np.ndarray, longest: float) -> np.ndarray:
    """Edges (n, 2) as segments (m, 2, 3) of about `longest` at most."""
    a, b = points[edges[:, 0]], points[edges[:, 1]]
    pieces = np.maximum(1, np.ceil(np.linalg.norm(b - a, axis=1) / longest)).astype(int)
    edge = np.repeat(np.arange(len(edges)), pieces)
    place = np.arange(len(edge)) - np.repeat(np.cumsum(pieces) - pieces, pieces)
    step = ((b - a) / pieces[:, None])[edge]
    start = a[edge] + place[:, None] * step
    return np.stack([start, start + step], axis=1)


def draw(path: Path, scene: Scene) -> None:
    """Write the picture."""
    axes3 = frame(scene.view)
    before = scene.points @ axes3.T
    after = (scene.points + scene.scale * scene.displacement) @ axes3.T
    used = np.unique(scene.triangles)
    both = np.concatenate([before[used], after[used]])[:, :2]
    low, high = both.min(axis=0), both.max(axis=0)
    span = float((high - low).max()) or 1.0

    corners, values = divided(after[scene.triangles], scene.values[scene.triangles])
    order = np.argsort(corners[:, :, 2].mean(axis=1), kind="stable")
    corners, values = corners[order], values[order]
    norm = colour_range(scene.values[used])
    mapping = ScalarMappable(norm, "turbo")
    flat = corners.reshape(-1, 3)
    normals = surface.unit_normals(flat, np.arange(len(flat)).reshape(-1, 3))
    colours = shaded(mapping.to_rgba(values), normals)

    figure = pyplot.figure(figsize=(11.0, 8.0), dpi=150)
    axes = figure.add_axes((0.03, 0.15, 0.81, 0.74))
    surface_mesh = TriMesh(Triangulation(flat[:, 0], flat[:, 1], np.arange(len(flat)).reshape(-1, 3)))
    surface_mesh.set_facecolor(colours.reshape(-1, 4))
    axes.add_collection(surface_mesh)
    edges = surface.feature_edges(scene.points, scene.triangles, surface.edges_of(scene.triangles))
    outline = cut_up(after, edges, span / 80)
    samples = np.concatenate([flat, corners.mean(axis=1)])
    axes.add_collection(
        LineCollection(
            outline[visible(outline, samples, low, span)][:, :, :2], colors="black", linewidths=0.8, capstyle="round"
        )
    )
    axes.add_collection(LineCollection(before[edges][:, :, :2], colors="0.45", linewidths=0.6, alpha=0.8))
    axes.set_aspect("equal")
    axes.set_xlim(low[0] - 0.06 * span, high[0] + 0.06 * span)
    axes.set_ylim(low[1] - 0.06 * span, high[1] + 0.06 * span)
    axes.axis("off")
    mark_greatest(axes, scene, after, used)
    furnish(figure, axes, scene, axes3, mapping)
    atomic.write_file(path, lambda target: figure.savefig(target, format="png", facecolor="white", metadata=MARK))
    pyplot.close(figure)


def colour_range(values: np.ndarray) -> Normalize:
    low, high = float(values.min(initial=math.inf)), float(values.max(initial=-math.inf))
    if not low < high:
        low, high = low - 0.5, low + 0.5
    return Normalize(low, high)


def mark_greatest(axes, scene: Scene, after: np.ndarray, used: np.ndarray) -> None:
    """A ring and its value at the node of the greatest value."""
    if not np.ptp(scene.values[used]) > 0:
        return
    node = used[np.abs(scene.values[used]).argmax()]
    x, y = after[node, :2]
    axes.plot([x], [y], marker="o", markersize=8, markerfacecolor="none", markeredgecolor="black", markeredgewidth=1.4)
    left, right = axes.get_xlim()
    inward = -1 if x > 0.5 * (left + right) else 1
    text = axes.annotate(
        f"{scene.values[node]:.4g} mm",
        (x, y),
        (16 * inward, 14),
        textcoords="offset points",
        fontsize=10,
        fontweight="bold",
        ha="left" if inward > 0 else "right",
    )
    text.set_path_effects([patheffects.withStroke(linewidth=3, foreground="white")])


def furnish(figure, axes, scene: Scene, axes3: np.ndarray, mapping: ScalarMappable) -> None:
    """Title, colour bar, notes, a length to measure by and the directions of the axes."""
    figure.text(0.03, 0.955, scene.title, fontsize=15, fontweight="bold", va="center")
    figure.text(
        0.03,
        0.92,
        f"distorted part, displacement shown {scene.scale:g} times; grey lines: undistorted outline",
        fontsize=10.5,
        va="center",
        color="0.25",
    )
    bar = figure.colorbar(mapping, cax=figure.add_axes((0.87, 0.2, 0.022, 0.62)))
    bar.ax.set_title(scene.label, fontsize=10.5, loc="left", pad=10, x=-0.6)
    bar.ax.tick_params(labelsize=10)
    figure.text(0.26, 0.075, "\n".join(scene.notes), fontsize=9.5, va="center", linespacing=1.5)
    draw_directions(figure, axes3)
    draw_length(figure, axes)


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
        pyplot.Line2D([0.12, 0.12 + length * per_mm], [0.05, 0.05], color="black", linewidth=2.5, solid_capstyle="butt")
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
