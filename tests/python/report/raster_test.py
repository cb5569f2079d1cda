"""The depth buffer against a point-in-triangle test of every pixel; hidden points; feature edges of rough meshes."""

import numpy as np
import pytest
from keld_tools.report import raster
from keld_tools.meshes.feature_lines import feature_edges
from support import plate

RNG = np.random.default_rng(11)


def nearest_by_hand(corners, x, y):
    """Triangle and value of corner depths at a place, from barycentric coordinates of each triangle."""
    best, depth = -1, -np.inf
    for t, (a, b, c) in enumerate(corners):
        weights = np.linalg.lstsq(np.array([[*p[:2], 1.0] for p in (a, b, c)]).T, [x, y, 1.0], rcond=None)[0]
        z = weights @ [a[2], b[2], c[2]]
        if (weights >= -1e-9).all() and z > depth:
            best, depth = t, z
    return best, depth


@pytest.mark.parametrize("chunk", [50, 2_000_000])
def test_each_pixel_shows_its_nearest_triangle(monkeypatch, chunk):
    monkeypatch.setattr(raster, "CHUNK", chunk)
    corners = RNG.uniform(-8, 48, (30, 3, 3))  # some of them reach out of the picture

    found = raster.rasterise(corners, 40, 36)

    depth = found.interpolated(corners[:, :, 2])
    for row in range(36):
        for column in range(40):
            triangle, z = nearest_by_hand(corners, column + 0.5, row + 0.5)
            assert found.triangle[row, column] == triangle
            assert triangle < 0 or depth[row, column] == pytest.approx(z, abs=1e-6)


def test_points_behind_the_part_are_hidden():
    front = np.array([[[5.0, 5, 7], [35, 5, 7], [5, 35, 7]]])

    seen = raster.rasterise(front, 40, 40).shows(np.array([[12.0, 12, 7.0], [12, 12, 6.0], [38, 38, -50.0]]))

    assert seen.tolist() == [True, False, True]


@pytest.mark.parametrize("rough_mm", [0.0, 0.12])
def test_a_rough_skin_has_no_edges_but_its_fold_and_border(rough_mm):
    points, quads = plate(40, 20, 40.0, 20.0)
    triangles = np.concatenate([quads[:, :3], quads[:, [0, 2, 3]]])
    bent = np.column_stack([np.minimum(points[:, 0], 20), points[:, 1], np.maximum(points[:, 0] - 20, 0)])
    bent += RNG.normal(0, 1, bent.shape) * rough_mm

    edges = feature_edges(bent, triangles)

    middle = points[edges].mean(axis=1)
    border = np.isin(middle[:, 0], (0, 40)) | np.isin(middle[:, 1], (0, 20))
    fold = ~border & (np.abs(middle[:, 0] - 20) <= 0.5)
    assert border.sum() == 120 and fold.sum() >= 18 and (~border & ~fold).sum() == 0
