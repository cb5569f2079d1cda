"""Which triangle each pixel of a picture shows: spans of all triangles through a depth buffer. Called by picture.

Pixel (row, column) has its centre at y = row + 0.5, x = column + 0.5; depth grows towards the eye.
"""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
from scipy.ndimage import minimum_filter

CHUNK = 2_000_000  # pixels of spans that are looked at together
EMPTY = -1


@dataclass
class Raster:
    """(H, W) arrays; corners as given to rasterise."""

    triangle: np.ndarray  # index, EMPTY where nothing is
    depth: np.ndarray  # -inf where nothing is
    corners: np.ndarray  # (T, 3, 3) x, y in pixels, depth

    def interpolated(self, values: np.ndarray) -> np.ndarray:
        """(H, W) of values (T, 3) at the corners; nan where nothing is."""
        rows, columns = np.nonzero(self.triangle != EMPTY)
        t = self.triangle[rows, columns]
        start, slope_x, slope_y = planes_of(self.corners, values)
        result = np.full(self.triangle.shape, np.nan)
        dx, dy = columns + 0.5 - self.corners[t, 0, 0], rows + 0.5 - self.corners[t, 0, 1]
        inside = start[t] + slope_x[t] * dx + slope_y[t] * dy
        result[rows, columns] = np.clip(inside, values.min(axis=1)[t], values.max(axis=1)[t])
        return result

    def shows(self, points: np.ndarray, behind: float = 0.0) -> np.ndarray:
        """Mask of points (n, 3) that nothing hides; one within a pixel of the surface's border is seen.

        behind: a depth by which a point may lie under the surface and still count as on it.
        """
        height, width = self.depth.shape
        nearest = minimum_filter(self.depth, 3)  # the surface may rise by a pixel's slope
        column = np.clip(points[:, 0].astype(int), 0, width - 1)
        row = np.clip(points[:, 1].astype(int), 0, height - 1)
        return points[:, 2] >= nearest[row, column] - behind


def planes_of(corners: np.ndarray, values: np.ndarray) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
    """Value at corner 1 and slopes along x and y of the linear course through values (T, 3); 0 for one seen edge on."""
    a, b = corners[:, 1, :2] - corners[:, 0, :2], corners[:, 2, :2] - corners[:, 0, :2]
    p, q = values[:, 1] - values[:, 0], values[:, 2] - values[:, 0]
    twice = a[:, 0] * b[:, 1] - a[:, 1] * b[:, 0]
    one = np.divide(1.0, twice, out=np.zeros_like(twice), where=np.abs(twice) > 1e-12)
    return values[:, 0], (p * b[:, 1] - q * a[:, 1]) * one, (q * a[:, 0] - p * b[:, 0]) * one


def rasterise(corners: np.ndarray, width: int, height: int) -> Raster:
    """The nearest triangle of each pixel; corners (T, 3, 3) are x, y in pixels and depth."""
    depth, triangle = np.full(width * height, -np.inf), np.full(width * height, EMPTY)
    start, slope_x, slope_y = planes_of(corners, corners[:, :, 2])
    low, high = corners[:, :, 2].min(axis=1), corners[:, :, 2].max(axis=1)
    order = np.argsort(low + high, kind="stable")  # from behind, so that few pixels are written twice
    row, owner, first, count = spans(corners, order, width, height)
    ends = np.cumsum(count)
    for begin, end in chunks(ends):
        lengths = count[begin:end]
        span = np.repeat(np.arange(begin, end), lengths)
        column = first[span] + np.arange(len(span)) - np.repeat(np.cumsum(lengths) - lengths, lengths)
        t = owner[span]
        dx, dy = column + 0.5 - corners[t, 0, 0], row[span] + 0.5 - corners[t, 0, 1]
        z = np.clip(start[t] + slope_x[t] * dx + slope_y[t] * dy, low[t], high[t])
        put(depth, triangle, row[span] * width + column, z, t)
    return Raster(triangle.reshape(height, width), depth.reshape(height, width), corners)


def chunks(ends: np.ndarray):
    """Ranges of spans that hold about CHUNK pixels each; `ends` are running sums."""
    begin = 0
    while begin < len(ends):
        done = ends[begin - 1] if begin else 0
        end = max(begin + 1, int(np.searchsorted(ends, done + CHUNK, side="right")))
        yield begin, end
        begin = end


def spans(corners: np.ndarray, order: np.ndarray, width: int, height: int):
    """Row, triangle, first column and count of columns of each row of each triangle, in the order given."""
    x, y = np.ascontiguousarray(corners[order, :, 0].T), np.ascontiguousarray(corners[order, :, 1].T)
    top = np.clip(np.ceil(y.min(axis=0) - 0.5), 0, height).astype(np.int64)
    bottom = np.clip(np.floor(y.max(axis=0) - 0.5), -1, height - 1).astype(np.int64)
    rows = np.maximum(bottom - top + 1, 0)
    which = np.repeat(np.arange(len(order)), rows)
    row = top[which] + np.arange(len(which)) - np.repeat(np.cumsum(rows) - rows, rows)
    at = row + 0.5
    left, right = np.full(len(row), np.inf), np.full(len(row), -np.inf)
    for side in range(3):
        other = (side + 1) % 3
        rise = y[other] - y[side]
        run = np.divide(x[other] - x[side], rise, out=np.zeros_like(rise), where=rise != 0)
        low, high = np.minimum(y[side], y[other]), np.maximum(y[side], y[other])
        met = (low[which] <= at) & (at <= high[which]) & (rise != 0)[which]
        place = x[side][which] + (at - y[side][which]) * run[which]
        np.minimum(left, place, out=left, where=met)
        np.maximum(right, place, out=right, where=met)
    some = left <= right
    row, owner, left, right = row[some], order[which[some]], left[some], right[some]
    first = np.clip(np.ceil(left - 0.5), 0, width).astype(np.int64)
    last = np.clip(np.floor(right - 0.5), -1, width - 1).astype(np.int64)
    return row, owner, first, np.maximum(last - first + 1, 0)


def put(depth: np.ndarray, triangle: np.ndarray, pixel: np.ndarray, z: np.ndarray, t: np.ndarray) -> None:
    """Enter what lies nearer than the buffer; of several at one pixel the nearest stays."""
    ahead = z > depth[pixel]
    while ahead.any():
        pixel, z, t = pixel[ahead], z[ahead], t[ahead]
        depth[pixel] = z
        won = depth[pixel] == z
        triangle[pixel[won]] = t[won]
        ahead = z > depth[pixel]
