! Bends a cantilever of plane stress by its end: TIER by smoothed aggregation makes the strip's rigid motions of the
! positions of its points. Checks the residual and the deflection of beam theory itself.
program plane_stress
  use, intrinsic :: iso_c_binding, only: c_int, c_double
  use tier_interfaces
  implicit none

  integer(c_int), parameter :: length = 240, height = 24, nnu = 2 * length * (height + 1), nsys = 2
  integer, parameter :: corner(2, 4) = reshape([0, 0, 1, 0, 1, 1, 0, 1], [2, 4])
  real(c_double), parameter :: nu = 0.3_c_double   ! E = 1, thickness 1, squares of side 1
  integer(c_int) :: ia(nnu + 1), ja(18 * nnu), iu(nnu), ip(nnu), nna, steps, ierr, y
  real(c_double) :: a(18 * nnu), f(nnu), u(nnu), position(2, nnu), stiffness(8, 8), before, deflection
  logical :: good

  call fill_stiffness()
  call fill_matrix()
  f = 0
  u = 0
  f([(2 * node_at(length, y), y = 0, height)]) = 1.0_c_double / height
  f([2 * node_at(length, 0), nnu]) = 0.5_c_double / height
  before = residual()

  call solve()

  deflection = u(nnu) / beam_deflection()
  print '(a, i0, a, i0, a, es8.1, a, f7.4, a)', 'ierr ', ierr, ', ', steps, ' steps, residual reduced by ', &
    residual() / before, ', deflection', deflection, ' of a beam''s'
  good = ierr == 0 .and. steps <= 20 .and. residual() < 1.1e-8_c_double * before
  if (.not. (good .and. abs(deflection - 1) < 0.01_c_double)) error stop 1

contains

  ! Bilinear square, 2 x 2 Gauss points: B^T D B, strains xx, yy, xy.
  subroutine fill_stiffness()
    real(c_double) :: b(3, 8), d(3, 3), s(2)
    integer :: gauss, n, sign(2)
    d = reshape([1.0_c_double, nu, 0.0_c_double, nu, 1.0_c_double, 0.0_c_double, 0.0_c_double, 0.0_c_double, &
                 (1 - nu) / 2], [3, 3]) / (1 - nu**2)
    stiffness = 0
    do gauss = 1, 4
      s = (2 * corner(:, gauss) - 1) / sqrt(3.0_c_double)
      b = 0
      do n = 1, 4
        sign = 2 * corner(:, n) - 1
        b(1, 2 * n - 1) = sign(1) * (1 + sign(2) * s(2)) / 2
        b(2, 2 * n) = sign(2) * (1 + sign(1) * s(1)) / 2
        b(3, 2 * n - 1) = b(2, 2 * n)
        b(3, 2 * n) = b(1, 2 * n - 1)
      end do
      stiffness = stiffness + matmul(transpose(b), matmul(d, b)) / 4
    end do
  end subroutine

  ! Node (x, y) from 1, or 0 on the clamped side and outside.
  integer pure function node_at(x, y)
    integer, intent(in) :: x, y
    node_at = 0
    if (x >= 1 .and. x <= length .and. y >= 0 .and. y <= height) node_at = (x - 1) * (height + 1) + y + 1
  end function

  ! Stiffness between function p of node (x, y) and function q of its neighbour, over the squares of both.
  real(c_double) pure function coupling(x, y, p, dx, dy, q)
    integer, intent(in) :: x, y, p, dx, dy, q
    integer :: own, other, low(2)
    coupling = 0
    do own = 1, 4
      low = [x, y] - corner(:, own)
      if (any(low < 0) .or. low(1) >= length .or. low(2) >= height) cycle
      do other = 1, 4
        if (all(corner(:, other) - corner(:, own) == [dx, dy])) &
          coupling = coupling + stiffness(2 * own - 2 + p, 2 * other - 2 + q)
      end do
    end do
  end function

  ! Point by point, two functions each; every row starts with its diagonal.
  subroutine fill_matrix()
    integer :: x, y, p, q, dx, dy, row, column
    nna = 0
    do x = 1, length
      do y = 0, height
        do p = 1, 2
          row = 2 * node_at(x, y) - 2 + p
          ia(row) = nna + 1
          iu(row) = p
          ip(row) = node_at(x, y)
          position(:, row) = [real(x, c_double), real(y, c_double)]
          call add(row, coupling(x, y, p, 0, 0, p))
          do dx = -1, 1
            do dy = -1, 1
              if (node_at(x + dx, y + dy) == 0) cycle
              do q = 1, 2
                column = 2 * node_at(x + dx, y + dy) - 2 + q
                if (column /= row) call add(column, coupling(x, y, p, dx, dy, q))
              end do
            end do
          end do
        end do
      end do
    end do
    ia(nnu + 1) = nna + 1
  end subroutine

  subroutine add(column, val)
    integer, intent(in) :: column
    real(c_double), intent(in) :: val
    nna = nna + 1
    ja(nna) = column
    a(nna) = val
  end subroutine

  ! Symmetric matrix (12), a multigrid cycle of at most 100 steps, one call that sets up, solves and cleans up.
  subroutine solve()
    real(c_double) :: res_in, res_out, a_cmplx, g_cmplx, p_cmplx, w_avrge
    a_cmplx = 0
    g_cmplx = 0
    p_cmplx = 0
    w_avrge = 0
    call TIER_SET_NAGGREGATION(1_c_int)
    call TIER_COORDINATES_SET(nnu, 2_c_int, position, ierr)
    if (ierr /= 0) error stop 'the positions were refused'
    call TIER(nnu, nna, nsys, ia, ja, a, f, u, iu, nnu, ip, nnu, 12_c_int, [0_c_int, 0_c_int], res_in, res_out, &
              steps, ierr, 0_c_int, 1_c_int, 1e-8_c_double, 1100100_c_int, 5140_c_int, a_cmplx, g_cmplx, p_cmplx, &
              w_avrge, 0.0_c_double, -1_c_int, -1_c_int)
  end subroutine

  real(c_double) function residual()
    integer(c_int) :: i
    residual = 0
    do i = 1, nnu
      residual = residual + (f(i) - dot_product(a(ia(i):ia(i + 1) - 1), u(ja(ia(i):ia(i + 1) - 1))))**2
    end do
    residual = sqrt(residual)
  end function

  ! Bending and shear of a beam with a force of 1 at its end; 5/6 is the shear factor of a rectangle.
  real(c_double) function beam_deflection()
    beam_deflection = 4 * real(length, c_double)**3 / real(height, c_double)**3 &
                      + length * 12 * (1 + nu) / (5 * height)
  end function
end program
