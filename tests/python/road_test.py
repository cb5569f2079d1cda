"""The whole road: a Gmsh mesh, keld-job, keld, keld-view, and the displacement against a formula.

Free shrinkage: a flat part under one temperature keeps its shape; each point moves by expansion x change x
its distance from the fixed point. KELD_PROGRAM names the program, which CTest sets.
"""

import os
import re
import subprocess
from pathlib import Path

import meshio
import numpy as np
import pytest
from keld_tools.programs import job_cli, view_cli
from keld_tools.results.results_file import read_results
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


def total_of(base, nodes):
    """(N, 3) mm of a finished run."""
    return read_results(Path(f"{base}.WR1"), nodes).total_mm


@pytest.mark.parametrize(
    "more, strain",
    [
        ("", [-7e-5 * 65] * 2),
        ('[solver]\nmethod = "multigrid"', [-7e-5 * 65] * 2),
        ('[solver]\nwall_model = "wedge"', [-7e-5 * 65] * 2),
        # frozen-in tension s along x adds the elastic strain (-s, nu s) / E
        ("[fields]\nstress1_MPa = 4\nstress2_MPa = 0", [-7e-5 * 65 - 4 / 2000, -7e-5 * 65 + 0.38 * 4 / 2000]),
    ],
    ids=["shrinkage", "multigrid", "wedges", "stress"],
)
def test_a_flat_plate_shrinks_by_the_formula(tmp_path, job, keld, more, strain):
    write_plate(tmp_path / "plate.msh")

    assert job(PART.format(more=more))[0] == 0
    keld(tmp_path / "j")

    expected = (plate()[0][:, :2] - [10.0, 10.0]) * strain
    np.testing.assert_allclose(total_of(tmp_path / "j", 20)[:, :2], expected, atol=1e-4)  # four digits of .WR1


def test_the_programs_make_the_road_under_any_name(tmp_path, keld):
    write_plate(tmp_path / "plate.msh")
    (tmp_path / "part.toml").write_text(PART.format(more=""))
    base = tmp_path / os.fsdecode(b"a caf\xe9")  # a blank, and a name that is no text

    tool("keld-job", tmp_path / "part.toml", "-o", base)
    keld(base)
    tool("keld-view", base)

    found = meshio.read(f"{base}.vtu").point_data["displacement_total_mm"]
    np.testing.assert_allclose(found[:, :2], (plate()[0][:, :2] - [10.0, 10.0]) * -7e-5 * 65, atol=1e-4)


GLASS = "[filler]\nweight_percent = 30\nmodulus_GPa = 76\npoisson = 0.22\nexpansion_per_K = 5e-6\ndensity_g_cm3 = 2.6\n"


@pytest.mark.parametrize(
    "polymer, filler, orientation, expected",
    [
        ('name = "PP"\nshrinkage_percent = 1.6', "", None, (1.6, 1.6)),
        ('name = "PA66-GF30"\nshrinkage_percent = [0.4, 0.9]', "", None, (0.4, 0.9)),
        ('name = "PA66"\nshrinkage_percent = [0.4, 0.9]', GLASS, 0.8, (0.4, 0.9)),
        ('name = "PA66"\nshrinkage_percent = 0.7', GLASS, 0.8, (0.7, 0.7)),
        ('name = "PA66-GF30"', "", None, (None, None)),
        ('name = "PA66"', GLASS, 1.0, (None, None)),
        ('name = "PP"\nspecific_volume = [1.2745, 1.025e-3, 1.05e9, 5.4e-3, 1.16, 6.0e-4, 1.7e9, 4.1e-3, 379, 2.2e-8]', GLASS, 0.7, (None, None)),
    ],
)  # fmt: skip
def test_a_flat_plate_shrinks_as_keld_job_tells(tmp_path, keld, capsys, polymer, filler, orientation, expected):
    """Fibres along x. None: what the summary says of expansion, mixed with a filler or not, is what keld does."""
    points = plate()[0]
    write_plate(tmp_path / "plate.msh")
    fields = "[fields]\nfibre_direction = [1, 0, 0]\n" + (f"orientation = {orientation}\n" if orientation else "")
    text = '[mesh]\nfile = "plate.msh"\nthickness_mm = 2\n[polymer]\n' + polymer + f"\n{filler}{fields}"
    (tmp_path / "part.toml").write_text(text + "[boundary]\nfixed_at_mm = [[0, 0, 0], [40, 0, 0], [0, 30, 0]]\n")

    assert job_cli.main([str(tmp_path / "part.toml"), "-o", str(tmp_path / "j")]) == 0
    keld(tmp_path / "j")

    line = next(line for line in capsys.readouterr().out.splitlines() if line.startswith("free shrinkage: ")).replace(
        " %", ""
    )
    told = [float(word) for word in re.findall(r"[-+.\de]+(?= along| across| \(over)", line.split(";")[0])]
    told = (told * 2)[:2]
    found = total_of(tmp_path / "j", 20)
    np.testing.assert_allclose(found[:, :2], -points[:, :2] * np.array(told) / 100.0, atol=2e-3)
    for given, value in zip(expected, told):
        assert given is None or value == pytest.approx(given, abs=1e-6)


def test_a_corrected_cavity_comes_nearer_to_the_nominal_shape(tmp_path, keld, no_pictures):
    base = tmp_path / "cover"
    assert job_cli.main([str(ROOT / "examples/cover/cover.toml"), "-o", str(base)]) == 0
    greatest = []
    for step in (base, Path(f"{base}-cavity1")):
        keld(step)
        assert view_cli.main([str(step), "--compensate"]) == 0
        data = meshio.read(f"{step}.vtu").point_data
        name = "displacement_total_mm" if step == base else "remaining_deviation_mm"
        greatest.append(np.linalg.norm(data[name], axis=1).max())

    assert greatest[0] > 0.5 and greatest[1] < 0.02 * greatest[0]
