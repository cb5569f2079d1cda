"""A TOML file as the part file, the drawing and the study are: its values, and the lines of its keys for faults."""

from __future__ import annotations

import tomllib
from pathlib import Path
from typing import Any

from ..base.findings import BadFile
from .part_section import key_lines


def read_toml(path: Path) -> tuple[dict[str, Any], dict[tuple[str, str], int]]:
    """The document and the lines of its keys. BadFile when it can't be read or isn't TOML."""
    try:
        text = path.read_bytes().decode("utf-8-sig")
        return tomllib.loads(text), key_lines(text)
    except OSError as error:
        raise BadFile(path, f"can't be read: {error.strerror}") from None
    except UnicodeDecodeError as error:
        raise BadFile(path, f"is no UTF-8 text (byte {error.start})") from None
    except (tomllib.TOMLDecodeError, RecursionError) as error:
        raise BadFile(path, f"is no TOML: {error}") from None
