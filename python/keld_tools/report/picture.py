"""BASE.png: the distorted part, coloured, with the undistorted outline. Called by view_cli, page and study.

Orthographic projection through a depth buffer of twice the picture's pixels: what lies behind is hidden, triangles and
lines alike. Colours are those of the bar, without shading; edges draw the shape.
"""

from __future__ import annotations

import math
from dataclasses import dataclass, field
from pathlib import Path

import matplotlib
import numpy as np

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402
from matplotlib.collections import LineCollection  # noqa: E402

from ..base import atomic  # noqa: E402
from ..base.ownership import MADE_BY_VIEW  # noqa: E402
from ..meshes import feature_lines  # noqa: E402
from . import furnishing  # noqa: E402
from .raster import EMPTY, Raster, rasterise  # noqa: E402

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
FIGURE_INCHES, DOTS_PER_INCH = (11.0, 8.0), 150
AXES = (0.03, 0.15, 0.81, 0.74)  # of the figure
FINER = 2  # pixels of the depth buffer per pixel of the picture, along each side
MARK = {"Software": MADE_BY_VIEW}


@dataclass
class Scene:
    """What to draw."""

    points_mm: np.ndarray  # (N, 3) undistorted
    triangles: np.ndarray  # (T, 3)
    displacement_mm: np.ndarray  # (N, 3) that distorts the part
    values_mm: np.ndarray  # (N,) that colour it
    label: str  # of the colours, with unit
    title: str
    notes: list[str]
    scale: float  # exaggeration
    view: tuple[float, float]
    boundary: list[int] = field(default_factory=list)  # node indices
    gates: list[int] = field(default_factory=list)
    edges: np.ndarray | None = None  # (F, 2) feature edges, where the caller has them already
    value_range_mm: tuple[
        float, float
    ] | None = None  # of the colours, for pictures to compare; None: that of the values
    reach: float | None = None  # exaggeration that the picture's frame leaves room for; None: its own


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


@dataclass
class Canvas:
    """From mm in the frame of the view to pixels, both sides alike; rows go down."""

    left_mm: float
    top_mm: float
    per_mm: float  # pixels
    width: int
    height: int

    def pixels(self, points_mm: np.ndarray, finer: int = 1) -> np.ndarray:
        """(..., 3) x, y and depth in pixels."""
        result = points_mm * (self.per_mm * finer)
        result[..., 0] -= self.left_mm * self.per_mm * finer
        result[..., 1] = self.top_mm * self.per_mm * finer - result[..., 1]
        return result

    @property
    def extent_mm(self) -> tuple[float, float, float, float]:
        """left, right, bottom, top."""
        return (
            self.left_mm,
            self.left_mm + self.width / self.per_mm,
            self.top_mm - self.height / self.per_mm,
            self.top_mm,
        )


def canvas_for(flat_mm: np.ndarray, width: int, height: int) -> Canvas:
    """All of some points (n, 2) with a margin, in the middle."""
    low, high = flat_mm.min(axis=0), flat_mm.max(axis=0)
    size = np.maximum(high - low, 1e-9)
    per_mm = float(min(width / size[0], height / size[1])) / 1.1
    middle = 0.5 * (low + high)
    return Canvas(
        float(middle[0] - 0.5 * width / per_mm), float(middle[1] + 0.5 * height / per_mm), per_mm, width, height
    )


def draw(path: Path, scene: Scene) -> None:
    """Write the picture."""
    save(path, compose(scene), MARK)


def save(path: Path, figure, mark: dict[str, str]) -> None:
    """Write a figure as PNG with the mark of its program, and close it."""
    atomic.write_file(path, lambda target: figure.savefig(target, format="png", facecolor="white", metadata=mark))
    pyplot.close(figure)


def pixels_of(figure) -> np.ndarray:
    """(H, W, 3) of a figure, 0 to 255."""
    figure.canvas.draw()
    return np.asarray(figure.canvas.buffer_rgba())[:, :, :3].copy()


def tile(path: Path, figures: list, columns: int, mark: dict[str, str]) -> None:
    """Figures of one size in rows as one PNG; closes them."""
    pictures = [pixels_of(figure) for figure in figures]
    for figure in figures:
        pyplot.close(figure)
    pictures += [np.full_like(pictures[0], 255)] * (-len(pictures) % columns)
    rows = [np.concatenate(pictures[i : i + columns], axis=1) for i in range(0, len(pictures), columns)]
    pyplot.imsave(path, np.concatenate(rows), format="png", metadata=mark)


def compose(scene: Scene, dots_per_inch: int = DOTS_PER_INCH):
    """The whole figure, for a caller to save and close."""
    axes3 = frame(scene.view)
    before, after = (p @ axes3.T for p in (scene.points_mm, scene.points_mm + scene.scale * scene.displacement_mm))
    used = np.unique(scene.triangles)
    reach = after if scene.reach is None else (scene.points_mm + scene.reach * scene.displacement_mm) @ axes3.T
    size = [round(a * inches * dots_per_inch) for a, inches in zip(AXES[2:], FIGURE_INCHES)]
    canvas = canvas_for(np.concatenate([before[used], reach[used]])[:, :2], *size)
    front = rasterise(canvas.pixels(after, FINER)[scene.triangles], size[0] * FINER, size[1] * FINER)
    mapping = furnishing.colouring(np.array(scene.value_range_mm) if scene.value_range_mm else scene.values_mm[used])

    figure = pyplot.figure(figsize=FIGURE_INCHES, dpi=dots_per_inch)
    axes = figure.add_axes(AXES)
    axes.imshow(painted(front, scene, mapping), extent=canvas.extent_mm, interpolation="nearest", aspect="auto")
    axes.axis("off")
    draw_lines(axes, scene, canvas, front, before, after)
    draw_marks(axes, scene, canvas, front, after, used)
    constant = float(scene.values_mm[used[0]]) if mapping.cmap.N == 1 else None
    furnishing.furnish(
        figure,
        axes,
        scene.title,
        f"distorted part, displacement shown {scene.scale:g} times; grey lines: undistorted outline",
        scene.label,
        scene.notes,
        axes3,
        mapping,
        constant,
    )
    return figure


def painted(front: Raster, scene: Scene, mapping) -> np.ndarray:
    """(H, W, 4) of the picture's own pixels, each the mean of the finer ones."""
    values = front.interpolated(scene.values_mm[scene.triangles])
    colours = mapping.to_rgba(np.nan_to_num(values), bytes=True)
    colours[front.triangle == EMPTY] = (255, 255, 255, 0)
    total = np.zeros((*(side // FINER for side in front.triangle.shape), 4), np.uint16)
    for row in range(FINER):
        for column in range(FINER):
            total += colours[row::FINER, column::FINER]
    return (total // FINER**2).astype(np.uint8)


def draw_lines(axes, scene: Scene, canvas: Canvas, front: Raster, before: np.ndarray, after: np.ndarray) -> None:
    """Edges of the part where nothing hides them; the undistorted outline only where it lies beside the part."""
    edges = feature_lines.feature_edges(scene.points_mm, scene.triangles) if scene.edges is None else scene.edges
    finely = canvas.pixels(after, FINER)
    lines = feature_lines.cut_up(finely, edges, 3.0 * FINER)
    lines = lines[front.shows(lines.mean(axis=1), behind=0.5 * FINER)]
    own = rasterise(canvas.pixels(before)[scene.triangles], canvas.width, canvas.height)
    outline = feature_lines.cut_up(canvas.pixels(before), edges, 3.0)
    middle = outline.mean(axis=1)
    column, row = (np.clip((middle[:, i] * FINER).astype(int), 0, front.triangle.shape[1 - i] - 1) for i in (0, 1))
    outline = outline[own.shows(middle, behind=0.5) & (front.triangle[row, column] == EMPTY)]
    for segments, finer, colour, width in ((outline, 1, "0.55", 0.7), (lines, FINER, "black", 0.8)):
        axes.add_collection(
            LineCollection(on_axes(segments, canvas, finer), colors=colour, linewidths=width, capstyle="round")
        )


def on_axes(pixels: np.ndarray, canvas: Canvas, finer: int) -> np.ndarray:
    """(..., 2) mm of places in pixels."""
    flat = pixels[..., :2] / (canvas.per_mm * finer)
    return np.stack([canvas.left_mm + flat[..., 0], canvas.top_mm - flat[..., 1]], axis=-1)


def draw_marks(axes, scene: Scene, canvas: Canvas, front: Raster, after: np.ndarray, used: np.ndarray) -> None:
    """Boundary nodes, gates, and the greatest value."""
    marks = [(node, str(i), "^") for i, node in enumerate(scene.boundary, 1)] + [(g, "gate", "o") for g in scene.gates]
    if marks:
        seen = front.shows(canvas.pixels(after[[node for node, _, _ in marks]], FINER), behind=FINER)
        for (node, text, marker), shown in zip(marks, seen):
            furnishing.mark(axes, after[node, :2], text, marker, bool(shown))
    if np.ptp(scene.values_mm[used]) > 0:
        node = used[np.abs(scene.values_mm[used]).argmax()]
        furnishing.mark_greatest(axes, after[node, :2], f"{scene.values_mm[node]:.4g} mm")
