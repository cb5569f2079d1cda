// The LAPACK routines that the direct coarsest-level solvers use, by their Fortran names.
#pragma once

extern "C" {
/// A = P L U of an m x n matrix by columns; info > 0: a zero pivot.
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
/// Solves with the factors of dgetrf_.
void dgetrs_(const char* trans, const int* n, const int* nrhs, const double* a, const int* lda, const int* ipiv,
             double* b, const int* ldb, int* info);
/// Least-squares solution of minimal length by a complete orthogonal factorisation with column pivoting.
void dgelsy_(const int* m, const int* n, const int* nrhs, double* a, const int* lda, double* b, const int* ldb,
             int* jpvt, const double* rcond, int* rank, double* work, const int* lwork, int* info);
}
