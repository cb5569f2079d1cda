"""The shared library of TIER, found and declared once; values and texts as its entries take them."""

from __future__ import annotations

import ctypes
import ctypes.util
import os
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from functools import lru_cache
from pathlib import Path

_TEXT_LENGTH = 400
_INTEGER, _REAL, _LOGICAL = 1, 3, 4


def _candidates() -> list[str]:
    named = os.environ.get("TIER_LIBRARY")
    if named:
        return [named]
    share = Path(__file__).resolve().parents[3]  # installed: <prefix>/share/tier/python/tier
    installed = share.name == "share"
    beside = sorted(str(p) for p in share.parent.glob("lib*/**/libtier.so")) if installed else []
    found = ctypes.util.find_library("tier")
    return beside + ([found] if found else [])


@lru_cache(maxsize=1)
def library() -> ctypes.CDLL:
    """The loaded library; OSError, with what to do, where there is none."""
    for name in _candidates():
        return ctypes.CDLL(name)
    raise OSError("no libtier.so: set TIER_LIBRARY to its path, or install TIER's component where the loader looks")


def integer(value: int) -> ctypes._Pointer:
    return ctypes.byref(ctypes.c_int(value))


def real(value: float) -> ctypes._Pointer:
    return ctypes.byref(ctypes.c_double(value))


def fault_text() -> str:
    """Text of the last error or warning in this thread's context."""
    text = ctypes.create_string_buffer(b" " * _TEXT_LENGTH, _TEXT_LENGTH)
    library().TIER_GET_FAULT(text, integer(_TEXT_LENGTH))
    return text.raw.decode("utf-8", "replace").rstrip()


def set_parameter(name: str, value: float) -> None:
    """A number or truth by the parameter's name; KeyError and TypeError for names and values it doesn't have."""
    key = name.encode()
    kind = ctypes.c_int()
    library().TIER_GETTYPE(key, integer(len(key)), ctypes.byref(kind))
    if kind.value not in (_INTEGER, _REAL, _LOGICAL):
        raise KeyError(f"TIER has no parameter {name!r} with a number (docs/parameters.md lists them)")
    if kind.value != _REAL and int(value) != value:
        raise TypeError(f"TIER's parameter {name} takes a whole number, not {value!r}")
    whole = int(value) if kind.value != _REAL else 0
    library().TIER_SETANY(
        key, integer(len(key)), ctypes.byref(kind), integer(whole), real(float(value)), integer(whole), b"", integer(0)
    )


def parameter(name: str) -> float:
    """The present value of a parameter with a number."""
    key = name.encode()
    kind, whole, truth = ctypes.c_int(), ctypes.c_int(), ctypes.c_int()
    value = ctypes.c_double()
    library().TIER_GETANY(
        key,
        integer(len(key)),
        ctypes.byref(kind),
        ctypes.byref(whole),
        ctypes.byref(value),
        ctypes.byref(truth),
        b"",
        integer(0),
    )
    return {_INTEGER: whole.value, _REAL: value.value}.get(kind.value, truth.value)


@contextmanager
def parameters(**values: float) -> Iterator[None]:
    """Other values of parameters while a block runs."""
    former = {name: parameter(name) for name in values}
    try:
        for name, value in values.items():
            set_parameter(name, value)
        yield
    finally:
        for name, value in former.items():
            set_parameter(name, value)


class Context:
    """A context of the library, freed with the object; `with context:` makes it the calling thread's."""

    def __init__(self) -> None:
        number, ierr = ctypes.c_int(), ctypes.c_int()
        self.number = 0
        library().TIER_CREATE(ctypes.byref(number), ctypes.byref(ierr))
        if ierr.value != 0:
            raise MemoryError("no memory for a context of TIER")
        self.number = number.value
        self._former = threading.local()

    def __enter__(self) -> Context:
        former, ierr = ctypes.c_int(), ctypes.c_int()
        library().TIER_GET_CONTEXT(ctypes.byref(former))
        library().TIER_USE(integer(self.number), ctypes.byref(ierr))
        self._former.number = former.value
        return self

    def __exit__(self, *_: object) -> None:
        library().TIER_USE(integer(self._former.number), ctypes.byref(ctypes.c_int()))

    def __del__(self) -> None:
        if self.number:
            library().TIER_DESTROY(integer(self.number), ctypes.byref(ctypes.c_int()))
