"""TIER, the algebraic multigrid solver, for scipy's sparse matrices.

    import tier
    s = tier.Solver(A)                        # set-up; A: scipy CSR, n x n
    u = s.solve(f)                            # or s.solve(f, first_guess)
    u, info = scipy.sparse.linalg.cg(A, f, M=s.aspreconditioner())

Needs the shared library: where the environment's TIER_LIBRARY points, beside this package as installed, or where the
system's loader finds it. Solvers may work in different threads; one solver is for one thread at a time.
"""

from tier.solver import Fault, Outcome, Solver, Warned, solve

__all__ = ["Fault", "Outcome", "Solver", "Warned", "solve"]
