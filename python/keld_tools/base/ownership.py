"""Which files the tools may replace: those that carry the mark of one of them, and no other without --overwrite.

Every writer puts MADE_BY_JOB or MADE_BY_VIEW into its file: in a title, a comment, a header, or text of an image.
"""

from __future__ import annotations

from collections.abc import Iterable
from pathlib import Path

from .findings import Findings

MADE_BY_JOB = "made by keld-job"
MADE_BY_VIEW = "made by keld-view"
MADE_BY_STUDY = "made by keld-study"
MEASURES_HEAD = "measure,kind,unit,nominal,moulded,deviation"  # a table for other programs has no place for words
STUDY_HEAD, CAUSES_HEAD = "keld-study run", "keld-view causes of"
MARKS = tuple(
    mark.encode() for mark in (MADE_BY_JOB, MADE_BY_VIEW, MADE_BY_STUDY, MEASURES_HEAD, STUDY_HEAD, CAUSES_HEAD)
)
RESULT_MARK = b"** KELD/Surface Keldage Results File **"  # of a .WR1, which keld itself writes
HEAD = 4096  # bytes at either end of a file in which the mark stands


def is_own(path: Path) -> bool:
    """True for a file that one of the tools, or keld as their follower, has written."""
    with open(path, "rb") as file:
        text = file.read(HEAD)
        file.seek(max(0, path.stat().st_size - HEAD))
        text += file.read(HEAD)
    marks = (*MARKS, RESULT_MARK) if path.suffix == ".WR1" else MARKS
    return any(mark in text for mark in marks)


def refuse_foreign(paths: Iterable[Path], overwrite: bool, findings: Findings) -> None:
    """A fault for each path that is there and not one of the tools' own files; a folder is one in any case."""
    for path in paths:
        if path.is_dir():
            findings.fault(str(path), "is a folder in the place of a file to write; -o gives another name")
        elif path.exists() and not overwrite and not is_own(path):
            findings.fault(
                str(path),
                "is there and not made by these tools; -o gives another name, --overwrite replaces the file",
            )
