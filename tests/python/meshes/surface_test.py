"""The nearest point of a surface against a fine sampling of every triangle."""

import numpy as np
from keld_tools.meshes import surface

RNG = np.random.default_rng(12)


def test_the_nearest_point_is_no_farther_than_any_sample():
    points, triangles = RNG.uniform(0, 10, (30, 3)), RNG.integers(0, 30, (25, 3))
    triangles[-1] = [3, 3, 7]  # without area
    grid = np.array([(i, j, 40 - i - j) for i in range(41) for j in range(41 - i)]) / 40
    samples = np.einsum("si,tij->tsj", grid, points[triangles])
    for place in RNG.uniform(-5, 15, (200, 3)):
        triangle, weights = surface.nearest_on(points, triangles, place)

        found = np.linalg.norm(weights @ points[triangles[triangle]] - place)
        sampled = np.linalg.norm(samples - place, axis=2).min()
        assert weights.min() >= 0 and abs(weights.sum() - 1) < 1e-12
        assert sampled - 0.4 <= found <= sampled + 1e-12
