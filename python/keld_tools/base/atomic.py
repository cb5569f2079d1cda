"""Writing files so that a reader finds either the old ones or the new ones, whole."""

from __future__ import annotations

import os
from pathlib import Path


def write_family(base: Path, contents: dict[str, bytes], stale: tuple[str, ...] = (), last: str = "") -> None:
    """Write BASE + suffix for all of `contents`; remove the `stale` suffixes, which the new family hasn't.

    All files are written in full beside their places first. Then the old ones step aside and the new ones
    take their names, `last` at the end. An OSError puts everything back as it was and is raised again.
    """
    path_of = {suffix: Path(f"{base}{suffix}") for suffix in (*contents, *stale)}
    fresh, aside, placed = {}, {}, []
    try:
        for suffix, data in contents.items():
            fresh[suffix] = _write_beside(path_of[suffix], data)
        for suffix, path in path_of.items():
            if path.exists():
                kept = path.with_name(f"{path.name}.old-{os.getpid()}")
                os.rename(path, kept)
                aside[suffix] = kept
        for suffix in sorted(contents, key=lambda name: name == last):
            os.rename(fresh[suffix], path_of[suffix])
            placed.append(suffix)
    except BaseException:
        for suffix in placed:
            path_of[suffix].unlink(missing_ok=True)
        for path in fresh.values():
            path.unlink(missing_ok=True)
        for suffix, kept in aside.items():
            os.rename(kept, path_of[suffix])
        raise
    for kept in aside.values():
        kept.unlink()


def write_file(path: Path, write) -> None:
    """Let `write(temporary path)` make the file beside its place, then rename it; nothing stays on failure."""
    temporary = path.with_name(f".{os.getpid()}-{path.name}")
    try:
        write(temporary)
        os.replace(temporary, path)
    finally:
        temporary.unlink(missing_ok=True)


def _write_beside(path: Path, data: bytes) -> Path:
    if path.is_dir():
        raise IsADirectoryError(21, "a folder is in the way", str(path))
    temporary = path.with_name(f"{path.name}.new-{os.getpid()}")
    try:
        with open(temporary, "wb") as file:
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
    except BaseException:
        temporary.unlink(missing_ok=True)
        raise
    return temporary
