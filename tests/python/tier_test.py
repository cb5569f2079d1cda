"""The Python module of TIER against scipy: solutions, preconditioners, faults, solvers beside each other."""

import threading

import numpy as np
import pytest
import scipy.sparse as sparse
from scipy.sparse.linalg import cg, gmres, spsolve

import tier


def poisson(m: int, wind: float = 0.0) -> sparse.csr_matrix:
    line = sparse.diags([-1.0 - wind, 2.0 + wind, -1.0], [-1, 0, 1], shape=(m, m))
    return sparse.csr_matrix(sparse.kron(line, sparse.eye(m)) + sparse.kron(sparse.eye(m), line))


def right_side(n: int) -> np.ndarray:
    return np.sin(np.arange(n))


@pytest.mark.parametrize(
    "matrix, options",
    [
        (poisson(40), {}),
        (poisson(40).tocoo(), {"accelerator": "fcg", "cycle": "F"}),
        (poisson(40, wind=0.5), {}),
        (poisson(40), {"accelerator": "none", "nptmn": 20}),
    ],
    ids=["symmetric", "coordinates", "wind", "cycles alone"],
)
def test_solution_is_that_of_scipy(matrix, options):
    f = right_side(matrix.shape[0])
    s = tier.Solver(matrix, omp_num_threads_external=1000, **options)

    u = s.solve(f, tolerance=1e-11)

    assert 0 < s.outcome.steps < 40
    np.testing.assert_allclose(u, spsolve(sparse.csc_matrix(matrix), f), rtol=0, atol=1e-7)


@pytest.mark.parametrize("method, wind", [(cg, 0.0), (gmres, 0.5)], ids=["cg", "gmres"])
def test_preconditioner_saves_steps(method, wind):
    matrix = poisson(60, wind)
    f = right_side(matrix.shape[0])
    operator = tier.Solver(matrix, omp_num_threads_external=1000, nptmn=20).aspreconditioner()
    steps = [0, 0]

    def counted(which):
        def count(_):
            steps[which] += 1

        return count

    kind = {} if method is cg else {"callback_type": "pr_norm"}
    method(matrix, f, maxiter=40, callback=counted(0), **kind)
    u, info = method(matrix, f, M=operator, maxiter=40, callback=counted(1), **kind)

    assert info == 0 and steps[1] <= steps[0] / 2
    assert np.linalg.norm(f - matrix @ u) <= 1e-4 * np.linalg.norm(f)


def test_preconditioner_of_a_symmetric_matrix_is_symmetric_and_linear():
    matrix = poisson(12)
    operator = tier.Solver(matrix, omp_num_threads_external=1000, nptmn=20).aspreconditioner()
    x, y = right_side(144), np.cos(np.arange(144) ** 1.5)

    assert np.dot(x, operator @ y) == pytest.approx(np.dot(y, operator @ x), rel=1e-9)
    np.testing.assert_allclose(operator @ (x + 2 * y), operator @ x + 2 * (operator @ y), atol=1e-9)


def test_faults_and_warnings_are_told():
    with pytest.raises(ValueError, match=r"row 1 \(from 0\) has none"):
        tier.Solver(sparse.csr_matrix([[1.0, 2.0], [3.0, 0.0]]))
    with pytest.raises(tier.Fault, match="diagonal") as caught:
        tier.Solver(-poisson(4))
    assert caught.value.ierr in (40, 50)
    with pytest.raises(KeyError, match="no parameter 'nonsense'"):
        tier.Solver(poisson(4), nonsense=1)
    with pytest.warns(tier.Warned):
        tier.Solver(poisson(40), nptmn=20).solve(right_side(1600), tolerance=1e-12, most_steps=2)


def test_threads_with_a_solver_each_give_the_bits_of_one_after_the_other():
    sizes = [30, 37]

    def work(m: int) -> np.ndarray:
        s = tier.Solver(poisson(m), omp_num_threads_external=1000)
        return np.concatenate([s.solve(right_side(m * m)), s.solve(np.ones(m * m))])

    expected = [work(m) for m in sizes]
    found = [None] * len(sizes)

    def run(i: int) -> None:
        found[i] = work(sizes[i])

    threads = [threading.Thread(target=run, args=(i,)) for i in range(len(sizes))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for one, other in zip(expected, found):
        np.testing.assert_array_equal(one, other)
