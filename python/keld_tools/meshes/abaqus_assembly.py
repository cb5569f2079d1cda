"""One mesh of the parts and instances of an Abaqus deck: each placed, numbered, with its sets. Called by abaqus_deck.

A flat deck is one piece without a name; a part that the assembly takes twice is two pieces.
"""

from __future__ import annotations

import math
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np
from scipy.spatial.transform import Rotation

from ..base.findings import BadFile
from .raw_mesh import RawMesh, filled, joined, with_indices

DEEPEST = 20  # of sets in sets


@dataclass
class Content:
    """What a part, an instance or a flat deck holds, under numbers of its own; lengths in the unit of the deck."""

    nodes: list[int] = field(default_factory=list)
    points: list[list[float]] = field(default_factory=list)
    shells: list[list[int]] = field(default_factory=list)  # four node numbers, -1 behind a triangle's
    shell_ids: list[int] = field(default_factory=list)
    lines: list[list[int]] = field(default_factory=list)
    line_ids: list[int] = field(default_factory=list)
    sets: dict[str, list] = field(default_factory=dict)  # element numbers and names of sets
    sections: list[tuple[str, float]] = field(default_factory=list)  # set, thickness
    beams: list[tuple[str, float]] = field(default_factory=list)  # set, diameter
    left_out: dict[str, int] = field(default_factory=dict)
    reduced: dict[str, int] = field(default_factory=dict)
    others: list[int] = field(default_factory=list)  # middle nodes and nodes of elements left out

    def add_element(self, number: int, nodes: list[int], corners: int, kind: str) -> None:
        if corners == 2:
            self.others += nodes[1:-1]
            self.lines.append([nodes[0], nodes[-1]])
            self.line_ids.append(number)
            return
        self.others += nodes[corners:]
        self.shells.append(nodes[:corners] + [-1] * (4 - corners))
        self.shell_ids.append(number)
        if len(nodes) > corners:
            self.reduced[kind] = self.reduced.get(kind, 0) + 1

    def members(self, name: str, path: Path, depth: int = 0) -> np.ndarray:
        """Element numbers of a set, with those of the sets that it names."""
        if depth > DEEPEST:
            raise BadFile(path, f"element set {name} contains itself")
        entries = self.sets.get(name, [])
        nested = [self.members(e, path, depth + 1) for e in entries if isinstance(e, str)]
        return np.unique(np.concatenate([np.array([e for e in entries if isinstance(e, int)], np.int64), *nested]))


@dataclass
class Instance:
    """A part where the assembly puts it."""

    name: str
    part: str
    placing: list[list[float]] = field(default_factory=list)  # shift, then two points of an axis and degrees
    own: Content = field(default_factory=Content)  # of an instance that brings its mesh itself


@dataclass
class Model:
    """All of a deck."""

    flat: Content = field(default_factory=Content)
    parts: dict[str, Content] = field(default_factory=dict)
    instances: list[Instance] = field(default_factory=list)
    sets: dict[str, list[tuple[str, int | str]]] = field(default_factory=dict)  # of the assembly: instance, entry


@dataclass
class Piece:
    name: str  # of the instance, in upper case; empty for a flat deck
    content: Content
    mesh: RawMesh


def assembled(path: Path, model: Model) -> RawMesh:
    """The whole mesh. Raises BadFile for an instance without its part, and for what no mesh can be made of."""
    pieces = pieces_of(path, model)
    for name, entries in model.sets.items():
        for piece in pieces:
            numbers = members_in(path, model, piece, entries)
            if len(numbers) or not piece.name:
                piece.mesh.groups[name] = np.isin(piece.mesh.shell_numbers, numbers)
    if len(pieces) == 1:
        return pieces[0].mesh
    for piece in pieces:
        groups = piece.mesh.groups
        groups |= {f"{piece.name}.{name}": mask for name, mask in list(groups.items()) if name not in model.sets}
        groups.setdefault(piece.name, np.ones(len(piece.mesh.shells), bool))
    return joined([piece.mesh for piece in pieces], [piece.name for piece in pieces])


def pieces_of(path: Path, model: Model) -> list[Piece]:
    """The flat mesh where there is one, and every instance; a deck of parts alone has each of them once."""
    instances = model.instances or [Instance(name, name) for name in model.parts]
    pieces = [Piece("", model.flat, mesh_of(path, model.flat, []))] if model.flat.nodes or not instances else []
    for instance in instances:
        content = instance.own if instance.own.nodes else model.parts.get(instance.part.upper())
        if content is None:
            raise BadFile(
                path, f"the instance {instance.name} is of the part {instance.part!r}, which the deck hasn't got"
            )
        pieces.append(Piece(instance.name.upper(), content, mesh_of(path, content, instance.placing)))
    left_out = model.flat.left_out
    if pieces[0].content is not model.flat:  # of the assembly itself, such as connectors
        pieces[0].mesh.left_out = pieces[0].mesh.left_out | left_out
    return pieces


def mesh_of(path: Path, content: Content, placing: list[list[float]]) -> RawMesh:
    numbers = np.asarray(content.nodes, np.int64)
    if len(np.unique(numbers)) != len(numbers):
        values, counts = np.unique(numbers, return_counts=True)
        raise BadFile(path, f"node numbers are given twice, {values[counts > 1][0]} among them")
    shell_ids, line_ids = np.asarray(content.shell_ids, np.int64), np.asarray(content.line_ids, np.int64)
    thickness, diameter = np.full(len(shell_ids), math.nan), np.full(len(line_ids), math.nan)
    for name, value in content.sections:
        thickness[np.isin(shell_ids, content.members(name, path))] = value
    for name, value in content.beams:
        diameter[np.isin(line_ids, content.members(name, path))] = value
    raw = filled(
        placed(content.points, placing),
        numbers,
        content.shells,
        shell_ids,
        thickness,
        content.lines,
        line_ids,
        diameter,
        left_out=dict(content.left_out),
        reduced=dict(content.reduced),
    )
    groups = {name: np.isin(shell_ids, content.members(name, path)) for name in content.sets if name}
    return with_indices(path, raw, content.others, groups)


def members_in(path: Path, model: Model, piece: Piece, entries: list, depth: int = 0) -> np.ndarray:
    """Element numbers, those of the piece, that entries of a set of the assembly name.

    An entry is a number or a set of an instance, "INSTANCE.SET", or another set of the assembly.
    """
    if depth > DEEPEST:
        raise BadFile(path, "an element set of the assembly contains itself")
    found = [np.zeros(0, np.int64)]
    for of, entry in entries:
        if isinstance(entry, str) and not of and "." in entry:
            of, _, entry = entry.rpartition(".")
        if of == piece.name and isinstance(entry, int):
            found.append(np.array([entry]))
        elif of == piece.name and entry in piece.content.sets:
            found.append(piece.content.members(entry, path))
        elif not of and entry in model.sets:
            found.append(members_in(path, model, piece, model.sets[entry], depth + 1))
    return np.unique(np.concatenate(found))


def placed(points: list[list[float]], placing: list[list[float]]) -> np.ndarray:
    """Points of a part where its instance stands in the assembly: shifted first, then turned about the axis."""
    result = np.asarray(points, float).reshape(-1, 3)
    if placing:
        result = result + (placing[0] + [0.0] * 3)[:3]
    if len(placing) > 1 and len(placing[1]) >= 7:
        start, end, degrees = np.array(placing[1][:3]), np.array(placing[1][3:6]), placing[1][6]
        axis = (end - start) / np.linalg.norm(end - start)
        result = Rotation.from_rotvec(np.radians(degrees) * axis).apply(result - start) + start
    return result
