! Multiplies and solves at several sizes through the BLAS and LAPACK it is linked
! with, built with 64-bit default integers, and checks residuals.
! Prints one PASS or FAIL line per check.
module checks
  implicit none
  integer, parameter :: dp = kind(1.0d0)
  real(dp), parameter :: eps = epsilon(1.0_dp)
  ! what the last xerbla call reported
  character(len=6) :: reported_name = ''
  integer :: reported_info = 0
contains
  subroutine report(ok, what, n)
    logical, intent(in) :: ok
    character(*), intent(in) :: what
    integer, intent(in) :: n
    if (ok) then
      write (*, '(a,1x,a,1x,i0)') 'PASS', what, n
    else
      write (*, '(a,1x,a,1x,i0)') 'FAIL', what, n
    end if
  end subroutine

  subroutine fill(a)
    real(dp), intent(out) :: a(:, :)
    call random_number(a)
    a = a - 0.5_dp
  end subroutine
end module

! The library reports bad arguments here: a program's own xerbla takes the place
! of the library's.
subroutine xerbla(srname, info)
  use checks
  character(*), intent(in) :: srname
  integer, intent(in) :: info
  reported_name = srname
  reported_info = info
end subroutine

program ilp64_check
  use checks
  implicit none
  integer, parameter :: sizes(6) = [1, 2, 7, 64, 200, 333]
  integer :: k, n, info, i
  real(dp), allocatable :: a(:, :), b(:, :), c(:, :), lu(:, :), x(:, :), r(:, :)
  complex(dp), allocatable :: za(:, :), zf(:, :), zx(:, :), zb(:, :)
  integer, allocatable :: ipiv(:)
  real(dp) :: err, scale
  complex(dp) :: zd
  real(dp), external :: ddot, dnrm2
  complex(dp), external :: zdotc
  integer, allocatable :: seed(:)

  call random_seed(size=n)
  allocate (seed(n))
  seed = 20261122
  call random_seed(put=seed)
  do k = 1, size(sizes)
    n = sizes(k)
    allocate (a(n, n + 3), b(n + 3, 2*n), c(n, 2*n), lu(n, n), x(n, 3), r(n, 3), ipiv(n))
    call fill(a)
    call fill(b)

    ! C = A B against the intrinsic product
    c = -1
    call dgemm('N', 'N', n, 2*n, n + 3, 1.0_dp, a, n, b, n + 3, 0.0_dp, c, n)
    err = maxval(abs(c - matmul(a, b)))
    call report(err <= 10*(n + 3)*eps, 'dgemm', n)

    ! A x = r with three right-hand sides, then the residual
    lu = a(:, 1:n) + n*reshape([(merge(1.0_dp, 0.0_dp, mod(i, n + 1) == 0), i=0, n*n - 1)], [n, n])
    call fill(r)
    x = r
    b(1:n, 1:n) = lu
    ipiv = -1
    info = -1
    call dgesv(n, 3, lu, n, ipiv, x, n, info)
    scale = maxval(sum(abs(b(1:n, 1:n)), 2))*maxval(abs(x))*n*eps
    err = maxval(abs(matmul(b(1:n, 1:n), x) - r))
    call report(info == 0 .and. all(ipiv >= 1 .and. ipiv <= n) .and. err <= 30*scale, 'dgesv', n)

    ! results in the floating and complex registers
    err = abs(ddot(n, a, 1, a(:, 2), 1) - dot_product(a(:, 1), a(:, 2))) + &
          abs(dnrm2(n, a, 1) - sqrt(sum(a(:, 1)**2)))
    call report(err <= 10*n*eps, 'ddot-dnrm2', n)

    ! a complex solve, then the residual and a dot product returned in registers
    allocate (za(n, n), zx(n, 1), zb(n, 1))
    za = cmplx(a(:, 1:n), a(:, 2:n + 1), dp)
    do i = 1, n
      za(i, i) = za(i, i) + n
    end do
    zb(:, 1) = cmplx(r(:, 1), r(:, 2), dp)
    zx = zb
    zf = za
    info = -1
    call zgesv(n, 1, zf, n, ipiv, zx, n, info)
    err = maxval(abs(matmul(za, zx) - zb))
    zd = zdotc(n, zx, 1, zb, 1)
    call report(info == 0 .and. err <= 100*n*eps*maxval(abs(za))*maxval(abs(zx)) .and. &
                abs(zd - dot_product(zx(:, 1), zb(:, 1))) <= 10*n*eps*maxval(abs(zx))*maxval(abs(zb))*n, 'zgesv-zdotc', n)
    deallocate (a, b, c, lu, x, r, ipiv, za, zf, zx, zb)
  end do

  ! A row count whose low 32 bits are zero is negative only when read as 64 bits.
  allocate (a(1, 1), ipiv(1))
  n = -4294967296_8
  call dgemm('N', 'N', n, 1, 1, 1.0_dp, a, 1, a, 1, 0.0_dp, a, 1)
  call report(reported_name == 'DGEMM' .and. reported_info == 3, 'dgemm-wide-m-reported', 3)
  reported_info = 0
  call dgesv(1, n, a, 1, ipiv, a, 1, info)
  call report(info == -2, 'dgesv-wide-nrhs-rejected', 2)
end program
