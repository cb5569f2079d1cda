"""The whole road: a Gmsh mesh, keld-job, keld, keld-view, and the grid's displacement against a formula.

Free shrinkage: a flat part under one temperature keeps its shape; each point moves by expansion x change x
its distance from the fixed point. KELD_PROGRAM names the program, which CTest sets.
"""

import os
import subprocess
from pathlib import Path

import meshio
import numpy as np
import pytest
from support import plate, write_plate

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = os.environ.get("KELD_PROGRAM")
pytestmark = pytest.mark.skipif(not PROGRAM, reason="KELD_PROGRAM isn't set")
PART = """
[mesh]
file = "plate.msh"
thickness_by_group_mm = {{ wall = 2 }}
[polymer]
modulus_MPa = 2000
poisson = 0.38
expansion_per_K = 7e-5
density_g_cm3 = 0.95
[conditions]
melt_temperature_C = 230
mould_temperature_C = 40
ejection_temperature_C = 90
ambient_temperature_C = 25
[boundary]
fixed_at_mm = [[10, 10, 0], [40, 10, 0], [10, 30, 0]]
{more}
"""


def tool(name, *words):
    subprocess.run([ROOT / "python" / name, *map(str, words)], check=True, capture_output=True, timeout=120)


def keld(base):
    subprocess.run(
        [PROGRAM, base, "1@", f"{ROOT}/install/", "2@"],
        check=True,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        timeout=120,
    )


@pytest.mark.parametrize(
    "more, strain",
    [
        ("", [-7e-5 * 65] * 2),
        ('[solver]\nmethod = "multigrid"', [-7e-5 * 65] * 2),
        # frozen-in tension s along x adds the elastic strain (-s, nu s) / E
        ("[fields]\nstress1_MPa = 4\nstress2_MPa = 0", [-7e-5 * 65 - 4 / 2000, -7e-5 * 65 + 0.38 * 4 / 2000]),
    ],
    ids=["shrinkage", "multigrid", "stress"],
)
def test_a_flat_plate_shrinks_by_the_formula(tmp_path, more, strain):
    points = plate()[0]
    write_plate(tmp_path / "plate.msh")
    (tmp_path / "part.toml").write_text(PART.format(more=more))
    base = tmp_path / os.fsdecode(b"a caf\xe9")  # a blank, and a name that is no text

    tool("keld-job", tmp_path / "part.toml", "-o", base)
    keld(base)
    tool("keld-view", base)

    found = meshio.read(f"{base}.vtu").point_data["displacement_total_mm"]
    expected = (points[:, :2] - [10.0, 10.0]) * strain
    np.testing.assert_allclose(found[:, :2], expected, atol=1e-4)  # four digits of .WR1


def test_a_corrected_cavity_comes_nearer_to_the_nominal_shape(tmp_path):
    base = tmp_path / "cover"
    tool("keld-job", ROOT / "examples/cover/cover.toml", "-o", base)
    greatest = []
    for step in (base, Path(f"{base}-cavity1")):
        keld(step)
        tool("keld-view", step, "--compensate")
        data = meshio.read(f"{step}.vtu").point_data
        name = "displacement_total_mm" if step == base else "remaining_deviation_mm"
        greatest.append(np.linalg.norm(data[name], axis=1).max())

    assert greatest[0] > 0.5 and greatest[1] < 0.02 * greatest[0]
