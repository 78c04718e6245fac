# CBLAS entries: one routine per line. Each name is exported as a selector that jumps to
# the LP64 or the ILP64 body of the routine; both bodies come from the shape's template
# (cblas_*.h) and end in the library's own Fortran entry of the same name.
#
# name     a routine name after "cblas_"; "?" takes each prefix of the next column in turn
# prefixes "sdcz" style, or a comma list for prefixes of more letters ("s,d,sc,dz"); "-" for
#          a name without "?". The element type is the complex letter of the prefix if it has
#          one, else its letter (scnrm2 reads complex float, csscal scales complex float).
# result   -  none   R  real type of the element   d  double   Z  CBLAS_INDEX (size_t)
#          P  pointer to the element type
# shape    the body template (cblas_level1.h, cblas_level2.h, cblas_level3.h, cblas_sparse.h,
#          cblas_batch.h)
# args     name:code in the C order; the letters are those of tools/qnlgen/model.py (VOCABULARY):
#            L layout   T CBLAS_TRANSPOSE   U CBLAS_UPLO   G CBLAS_DIAG   S CBLAS_SIDE
#            D CBLAS_IDENTIFIER   K transposition of a packed operand (int)
#            i integer (the body's width)   j const integer array (the body's width)
#            a scalar of the element type: by value when real, const void* when complex
#            r real scalar by value   w pointer to real   e const element array   y element array
#            v const void*   N const CBLAS_TRANSPOSE array   A const element pointer array   C element pointer array
# flags    +fortran=NAME  the Fortran entry called when it is not the routine's own name
#          +also=NAME     a second Fortran entry the body may call (gerc's row-major geru)
#          +here          computed in the library: no Fortran entry
#          +widths        the two bodies are also exported as NAME_lp64 and NAME_ilp64
#
# name          prefixes       result shape     args

# ---- level 1
?rotg           sd             -  forward      a:w b:w c:w s:w
?rotg           cz             -  forward      a:y b:e c:w s:y
?rotmg          sd             -  forward       d1:w d2:w b1:w b2:r p:w
?rot            s,d,cs,zd      -  forward      n:i x:y incx:i y:y incy:i c:r s:r
?rotm           sd             -  forward      n:i x:y incx:i y:y incy:i p:e
?swap           sdcz           -  forward      n:i x:y incx:i y:y incy:i
?scal           sdcz           -  forward      n:i alpha:a x:y incx:i
?scal           cs,zd          -  forward      n:i alpha:r x:y incx:i
?copy           sdcz           -  forward      n:i x:e incx:i y:y incy:i
?axpy           sdcz           -  forward      n:i alpha:a x:e incx:i y:y incy:i
?axpby          sdcz           -  forward      n:i alpha:a x:e incx:i beta:a y:y incy:i
?dot            sd             R  forward      n:i x:e incx:i y:e incy:i
?dotu_sub       cz             -  dot_sub      n:i x:e incx:i y:e incy:i result:y  +fortran=?dotu
?dotc_sub       cz             -  dot_sub      n:i x:e incx:i y:e incy:i result:y  +fortran=?dotc
sd?dot          s              R  forward      n:i alpha:r x:e incx:i y:e incy:i
d?dot           s              d  forward      n:i x:e incx:i y:e incy:i
?nrm2           s,d,sc,dz      R  forward      n:i x:e incx:i
?asum           s,d,sc,dz      R  forward      n:i x:e incx:i
i?amax          sdcz           Z  iamax        n:i x:e incx:i
i?amin          sdcz           Z  iamax        n:i x:e incx:i
?cabs1          sd             R  forward      z:v

# ---- sparse level 1, computed here
?axpyi          sdcz           -  axpyi        nz:i alpha:a x:e indx:j y:y  +here
?doti           sd             R  doti         nz:i x:e indx:j y:e  +here
?dotui_sub      cz             -  dotui        nz:i x:e indx:j y:e result:y  +here
?dotci_sub      cz             -  dotci        nz:i x:e indx:j y:e result:y  +here
?gthr           sdcz           -  gthr         nz:i y:e x:y indx:j  +here
?gthrz          sdcz           -  gthrz        nz:i y:y x:y indx:j  +here
?sctr           sdcz           -  sctr         nz:i x:e indx:j y:y  +here
?roti           sd             -  roti         nz:i x:y indx:j y:y c:r s:r  +here

# ---- level 2
?gemv           sdcz           -  gemv         layout:L trans:T m:i n:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?gbmv           sdcz           -  gbmv         layout:L trans:T m:i n:i kl:i ku:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?ger            sd             -  ger          layout:L m:i n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?geru           cz             -  ger          layout:L m:i n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?gerc           cz             -  gerc         layout:L m:i n:i alpha:a x:e incx:i y:e incy:i a:y lda:i  +also=?geru
?symv           sd             -  symv         layout:L uplo:U n:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?hemv           cz             -  symv         layout:L uplo:U n:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?sbmv           sd             -  sbmv         layout:L uplo:U n:i k:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?hbmv           cz             -  sbmv         layout:L uplo:U n:i k:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?spmv           sd             -  spmv         layout:L uplo:U n:i alpha:a ap:e x:e incx:i beta:a y:y incy:i
?hpmv           cz             -  spmv         layout:L uplo:U n:i alpha:a ap:e x:e incx:i beta:a y:y incy:i
?syr            sd             -  syr          layout:L uplo:U n:i alpha:a x:e incx:i a:y lda:i
?her            cz             -  syr          layout:L uplo:U n:i alpha:r x:e incx:i a:y lda:i
?spr            sd             -  spr          layout:L uplo:U n:i alpha:a x:e incx:i ap:y
?hpr            cz             -  spr          layout:L uplo:U n:i alpha:r x:e incx:i ap:y
?syr2           sd             -  syr2         layout:L uplo:U n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?her2           cz             -  syr2         layout:L uplo:U n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?spr2           sd             -  spr2         layout:L uplo:U n:i alpha:a x:e incx:i y:e incy:i ap:y
?hpr2           cz             -  spr2         layout:L uplo:U n:i alpha:a x:e incx:i y:e incy:i ap:y
?trmv           sdcz           -  trmv         layout:L uplo:U trans:T diag:G n:i a:e lda:i x:y incx:i
?trsv           sdcz           -  trsv         layout:L uplo:U trans:T diag:G n:i a:e lda:i x:y incx:i
?tbmv           sdcz           -  tbmv         layout:L uplo:U trans:T diag:G n:i k:i a:e lda:i x:y incx:i
?tbsv           sdcz           -  tbmv         layout:L uplo:U trans:T diag:G n:i k:i a:e lda:i x:y incx:i
?tpmv           sdcz           -  tpmv         layout:L uplo:U trans:T diag:G n:i ap:e x:y incx:i
?tpsv           sdcz           -  tpmv         layout:L uplo:U trans:T diag:G n:i ap:e x:y incx:i

# ---- level 3
?gemm           sdcz           -  gemm         layout:L transa:T transb:T m:i n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?gemm3m         cz             -  gemm         layout:L transa:T transb:T m:i n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?gemmt          sdcz           -  gemmt        layout:L uplo:U transa:T transb:T n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?symm           sdcz           -  symm         layout:L side:S uplo:U m:i n:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?hemm           cz             -  symm         layout:L side:S uplo:U m:i n:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?syrk           sdcz           -  syrk         layout:L uplo:U trans:T n:i k:i alpha:a a:e lda:i beta:a c:y ldc:i
?herk           cz             -  syrk         layout:L uplo:U trans:T n:i k:i alpha:r a:e lda:i beta:r c:y ldc:i
?syr2k          sdcz           -  syr2k        layout:L uplo:U trans:T n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?her2k          cz             -  syr2k        layout:L uplo:U trans:T n:i k:i alpha:a a:e lda:i b:e ldb:i beta:r c:y ldc:i
?trmm           sdcz           -  trmm         layout:L side:S uplo:U transa:T diag:G m:i n:i alpha:a a:e lda:i b:y ldb:i
?trsm           sdcz           -  trmm         layout:L side:S uplo:U transa:T diag:G m:i n:i alpha:a a:e lda:i b:y ldb:i

# ---- packed GEMM
?gemm_alloc     sd             P  gemm_alloc   identifier:D m:i n:i k:i  +widths
?gemm_pack      sd             -  gemm_pack    layout:L identifier:D trans:T m:i n:i k:i alpha:a src:e ld:i dest:y
?gemm_compute   sd             -  gemm_compute layout:L transa:K transb:K m:i n:i k:i a:e lda:i b:e ldb:i beta:a c:y ldc:i
?gemm_free      sd             -  forward      dest:y

# ---- batches
?gemm_batch     sdcz           -  gemm_batch   layout:L transa:N transb:N m:j n:j k:j alpha:e a:A lda:j b:A ldb:j beta:e c:C ldc:j group_count:i group_size:j
?gemm3m_batch   cz             -  gemm_batch   layout:L transa:N transb:N m:j n:j k:j alpha:e a:A lda:j b:A ldb:j beta:e c:C ldc:j group_count:i group_size:j
