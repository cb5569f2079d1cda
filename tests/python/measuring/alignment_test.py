"""Alignment: a known motion is undone; what remains is only what the method can't remove."""

import numpy as np
import pytest
from keld_tools.base.findings import BadFile
from keld_tools.measuring.alignment import aligned
from scipy.spatial.transform import Rotation

POINTS = np.random.default_rng(3).uniform(0, 100, (200, 3))
NODES = np.arange(1, 200)  # node 0 belongs to no triangle
TURN = Rotation.from_euler("xyz", [3, -20, 140], degrees=True)
DATUM = [5, 17, 90]


@pytest.mark.parametrize("method", ["best-fit", "points"])
@pytest.mark.parametrize("scale", [1.0, 0.985])
def test_a_rigid_motion_and_a_scale_are_undone(method, scale):
    moulded = TURN.apply(POINTS * scale) + [4, -5, 600]

    fit = aligned(method, POINTS, moulded, NODES, DATUM, remove_shrinkage=scale != 1.0)

    np.testing.assert_allclose(fit.apply(moulded), POINTS, atol=1e-9)
    assert fit.shrinkage_percent == pytest.approx(100 * (1 - scale), abs=1e-9)


def test_three_points_hold_six_freedoms():
    moulded = TURN.apply(POINTS + np.random.default_rng(4).normal(0, 0.5, POINTS.shape)) - 30

    over = aligned("points", POINTS, moulded, NODES, DATUM).apply(moulded)

    first, second, third = POINTS[DATUM]
    along = (second - first) / np.linalg.norm(second - first)
    normal = np.cross(along, third - first)
    np.testing.assert_allclose(over[DATUM[0]], first, atol=1e-9)
    np.testing.assert_allclose(np.cross(over[DATUM[1]] - first, along), 0, atol=1e-9)
    assert normal @ (over[DATUM[2]] - first) == pytest.approx(0, abs=1e-7)


def test_best_fit_leaves_the_least_squares_and_boundary_leaves_the_results():
    moulded = POINTS + np.random.default_rng(5).normal(0, 0.3, POINTS.shape) + [1, 2, 3]

    def left(method):
        return ((aligned(method, POINTS, moulded, NODES, DATUM).apply(moulded) - POINTS)[NODES] ** 2).sum()

    np.testing.assert_array_equal(aligned("boundary", POINTS, moulded, NODES, DATUM).apply(moulded), moulded)
    assert left("best-fit") < left("points") < left("boundary")


def test_datum_points_on_one_line_are_refused():
    with pytest.raises(BadFile, match="lie on one line"):
        aligned("points", POINTS[:1] * [[1.0], [2.0], [5.0]], POINTS[:3], np.arange(3), [0, 1, 2])
