"""Meshes of every format: the same plate must come out with the same area, thickness and numbers."""

import meshio
import numpy as np
import pytest
from keld_tools.base.findings import BadFile, Findings
from keld_tools.meshes import mesh_input, surface
from keld_tools.part.part_file import MeshRequest
from support import plate, write_plate

POINTS, QUADS = plate()


def nastran(form):
    """A deck with node n at 10 n, element e at 100 + e, T = 1.5 by PSHELL 7; 3.0 by corners at the last but for large."""
    lines = ["SOL 101", "BEGIN BULK", "$ comment"]
    for n, p in enumerate(POINTS, 1):
        if form == "free":
            lines.append(f"GRID,{10 * n},,{p[0]},{p[1]},{p[2]}")
        elif form == "large":
            lines += [f"GRID*   {10 * n:16d}{'':16}{p[0]:16.8f}{p[1]:16.8f}", f"*       {p[2]:16.8f}"]
        else:
            lines.append(f"GRID    {10 * n:8d}{'':8}{p[0] / 10:6.3f}+1{p[1] / 10:6.3f}+1{p[2]:8.3f}")
    for e, q in enumerate(QUADS, 101):
        nodes = [10 * (n + 1) for n in q]
        last = e == 100 + len(QUADS)
        if form == "free":
            lines.append(
                "CQUAD4," + ",".join(map(str, [e, 7, *nodes])) + ",0.,0." + (",+\n+,,,3.,3.,3.,3." if last else "")
            )
        elif form == "large":
            lines += [f"CQUAD4* {e:16d}{7:16d}{nodes[0]:16d}{nodes[1]:16d}", f"*       {nodes[2]:16d}{nodes[3]:16d}"]
        else:
            lines.append(
                f"CQUAD4  {e:8d}{7:8d}" + "".join(f"{n:8d}" for n in nodes) + ("     0.0     0.0" if last else "")
            )
            lines += [f"{'':24}" + "     3.0" * 4] if last else []
    thickness = {
        "free": "PSHELL,7,1,1.5",
        "large": f"PSHELL* {7:16d}{1:16d}{'1.5':>16}",
        "small": "PSHELL         7       1     1.5",
    }[form]
    return "\n".join([*lines, thickness, "ENDDATA", "garbage behind the end"]) + "\n"


def abaqus(quad="S4", tail=""):
    lines = ["*Heading", "** comment", "*Node, nset=all"]
    lines += [f"{10 * n}, {p[0]}, {p[1]}, {p[2]}" for n, p in enumerate(POINTS, 1)]
    for part, name in ((QUADS[:-1], "WALL"), (QUADS[-1:], "END")):
        lines.append(f"*ELEMENT, type={quad.lower()}, ELSET={name}")
        first = 101 if name == "WALL" else 100 + len(QUADS)
        lines += [f"{e}, " + ", ".join(str(10 * (n + 1)) for n in q) for e, q in enumerate(part, first)]
    lines += [
        "*ELSET, ELSET=both",
        "wall, end",
        "*Shell section, elset=both,",
        " material=m",
        "1.5",
        "*SHELL SECTION, ELSET=End",
        "3.0, 5",
    ]
    return "\n".join(lines) + "\n" + tail


def read(path, **request):
    findings = Findings()
    mesh = mesh_input.build(mesh_input.read_raw(path), MeshRequest(path=path, **request), findings)
    return mesh, findings


@pytest.mark.parametrize(
    "name, write",
    [
        ("a.msh", lambda p: write_plate(p)),
        ("a.msh", lambda p: write_plate(p, "gmsh", True)),
        ("a.vtu", lambda p: write_plate(p, "vtu")),
        ("a.stl", lambda p: write_plate(p, "stl", True, triangles=np.concatenate([QUADS[:, :3], QUADS[:, [0, 2, 3]]]))),
        ("a.bdf", lambda p: p.write_text(nastran("small"))),
        ("a.nas", lambda p: p.write_text(nastran("large"))),
        ("a.dat", lambda p: p.write_text(nastran("free"))),
        ("a.inp", lambda p: p.write_text(abaqus())),
    ],
)
def test_every_format_gives_the_same_plate(tmp_path, name, write):
    write(tmp_path / name)

    mesh, findings = read(tmp_path / name)

    cross = surface.crosses(mesh.points, mesh.triangles)
    assert len(mesh.triangles) == 24 and len(mesh.points) == 20
    assert cross[:, 2].sum() / 2 == pytest.approx(1200.0) and (cross[:, 2] > 0).all()
    assert findings.warnings == findings.faults == []
    if name.endswith((".bdf", ".dat", ".nas", ".inp")):
        assert sorted(set(mesh.node_numbers)) == list(range(10, 201, 10))
        assert sorted(set(mesh.numbers)) == list(range(101, 113))
        expected = [1.5] * 11 + [1.5 if name.endswith(".nas") else 3.0]
        assert mesh.card_thickness.tolist() == expected


@pytest.mark.parametrize(
    "corners, expected",
    [
        # the shorter diagonal is 2-4
        ([[0, 0], [4, 0], [5, 3], [1, 2]], {(0, 1, 3), (1, 2, 3)}),
        # equal diagonals: 1-3
        ([[0, 0], [1, 0], [1, 1], [0, 1]], {(0, 1, 2), (0, 2, 3)}),
        # re-entrant corner 4: the shorter diagonal 1-3 (3.9 against 4.1) would lie outside
        ([[0, 0], [4.2, -0.5], [0.0, 3.9], [0.5, 1.6]], {(0, 1, 3), (1, 2, 3)}),
    ],
)
def test_quadrilaterals_are_cut_along_the_shorter_diagonal_inside(corners, expected):
    points = np.column_stack([np.array(corners, float), np.zeros(4)])

    triangles, source = mesh_input.cut(points, np.array([[0, 1, 2, 3]]))

    assert {tuple(sorted(t)) for t in triangles.tolist()} == expected and source.tolist() == [0, 0]


def test_second_order_by_corners_runners_and_loose_nodes(tmp_path):
    points = [[0, 0, 0], [10, 0, 0], [0, 10, 0], [5, 0, 0], [5, 5, 0], [0, 5, 0], [0, 0, 9], [1, 1, 1]]
    mesh = meshio.Mesh(np.array(points, float), [("triangle6", [[0, 1, 2, 3, 4, 5]]), ("line", [[0, 1], [0, 6]])])
    meshio.write(tmp_path / "a.msh", mesh, file_format="gmsh22", binary=False)

    built, findings = read(tmp_path / "a.msh")

    assert built.triangles.tolist() == [[0, 1, 2]] and built.runners.tolist() == [
        [0, 3]
    ]  # 0-1 is an edge, 0-6 a runner
    assert built.node_numbers.tolist() == [1, 2, 3, 7]
    assert len(findings.warnings) == 1 and "1 loose node (8)" in findings.warnings[0]


def test_card_decks_give_runner_diameters_and_leave_solids_out(tmp_path):
    deck = nastran("free").replace(
        "ENDDATA",
        "GRID,900,,0.,0.,50.\nCBAR,5,9,10,900,1.,0.,0.\nPBARL,9,1,,ROD,,,,,+\n"
        "+,2.5\nCTETRA,6,1,10,20,60,900\nENDDATA",
    )
    (tmp_path / "a.bdf").write_text(deck)
    inp = abaqus(
        tail="*NODE\n900,0,0,50\n*ELEMENT,TYPE=B31,ELSET=R\n5,10,900\n*BEAM SECTION,ELSET=R,SECTION=CIRC\n2.5\n"
    )
    (tmp_path / "a.inp").write_text(inp)

    nas, findings = read(tmp_path / "a.bdf")
    abq, _ = read(tmp_path / "a.inp")

    assert nas.diameter.tolist() == abq.diameter.tolist() == [5.0]
    assert "CTETRA" in findings.warnings[0]


def test_merging_and_turning(tmp_path):
    points = [[0, 0, 0], [10, 0, 0], [0, 10, 0], [10, 1e-4, 0], [1e-4, 10, 0], [10, 10, 0]]
    write_plate(
        tmp_path / "a.msh", triangles=[[0, 1, 2], [3, 4, 5]], points=points
    )  # the second is turned the other way

    mesh, _ = read(tmp_path / "a.msh", merge_tolerance=1e-3, orient=True)

    assert len(mesh.points) == 4
    assert (surface.unit_normals(mesh.points, mesh.triangles)[:, 2] == [1.0, 1.0]).all()


@pytest.mark.parametrize(
    "name, text, words",
    [
        ("a.bdf", "GRID,1,,0.,0.,zero\n", "a.bdf:1: card GRID"),
        ("a.bdf", "GRID,1,5,0.,0.,0.\n", "coordinate system"),
        ("a.bdf", "GRID,1,,0.,0.,0.\nCTRIA3,8,1,1,2,3\n", "element 8 has the node 2"),
        ("a.bdf", "GRID,1,,0.,0.,0.\nGRID,1,,0.,0.,1.\n", "given twice"),
        ("a.inp", "*NODE\n1,0,0,0\n*ELEMENT,TYPE=S3\n1,1,x,3\n", "a.inp:4:"),
        ("a.inp", "*NODE\n1,0,0,0\n*ELEMENT,TYPE=S3\n1,1,2,3\n", "element 1 has the node 2"),
        ("a.inp", "*INCLUDE, INPUT=a.inp\n", "includes itself"),
        ("a.inp", "*INCLUDE, INPUT=none.inp\n", "No such file"),
        ("a.msh", "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n1\n", "can't be read as a mesh"),
        ("a.stl", "solid\n", "can't be read as a mesh"),
        ("a.xyz", "", "can't be read as a mesh"),
    ],
)
def test_damaged_meshes_are_named(tmp_path, name, text, words):
    (tmp_path / name).write_text(text)

    with pytest.raises(BadFile, match=words):
        read(tmp_path / name)
