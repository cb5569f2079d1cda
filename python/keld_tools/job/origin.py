"""BASE.origin.json: what keld-job knows of a part and the working files can't tell: mesh file, groups, measures.

Written by job_files; read by the programs that measure, report and export. A job without the file has no groups.
"""

from __future__ import annotations

import json
from dataclasses import asdict, dataclass, field
from pathlib import Path

import numpy as np

from ..base.findings import BadFile
from ..base.ownership import MADE_BY_JOB
from ..part.drawing import Drawing, Measure

SUFFIX = ".origin.json"


@dataclass
class Origin:
    mesh: Path | None = None
    to_mm: float = 1.0  # of the mesh file's length unit
    groups: dict[str, np.ndarray] = field(default_factory=dict)  # name -> (T,) mask of the triangles of .PG1
    drawing: Drawing = field(default_factory=Drawing)  # node numbers are those of .PG1
    title: str = ""


def text_of(origin: Origin) -> str:
    """The file's text; groups as runs [first element, count] of numbers from 1, which stay short."""
    return json.dumps(
        {
            "made_by": MADE_BY_JOB,
            "title": origin.title,
            "mesh": None if origin.mesh is None else str(origin.mesh.resolve()),
            "to_mm": origin.to_mm,
            "groups": {name: runs_of(mask) for name, mask in origin.groups.items()},
            "measures": [asdict(measure) for measure in origin.drawing.measures],
            "datum": origin.drawing.datum,
        },
        indent=1,
        ensure_ascii=True,
    )


def read_origin(base: Path, triangle_count: int) -> Origin:
    """Of a job; an empty one where it has no such file. BadFile for a damaged one."""
    path = Path(f"{base}{SUFFIX}")
    if not path.is_file():
        return Origin()
    try:
        data = json.loads(path.read_text(encoding="utf-8"))
        measures = [Measure(**{**m, "tolerance": tupled(m["tolerance"])}) for m in data["measures"]]
        for measure in measures:
            measure.places = [tupled(place) for place in measure.places]
            measure.faces = [face if isinstance(face, str) else tupled(face) for face in measure.faces]
        datum = None if data["datum"] is None else [tupled(place) for place in data["datum"]]
        return Origin(
            None if data["mesh"] is None else Path(data["mesh"]),
            float(data["to_mm"]),
            {name: mask_of(runs, triangle_count) for name, runs in data["groups"].items()},
            Drawing(measures, datum),
            str(data["title"]),
        )
    except (OSError, ValueError, TypeError, KeyError, AttributeError, RecursionError) as error:
        raise BadFile(
            path, f"can't be read ({type(error).__name__}: {error}); remove it, or write it again with keld-job"
        ) from None


def tupled(value):
    """JSON's lists as the tuples they were."""
    return tuple(tupled(v) for v in value) if isinstance(value, list) else value


def runs_of(mask: np.ndarray) -> list[list[int]]:
    change = np.flatnonzero(np.diff(np.concatenate([[0], mask.astype(np.int8), [0]])))
    return [[int(a) + 1, int(b - a)] for a, b in zip(change[::2], change[1::2])]


def mask_of(runs: list[list[int]], count: int) -> np.ndarray:
    mask = np.zeros(count, bool)
    for first, length in runs:
        if not (1 <= first and first + length - 1 <= count):
            raise ValueError(f"elements {first} to {first + length - 1} are not 1 to {count}")
        mask[first - 1 : first - 1 + length] = True
    return mask
