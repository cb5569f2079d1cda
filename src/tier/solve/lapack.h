// The LAPACK routines that the direct coarsest-level solvers use, by their Fortran names.
#pragma once

extern "C" {
/// P A = L U of an m x n matrix by columns; info > 0: a zero pivot. dgetrs_ solves with the factors.
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgetrs_(const char* trans, const int* n, const int* nrhs, const double* a, const int* lda,
             const int* ipiv, double* b, const int* ldb, int* info);

/// P A Q = L U with complete pivoting; info > 0: a pivot was too small. dgesc2_ solves, b scaled by `scale`.
void dgetc2_(const int* n, double* a, const int* lda, int* ipiv, int* jpiv, int* info);
void dgesc2_(const int* n, const double* a, const int* lda, double* rhs, const int* ipiv, const int* jpiv,
             double* scale);

/// A P = Q R with column pivoting, the product with Q, and the solution with R.
void dgeqp3_(const int* m, const int* n, double* a, const int* lda, int* jpvt, double* tau, double* work,
             const int* lwork, int* info);
void dormqr_(const char* side, const char* trans, const int* m, const int* n, const int* k, const double* a,
             const int* lda, const double* tau, double* c, const int* ldc, double* work, const int* lwork,
             int* info);
void dtrtrs_(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
             const double* a, const int* lda, double* b, const int* ldb, int* info);

/// A = L L^T of the triangle `uplo`; info > 0: not positive definite. dpotrs_ solves with the factor.
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info);
void dpotrs_(const char* uplo, const int* n, const int* nrhs, const double* a, const int* lda, double* b,
             const int* ldb, int* info);
}
