"""Drawings: each fault with its line, and measures of a part file on their way through keld-job to keld-view."""

import numpy as np
import pytest
from keld_tools.base.findings import Findings
from keld_tools.part.drawing import read_drawing
from keld_tools.programs import view_cli
from support import PART, plate, results_text, write_plate

LENGTH = '[[measure]]\nname = "length"\nkind = "distance"\nbetween_at_mm = [[0,0,0],[40,0,0]]\n'


@pytest.mark.parametrize(
    "text, words",
    [
        ('[[measure]]\nkind = "lenght"\n', "d.toml:2: [measure 1] kind: 'lenght' is not known"),
        (LENGTH + "tolerance = 0.1\n", "d.toml:5: [measure 1] tolerance: has no unit"),
        (LENGTH + "tolerance_mm = -1\n", "a tolerance of -1 isn't above 0"),
        (LENGTH + "tolerance_mm = [0.3, 0.1]\n", "doesn't rise"),
        (LENGTH + LENGTH.replace("between_at", "between"), "d.toml:8: [measure 2] between_mm: is not known"),
        ('[[measure]]\nkind = "flatness"\n', "expected a group or a box_mm"),
        ('[[measure]]\nkind = "flatness"\nbox_mm = [[0,0,0],[1,1]]\n', "expected a box as"),
        ('[[measure]]\nkind = "angle"\ngroups = ["a"]\n', "expected two of groups"),
        ("[datum]\npoints_at_mm = [[0,0,0]]\n", "d.toml:1: [datum]: expected three points, found 1"),
        ('[mesure]\nkind = "flatness"\n', "'mesure' is not known"),
        ('[measure]\nkind = "flatness"\n', "two brackets"),
    ],
)
def test_faults_of_a_drawing(tmp_path, text, words):
    (tmp_path / "d.toml").write_text(text)
    findings = Findings()

    read_drawing(tmp_path / "d.toml", findings)

    assert any(words in fault for fault in findings.faults), findings.faults


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize("tolerance, status", [(0.41, 0), (0.39, 2)])
def test_measures_of_the_part_file_reach_the_result(tmp_path, job, capsys, tolerance, status):
    write_plate(tmp_path / "plate.msh")
    text = PART + LENGTH + f"tolerance_mm = {tolerance}\n" + '[[measure]]\nkind = "flatness"\ngroup = "Wall"\n'
    assert job(text)[0] == 0
    (tmp_path / "j.WR1").write_text(results_text(-0.01 * plate()[0]))

    assert view_cli.main([str(tmp_path / "j"), "--measure"]) == status

    rows = (tmp_path / "j.measures.csv").read_text().splitlines()
    assert (
        rows[1]
        == f"length,distance,mm,40.0000,39.6000,-0.4000,-{tolerance:.4f},{tolerance:.4f},1.000,{['in', '', 'OUT'][status]}"
    )
    assert rows[2].startswith("measure 2,flatness,mm,0.0000,0.0000") and "1.000" in capsys.readouterr().out


def test_a_group_that_the_mesh_lacks_ends_the_job(tmp_path, job):
    write_plate(tmp_path / "plate.msh")
    status, said = job(PART + '[[measure]]\nkind = "flatness"\ngroup = "rim"\n')

    assert status == 1 and "the mesh has no group 'rim'; it has 1, wall" in said


@pytest.mark.usefixtures("no_pictures")
@pytest.mark.parametrize(
    "words, greatest",
    [
        (["--align", "boundary"], np.hypot(0.4, 0.3)),  # from the corner that is held
        ([], np.hypot(0.2, 0.15)),  # from the middle
        (["--align", "points", "--datum", "40,30,0 0,30,0 40,0,0"], np.hypot(0.4, 0.3)),
        (["--remove-shrinkage"], 0.0),
    ],
)
def test_alignment_of_the_picture(tmp_path, job, capsys, words, greatest):
    write_plate(tmp_path / "plate.msh")
    assert job(PART + "[boundary]\nfixed_at_mm = [[0,0,0],[40,0,0],[0,30,0]]\n")[0] == 0
    (tmp_path / "j.WR1").write_text(results_text(-0.01 * plate()[0]))

    assert view_cli.main([str(tmp_path / "j"), *words]) == 0

    told = capsys.readouterr().out.split("greatest total displacement: ")[1].split(" mm")[0]
    assert float(told) == pytest.approx(greatest, abs=2e-3)
