/*
 * TIER: an algebraic multigrid solver for sparse linear systems A u = f.
 *
 * The one public header. C linkage and all arguments by pointer, so that C, C++ and Fortran callers use the
 * same entries; tier.f90 holds the Fortran interfaces. Arrays are numbered from 1 in what is said here: ia(1)
 * is the first element. State is global to the library: no two calls may overlap.
 *
 * A is given in compressed rows: row i occupies positions ia(i) to ia(i+1)-1 of ja (columns 1 to nnu) and a
 * (values), its first entry is the diagonal, no column stands twice in a row. Pages beside this header, in
 * share/doc/tier: solver.md tells the digit codes and the table of ierr, tuning.md what to set when,
 * parameters.md the named parameters, not_released.md what isn't there.
 */
#ifndef TIER_H
#define TIER_H

#define TIER_VERSION_MAJOR 1
#define TIER_VERSION_MINOR 0
#define TIER_VERSION_PATCH 0
#define TIER_VERSION (10000 * TIER_VERSION_MAJOR + 100 * TIER_VERSION_MINOR + TIER_VERSION_PATCH)

#if defined(__GNUC__)
#define TIER_API __attribute__((visibility("default")))
#else
#define TIER_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Solves A u = f, as the control codes ask for: set-up of a hierarchy, solution, both, or a re-start.
 *
 *   nnu, nna     rows and stored entries
 *   nsys         physical functions, 1 to 999
 *   ia, ja, a    the matrix: nnu + 1, nna and nna elements. A set-up may change the order of entries within a
 *                row behind the diagonal. Rows of ja and a are moved while a solution runs and stand in their
 *                places when the call returns, with an error too
 *   f, u         right-hand side; first guess, then the solution
 *   iu, ndiu     function number of each row, and the declared length of iu (1 will do for nsys 1)
 *   ip, ndip     point number of each row, and the declared length of ip; below nnu, or 1: no points given
 *   matrix       code of the matrix: symmetry, row sums, transformation (21 non-symmetric, 12 symmetric; the
 *                second digit is 2 where row sums don't vanish)
 *   iscale       nsys elements: 1 where a function is fixed only up to a constant, else 0
 *   res_in       residual norm of the first guess, -1.0 until known; an input where ntake_res_in is set
 *   res_out      residual norm at the end, -1.0 until known
 *   ncyc_done    cycles performed
 *   ierr         0 good, positive: an error that ended the call, negative: the last warning
 *   nsolve       code of the approach, 0 for the default
 *   ifirst       code of the first guess: 0 u as it stands, 1 zero, 2 one, 3 random
 *   eps          stopping tolerance: positive relative to res_in, negative absolute
 *   ncyc         code of the cycle: type, accelerator, Krylov dimension, and the limit of cycles behind these
 *                three digits; 0 for the default
 *   iswtch       code of the run: 5xxx set-up, solution and clean-up; 4xxx keeps the hierarchy; 1xxx and 3xxx
 *                re-starts; 0 returns at once
 *   a_cmplx, g_cmplx, p_cmplx, w_avrge
 *                estimates of operator, grid and point complexity and of the interpolation stencil, below
 *                1.0: the default. They come back as they were used
 *   chktol       negative: basic checks of the matrix; 0: logical checks; positive: also numerical ones
 *   idump, iout  print codes of set-up and solution, -1: none
 */
TIER_API void TIER(const int* nnu, const int* nna, const int* nsys, const int* ia, int* ja, double* a,
                   const double* f, double* u, const int* iu, const int* ndiu, const int* ip, const int* ndip,
                   const int* matrix, const int* iscale, double* res_in, double* res_out, int* ncyc_done,
                   int* ierr, const int* nsolve, const int* ifirst, const double* eps, const int* ncyc,
                   const int* iswtch, double* a_cmplx, double* g_cmplx, double* p_cmplx, double* w_avrge,
                   const double* chktol, const int* idump, const int* iout);

/*
 * TIER with its codes from a file of name=value lines, "<filnam>.in" or else "tier.in", and from
 * TIER_SETCONTROL; without these matrix is 22, eps 1e-8 and every other code 0. The file may set parameters
 * too. Where the parameter nsimple_emergency is set, a run that fails is tried again by BiCGstab with ILU.
 */
TIER_API void TIER_SIMPLE(const int* nnu, const int* nna, const int* nsys, const int* ia, int* ja, double* a,
                          const double* f, double* u, const int* iu, const int* ndiu, const int* ip,
                          const int* ndip, const int* iscale, double* res_in, double* res_out, int* ncyc_done,
                          int* ierr);

/* Sets a code of TIER_SIMPLE by name, until TIER_LEAVE: matrix is called "control". Stops on another name. */
TIER_API void TIER_SETCONTROL(const char* name, const int* length, const double* value);

/* End of a run of calls: frees everything and puts all parameters but logio and logfile to their defaults. */
TIER_API void TIER_LEAVE(int* ierr);
/* Frees the hierarchy, but for memory that keepmem keeps; parameters stay. The next call must set up anew
 * (iswtch 4xxx, 5xxx or 6xxx): a re-start ends with 52. */
TIER_API void TIER_REFRESH(int* ierr);
/* Frees everything; parameters stay. */
TIER_API void TIER_CLEANUP(int* ierr);
TIER_API void XTIER_LEAVE(int* ierr);
TIER_API void XTIER_CLEANUP(int* ierr);

/*
 * Contexts: all that TIER keeps between calls, parameters, hierarchy, timers, log file and figures of the
 * last call. Every thread begins in the default one, number 0. Calls in different contexts may overlap in
 * threads of a program; calls in one context may not. TIER_CREATE   makes a context with default parameters;
 * its number, from 1. ierr 70 without memory TIER_USE      the calling thread uses a context from now on.
 * ierr 20: there is none of that number TIER_DESTROY  frees a context; a thread that still uses it keeps it
 * until it turns to another or ends, the calling thread turns to the default one. ierr 20: none of that
 * number, or 0
 */
TIER_API void TIER_CREATE(int* context, int* ierr);
TIER_API void TIER_USE(const int* context, int* ierr);
TIER_API void TIER_DESTROY(const int* context, int* ierr);
TIER_API void TIER_GET_CONTEXT(int* context); /* the one that the calling thread uses */
/* Text of the last error or warning of a call in this thread's context, padded with blanks. */
TIER_API void TIER_GET_FAULT(char* text, const int* length);

/* Splits |value| into nnum (1 to 9) digit fields from the left; the last field takes all remaining digits. */
TIER_API void TIER_IDEC(const int* value, const int* nnum, int* ndigit, int* digits);
/* Ratio of the lengths of a real and an integer. */
TIER_API void TIER_LRATIO(int* ratio);
/* A hook: called with the residual after every cycle. A program may define it; the library's own does
 * nothing. */
TIER_API void TIER_CURRENT_RESIDUAL(const int* niter, const double* res);

/*
 * Messages. Classes: 1 error, -1 warning, 0 note, -2 control; the parameter mode_mess filters them. Texts are
 * given by address and length, with blank lines before and after.
 */
TIER_API void TIER_INFO(const int* message_class, const int* blank_before, const int* blank_after,
                        const char* text, const int* length);
TIER_API void TIER_MESSAGE(const int* blank_before, const int* blank_after, const char* text,
                           const int* length);
TIER_API void TIER_OPEN_LOGFILE(int* ierr);
TIER_API void TIER_CLOSE_LOGFILE(void);
TIER_API void TIER_FLUSH(void);
TIER_API void TIER_MEM_INFO(void);

/* Timers, in seconds. */
TIER_API void TIER_ELAPSED_TIME(float* t);
TIER_API void TIER_CTIME(float* t);
TIER_API void TIER_CPUTIME(float* t);
/* span = t1 - t0, also where the clock has started anew between the two. */
TIER_API void TIER_COMPTIME(float* span, const float* t0, const float* t1);
TIER_API void TIER_ADDTIME(float* sum, const float* t0, const float* t1);
TIER_API void TIER_PERFINIT(void);
TIER_API void TIER_PERFOUT(void);

/*
 * Results of the last call.
 *   TIER_GET_COMPLEXITIES  levels, and 11 values: a_cmplx, a_avrge, b_cmplx, b_avrge, ib_cmplx, g_cmplx,
 *                          t_cmplx, w_avrge, c_cmplx, p_cmplx, e_cmplx
 *   TIER_GET_NFLAG         ierr of the last call
 *   TIER_GET_MEM_ACTIVE    megabytes in use
 *   TIER_GET_TIME_AND_MEM  8 values: seconds of set-up, of solution, per cycle and in all; megabytes of
 *                          integers and of reals at the end of the solution, at the peak, and now
 */
TIER_API void TIER_GET_COMPLEXITIES(int* levels, double* values);
TIER_API void TIER_GET_LEVELS_CREATED(int* levels);
TIER_API void TIER_GET_NFLAG(int* nflag);
TIER_API void TIER_GET_MEM_ACTIVE(double* megabytes);
TIER_API void TIER_GET_TIME_AND_MEM(double* values);

/* Damping factors of Jacobi steps, one (n = 1) or one per function (n = nsys), in place of omega_jacobi. */
TIER_API void TIER_OMEGA_JACOBI_ALLOC(const int* n, int* ierr);
TIER_API void TIER_OMEGA_JACOBI_SET(const int* n, const double* values, int* ierr);
TIER_API void TIER_OMEGA_JACOBI_DEALLOC(int* ierr);

/*
 * Near-null vectors of smoothed aggregation (parameter naggregation): what the matrix without its boundary
 * conditions takes to zero. They are copied, and kept until TIER_MODES_CLEAR, TIER_LEAVE or the next of these
 * calls. Without them each function has the constant vector.
 *   TIER_MODES_SET         values(n, count): `count` vectors, 1 to 12, for the n = nnu variables
 *   TIER_COORDINATES_SET   values(dimension, n): position of each variable in 2 or 3 directions, of which
 * rigid motions are made: functions (iu) 1 to `dimension` are translations along the axes, with nsys = 6 the
 * functions 4 to 6 rotations about them ierr 20: n, count or dimension out of range, or values that aren't
 * finite; 70: no memory.
 */
TIER_API void TIER_MODES_SET(const int* n, const int* count, const double* values, int* ierr);
TIER_API void TIER_COORDINATES_SET(const int* n, const int* dimension, const double* values, int* ierr);
TIER_API void TIER_MODES_CLEAR(void);

/*
 * Named parameters: TIER_SET_x and TIER_GET_x for each. Logicals are 0 or not 0 in, 0 or -1 out. Texts are
 * given by address and length; a get pads with blanks. ISET and IGET hold one character code per integer:
 * ISET answers a text above its limit with the negative limit in length; IGET takes the room of codes in
 * length and returns the characters used, or the negative number of those needed.
 */
#define TIER_INTEGER(name, NAME, initial, effect, meaning) \
  TIER_API void TIER_SET_##NAME(const int* value);         \
  TIER_API void TIER_GET_##NAME(int* value);
#define TIER_REAL(name, NAME, initial, effect, meaning) \
  TIER_API void TIER_SET_##NAME(const double* value);   \
  TIER_API void TIER_GET_##NAME(double* value);
#define TIER_LOGICAL(name, NAME, initial, effect, meaning) TIER_INTEGER(name, NAME, initial, effect, meaning)
#define TIER_TEXT(name, NAME, width, initial, effect, meaning)        \
  TIER_API void TIER_SET_##NAME(const char* text, const int* length); \
  TIER_API void TIER_GET_##NAME(char* text, const int* length);       \
  TIER_API void TIER_ISET_##NAME(const int* codes, int* length);      \
  TIER_API void TIER_IGET_##NAME(int* codes, int* length);
#include "parameters.def"

/* Every parameter back to its default. */
TIER_API void TIER_RESET_HIDDEN(void);
/* Prints all parameters (form 0), or those that the input list of a call doesn't show (form 1). */
TIER_API void TIER_EXTRAPRINT(const int* form);

/* By name, in lower case, trailing blanks ignored; an unknown name stops the process. */
TIER_API void TIER_SETINTEGER(const char* name, const int* length, const int* value);
TIER_API void TIER_SETDBLE(const char* name, const int* length, const double* value);
TIER_API void TIER_SETLOGICAL(const char* name, const int* length, const int* value);
TIER_API void TIER_SETCHAR(const char* name, const int* length, const char* text, const int* text_length);
TIER_API void TIER_GETINTEGER(const char* name, const int* length, int* value);
TIER_API void TIER_GETDBLE(const char* name, const int* length, double* value);
TIER_API void TIER_GETLOGICAL(const char* name, const int* length, int* value);
TIER_API void TIER_GETCHAR(const char* name, const int* length, char* text, const int* text_length);

/* Type of a parameter: 1 integer, 2 text, 3 real, 4 logical, 0 where none has the name. */
TIER_API void TIER_GETTYPE(const char* name, const int* length, int* type);

/*
 * By name over all types: type 1 integer, 2 text, 3 real, 4 logical says which of the values counts; a real
 * takes its value with any type of at least 3. TIER_GETANY returns the type with the value.
 */
TIER_API void TIER_SETANY(const char* name, const int* length, const int* type, const int* integer,
                          const double* real, const int* logical, const char* text, const int* text_length);
TIER_API void TIER_GETANY(const char* name, const int* length, int* type, int* integer, double* real,
                          int* logical, char* text, const int* text_length);

/* A parameter reader by unit, kept for callers that link it: these do nothing. */
TIER_API void TIER_GETINT_NU(void);
TIER_API void TIER_GETDBLE_NU(void);
TIER_API void TIER_GETRE_NU(void);
TIER_API void TIER_GETLO_NU(void);
TIER_API void TIER_GETTE_NU(void);
TIER_API void TIER_GETSPEC_NU(void);

#ifdef __cplusplus
}
#endif

#endif
