! Solves a system of two coupled functions with TIER, keeps its hierarchy for a second right-hand side, and checks
! the residuals itself. Two bars of springs lie side by side and are tied to each other point by point.
program elastic_bar
  use, intrinsic :: iso_c_binding, only: c_int, c_double
  use tier_interfaces
  implicit none

  integer(c_int), parameter :: points = 1000, nsys = 2, nnu = nsys * points
  integer(c_int) :: ia(nnu + 1), ja(4 * nnu), iu(nnu), ip(nnu), nna
  real(c_double) :: a(4 * nnu), f(nnu), u(nnu)
  real(c_double), parameter :: tie = 1e-5_c_double
  logical :: good

  call fill_matrix()
  f = 1
  u = 0
  good = solved(4140_c_int)      ! set up, solve, keep the hierarchy
  f(1:nnu:2) = -1
  good = solved(1140_c_int) .and. good
  if (.not. good) error stop 1

contains

  subroutine fill_matrix()
    integer(c_int) :: point, func, i
    nna = 0
    do point = 1, points
      do func = 1, nsys
        i = nsys * (point - 1) + func
        iu(i) = func
        ip(i) = point
        ia(i) = nna + 1
        call add(i, 2 + tie)
        call add(i + 3 - 2 * func, -tie)
        if (point > 1) call add(i - nsys, -1.0_c_double)
        if (point < points) call add(i + nsys, -1.0_c_double)
      end do
    end do
    ia(nnu + 1) = nna + 1
  end subroutine

  subroutine add(column, val)
    integer(c_int), intent(in) :: column
    real(c_double), intent(in) :: val
    nna = nna + 1
    ja(nna) = column
    a(nna) = val
  end subroutine

  ! Unknown-based approach, V-cycle under flexible GMRES, at most 200 cycles.
  logical function solved(iswtch)
    integer(c_int), intent(in) :: iswtch
    real(c_double) :: res_in, res_out, a_cmplx, g_cmplx, p_cmplx, w_avrge, before
    integer(c_int) :: cycles, ierr
    a_cmplx = 0
    g_cmplx = 0
    p_cmplx = 0
    w_avrge = 0
    before = residual()
    call TIER(nnu, nna, nsys, ia, ja, a, f, u, iu, nnu, ip, nnu, 22_c_int, [0_c_int, 0_c_int], res_in, res_out, &
              cycles, ierr, 2_c_int, 0_c_int, 1e-8_c_double, 1300200_c_int, iswtch, a_cmplx, g_cmplx, p_cmplx, &
              w_avrge, 0.0_c_double, -1_c_int, -1_c_int)
    print '(a, i0, a, i0, a, es8.1)', 'ierr ', ierr, ', ', cycles, ' cycles, residual reduced by ', residual() / before
    solved = ierr == 0 .and. residual() < 1.1e-8_c_double * before
  end function

  real(c_double) function residual()
    integer(c_int) :: i
    residual = 0
    do i = 1, nnu
      residual = residual + (f(i) - dot_product(a(ia(i):ia(i + 1) - 1), u(ja(ia(i):ia(i + 1) - 1))))**2
    end do
    residual = sqrt(residual)
  end function
end program
