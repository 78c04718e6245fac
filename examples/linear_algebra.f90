! Multiplies, solves and factors through the Fortran BLAS and LAPACK entries of
! libqnl_rt.so, with default (32-bit) integers, and prints the residuals. Run it
! with QNL_VERBOSE=1 to see one trace line per call.
program linear_algebra
  implicit none
  integer, parameter :: dp = kind(1.0d0), n = 5
  real(dp) :: a(n, n), c(n, n), lu(n, n), x(n, 2), r(n, 2)
  integer :: ipiv(n), info, i, j

  do j = 1, n
    do i = 1, n
      a(i, j) = 1.0_dp/(i + j - 1)
    end do
    a(j, j) = a(j, j) + n
  end do

  call dgemm('T', 'N', n, n, n, 1.0_dp, a, n, a, n, 0.0_dp, c, n)
  print '(a,es9.2)', 'dgemm:  max |C - A^T A|       = ', maxval(abs(c - matmul(transpose(a), a)))

  r(:, 1) = [(real(i, dp), i=1, n)]
  r(:, 2) = 1
  x = r
  lu = a
  call dgesv(n, 2, lu, n, ipiv, x, n, info)
  print '(a,i0,a,es9.2)', 'dgesv:  info ', info, ', max |A X - R| = ', maxval(abs(matmul(a, x) - r))

  lu = c
  call dpotrf('U', n, lu, n, info)
  do j = 1, n
    lu(j + 1:n, j) = 0
  end do
  print '(a,i0,a,es9.2)', 'dpotrf: info ', info, ', max |U^T U - C| = ', maxval(abs(matmul(transpose(lu), lu) - c))
end program
