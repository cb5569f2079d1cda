"""The solver over one matrix: set-up, solution, preconditioner."""

from __future__ import annotations

import ctypes
import warnings
from dataclasses import dataclass

import numpy as np
import scipy.sparse
from scipy.sparse.linalg import LinearOperator

from tier import library as tier_library

_ACCELERATORS = {"none": 0, "cg": 1, "bicgstab": 2, "gmres": 3, "fcg": 4}
_CYCLES = {"V": 1, "F": 2, "W": 3, "VV": 4}
_KEEP, _REUSE = 4, 1
_GUESS_AS_IT_STANDS, _ZERO = 0, 1


class Fault(RuntimeError):
    """A call that TIER ended: its number `ierr` and text."""

    def __init__(self, ierr: int, text: str) -> None:
        super().__init__(f"TIER: {text} (ierr {ierr})")
        self.ierr = ierr


class Warned(UserWarning):
    """A call that went on with a warning, not converged as a rule."""


@dataclass(frozen=True)
class Outcome:
    """What the last solution took and reached."""

    steps: int
    first_residual: float
    last_residual: float
    warning: int  # negative ierr, 0: none


class Solver:
    """Multigrid for a square sparse matrix.

    matrix       scipy sparse, n x n, every row with its diagonal; copied
    symmetric    None: found out; conjugate gradients need a symmetric positive definite matrix
    accelerator  "cg", "bicgstab", "gmres", "fcg", "none"; None: cg for symmetric matrices, else gmres
    functions    (n,) integers from 1, the physical function of each row; points likewise; None: one, none
    parameters   of docs/parameters.md by name, such as nptmn=50
    Raises Fault where TIER ends the set-up, ValueError for arrays that don't fit.
    """

    def __init__(
        self,
        matrix,
        *,
        symmetric: bool | None = None,
        accelerator: str | None = None,
        cycle: str = "V",
        approach: int = 0,
        strategy: int = 40,
        functions=None,
        points=None,
        **parameters: float,
    ) -> None:
        rows = _diagonal_first(matrix)
        self.n = rows.n
        self._rows = rows
        self.symmetric = rows.symmetric if symmetric is None else symmetric
        chosen = accelerator or ("cg" if self.symmetric else "gmres")
        self._cycle_code = 1_000_000 * _CYCLES[cycle]
        self._method_code = 100_000 * _ACCELERATORS[chosen]
        self._approach, self._strategy = approach, strategy
        self._functions, self._points = _numbers(functions, self.n), _numbers(points, self.n)
        self.outcome = Outcome(0, -1.0, -1.0, 0)
        self._context = tier_library.Context()
        with self._context:
            tier_library.set_parameter("mode_mess", -3)
            if chosen == "none":
                tier_library.set_parameter("ncgrad_default", 0)
            for name, value in parameters.items():
                tier_library.set_parameter(name, value)
        zero = np.zeros(self.n)
        self._call(_KEEP, self._method_code, 0, 1e-8, _ZERO, zero, zero.copy())

    def solve(self, f, first_guess=None, *, tolerance: float = 1e-8, most_steps: int = 100) -> np.ndarray:
        """u with |f - A u| <= tolerance |f - A first_guess|; a Warned where that isn't reached."""
        u = np.zeros(self.n) if first_guess is None else _vector(first_guess, self.n).copy()
        self._call(_REUSE, self._method_code, most_steps, tolerance, _GUESS_AS_IT_STANDS, _vector(f, self.n), u)
        if self.outcome.warning:
            with self._context:
                text = tier_library.fault_text()
            warnings.warn(f"TIER: {text} ({self.outcome.warning})", Warned, stacklevel=2)
        return u

    def aspreconditioner(self) -> LinearOperator:
        """One cycle from zero as an operator for scipy's Krylov methods; symmetric where the matrix is."""

        def apply(f: np.ndarray) -> np.ndarray:
            residual = _vector(f, self.n)
            u = np.zeros(self.n)
            if residual.any():
                # all rows forward, then all rows backward: a symmetric cycle, and no accelerator around it
                with self._context, tier_library.parameters(ncgrad_default=0, nrd=12, nru=-12):
                    self._call(_REUSE, 0, 1, 1e-300, _ZERO, residual, u)
            return u

        return LinearOperator((self.n, self.n), matvec=apply, dtype=float)

    def _call(
        self, run: int, method: int, steps: int, tolerance: float, guess: int, f: np.ndarray, u: np.ndarray
    ) -> None:
        rows, integer, real = self._rows, tier_library.integer, tier_library.real
        functions = int(self._functions.max()) if self._functions.size > 1 else 1
        scale = np.zeros(functions, dtype=np.int32)
        done, ierr = ctypes.c_int(), ctypes.c_int()
        first, last = ctypes.c_double(), ctypes.c_double()
        with self._context:
            tier_library.library().TIER(
                integer(self.n),
                integer(rows.columns.size),
                integer(functions),
                _address(rows.starts),
                _address(rows.columns),
                _address(rows.values),
                _address(f),
                _address(u),
                _address(self._functions),
                integer(self._functions.size),
                _address(self._points),
                integer(self._points.size),
                integer(12 if self.symmetric else 22),
                _address(scale),
                ctypes.byref(first),
                ctypes.byref(last),
                ctypes.byref(done),
                ctypes.byref(ierr),
                integer(self._approach),
                integer(guess),
                real(tolerance),
                integer(self._cycle_code + method + steps),
                integer(1000 * run + 100 + self._strategy),
                real(0.0),
                real(0.0),
                real(0.0),
                real(0.0),
                real(-1.0 if run == _REUSE else 0.0),
                integer(-1),
                integer(-1),
            )
            if ierr.value > 0:
                raise Fault(ierr.value, tier_library.fault_text())
        self.outcome = Outcome(done.value, first.value, last.value, ierr.value)


def solve(matrix, f, **options) -> np.ndarray:
    """The solution of one system; options as for Solver."""
    return Solver(matrix, **options).solve(f)


@dataclass
class _Rows:
    """Compressed rows from 1, the diagonal first in each row."""

    n: int
    starts: np.ndarray
    columns: np.ndarray
    values: np.ndarray
    symmetric: bool


def _diagonal_first(matrix) -> _Rows:
    a = scipy.sparse.csr_matrix(matrix, dtype=float, copy=True)
    n = a.shape[0]
    if a.shape[0] != a.shape[1] or n == 0:
        raise ValueError(f"TIER needs a square matrix, not {a.shape[0]} x {a.shape[1]}")
    a.sum_duplicates()
    difference = abs(a - a.T)
    symmetric = difference.nnz == 0 or difference.max() <= 1e-12 * abs(a).max()
    row = np.repeat(np.arange(n), np.diff(a.indptr))
    off = a.indices != row
    if n != a.indices.size - np.count_nonzero(off):
        missing = np.setdiff1d(np.arange(n), row[~off])[0]
        raise ValueError(f"TIER needs a diagonal in every row; row {missing} (from 0) has none")
    order = np.lexsort((a.indices, off, row))
    return _Rows(
        n,
        (a.indptr + 1).astype(np.int32),
        (a.indices[order] + 1).astype(np.int32),
        np.ascontiguousarray(a.data[order]),
        bool(symmetric),
    )


def _numbers(given, n: int) -> np.ndarray:
    if given is None:
        return np.ones(1, dtype=np.int32)
    numbers = np.ascontiguousarray(given, dtype=np.int32)
    if numbers.shape != (n,):
        raise ValueError(f"functions and points need one number for each of {n} rows")
    return numbers


def _vector(given, n: int) -> np.ndarray:
    vector = np.ascontiguousarray(given, dtype=float).reshape(-1)
    if vector.size != n:
        raise ValueError(f"a vector of {vector.size} elements for {n} rows")
    return vector


def _address(array: np.ndarray) -> ctypes.c_void_p:
    return array.ctypes.data_as(ctypes.c_void_p)
