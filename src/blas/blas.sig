# Fortran BLAS entries: one routine per line, forwarded to qnl_blas_<routine>.
#
# name     a routine name; "?" takes each prefix of the next column in turn
# prefixes "sdcz" style (one letter each) or a comma list when a prefix has more
#          letters ("s,d,sc,dz"); "-" for a name without "?"
# result   -  none            R  real type of the prefix's first letter (s,c float; d,z double)
#          T  type of the prefix's first letter (c, z: complex, returned in registers; the
#             back-end gets a pointer to the result ahead of the arguments)
#          l  64-bit integer   p  pointer
# check    the checker shape (checks.h), "-" for none; ".NT" / ".NC" limit the letters a
#          transposition option accepts (default N, T, C)
# args     name:role, in the routine's order (letters of tools/qnlgen/model.py, VOCABULARY)
#            c  character option: a hidden length 1 at the back-end, %c in the record
#            i  integer: widened into a 64-bit local on LP64, %d in the record
#            x  integer index array: copied to 64-bit indices on LP64, %p in the record
#            p  anything else by reference (arrays, scalars, arrays of integers), %p
# flags    trailing words beginning with "+":
#            +ext    report name is the routine's name and one blank ("DZGEMM ", 7)
#            +batch  the back-end gets a 32-bit layer word after the arguments
#
# Direct rows ("direct" first) add the <routine>_direct entry of a routine above:
#   direct  name  prefixes  flag|noflag  size-test
# the size test is a C++ expression over the routine's integer arguments.

# ---- level 1
?rotg      sdcz      -  -        a:p b:p c:p s:p
?rotmg     sd        -  -        d1:p d2:p x1:p y1:p param:p
?rot       s,d,cs,zd,c,z -  -    n:i x:p incx:i y:p incy:i c:p s:p
?rotm      sd        -  -        n:i x:p incx:i y:p incy:i param:p
?swap      sdcz      -  -        n:i x:p incx:i y:p incy:i
?scal      s,d,c,z,cs,zd -  -    n:i a:p x:p incx:i
?copy      sdcz      -  -        n:i x:p incx:i y:p incy:i
?axpy      sdcz      -  -        n:i a:p x:p incx:i y:p incy:i
?axpby     sdcz      -  -        n:i a:p x:p incx:i b:p y:p incy:i
?dot       sd        T  -        n:i x:p incx:i y:p incy:i
?dotu      cz        T  -        n:i x:p incx:i y:p incy:i
?dotc      cz        T  -        n:i x:p incx:i y:p incy:i
sdsdot     -         R  -        n:i sb:p x:p incx:i y:p incy:i
dsdot      -         R  -        n:i x:p incx:i y:p incy:i
?nrm2      s,d,sc,dz R  -        n:i x:p incx:i
?asum      s,d,sc,dz R  -        n:i x:p incx:i
i?amax     sdcz      l  -        n:i x:p incx:i
i?amin     sdcz      l  -        n:i x:p incx:i
scabs1     -         R  -        z:p
dcabs1     -         R  -        z:p

# ---- sparse level 1
?axpyi     sdcz      -  -        nz:i a:p x:p indx:x y:p
?doti      sd        T  -        nz:i x:p indx:x y:p
?dotui     cz        T  -        nz:i x:p indx:x y:p
?dotci     cz        T  -        nz:i x:p indx:x y:p
?gthr      sdcz      -  -        nz:i y:p x:p indx:x
?gthrz     sdcz      -  -        nz:i y:p x:p indx:x
?sctr      sdcz      -  -        nz:i x:p indx:x y:p
?roti      sd        -  -        nz:i x:p indx:x y:p c:p s:p

# ---- level 2
?gemv      sdcz      -  gemv     trans:c m:i n:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i
?gbmv      sdcz      -  gbmv     trans:c m:i n:i kl:i ku:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i
?hemv      cz        -  symv     uplo:c n:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i
?symv      sd        -  symv     uplo:c n:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i
?hbmv      cz        -  sbmv     uplo:c n:i k:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i
?sbmv      sd        -  sbmv     uplo:c n:i k:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i
?hpmv      cz        -  spmv     uplo:c n:i alpha:p ap:p x:p incx:i beta:p y:p incy:i
?spmv      sd        -  spmv     uplo:c n:i alpha:p ap:p x:p incx:i beta:p y:p incy:i
?trmv      sdcz      -  trmv     uplo:c trans:c diag:c n:i a:p lda:i x:p incx:i
?trsv      sdcz      -  trmv     uplo:c trans:c diag:c n:i a:p lda:i x:p incx:i
?tbmv      sdcz      -  tbmv     uplo:c trans:c diag:c n:i k:i a:p lda:i x:p incx:i
?tbsv      sdcz      -  tbmv     uplo:c trans:c diag:c n:i k:i a:p lda:i x:p incx:i
?tpmv      sdcz      -  tpmv     uplo:c trans:c diag:c n:i ap:p x:p incx:i
?tpsv      sdcz      -  tpmv     uplo:c trans:c diag:c n:i ap:p x:p incx:i
?ger       sd        -  ger      m:i n:i alpha:p x:p incx:i y:p incy:i a:p lda:i
?geru      cz        -  ger      m:i n:i alpha:p x:p incx:i y:p incy:i a:p lda:i
?gerc      cz        -  ger      m:i n:i alpha:p x:p incx:i y:p incy:i a:p lda:i
?her       cz        -  syr      uplo:c n:i alpha:p x:p incx:i a:p lda:i
?syr       sd        -  syr      uplo:c n:i alpha:p x:p incx:i a:p lda:i
?hpr       cz        -  spr      uplo:c n:i alpha:p x:p incx:i ap:p
?spr       sd        -  spr      uplo:c n:i alpha:p x:p incx:i ap:p
?her2      cz        -  syr2     uplo:c n:i alpha:p x:p incx:i y:p incy:i a:p lda:i
?syr2      sd        -  syr2     uplo:c n:i alpha:p x:p incx:i y:p incy:i a:p lda:i
?hpr2      cz        -  spr2     uplo:c n:i alpha:p x:p incx:i y:p incy:i ap:p
?spr2      sd        -  spr2     uplo:c n:i alpha:p x:p incx:i y:p incy:i ap:p

# ---- level 3
?gemm      sdcz      -  gemm     transa:c transb:c m:i n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?symm      sdcz      -  symm     side:c uplo:c m:i n:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?hemm      cz        -  symm     side:c uplo:c m:i n:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?syrk      sd        -  syrk     uplo:c trans:c n:i k:i alpha:p a:p lda:i beta:p c:p ldc:i
?syrk      cz        -  syrk.NT  uplo:c trans:c n:i k:i alpha:p a:p lda:i beta:p c:p ldc:i
?herk      cz        -  syrk.NC  uplo:c trans:c n:i k:i alpha:p a:p lda:i beta:p c:p ldc:i
?syr2k     sd        -  syr2k    uplo:c trans:c n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?syr2k     cz        -  syr2k.NT uplo:c trans:c n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?her2k     cz        -  syr2k.NC uplo:c trans:c n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?trmm      sdcz      -  trmm     side:c uplo:c transa:c diag:c m:i n:i alpha:p a:p lda:i b:p ldb:i
?trsm      sdcz      -  trmm     side:c uplo:c transa:c diag:c m:i n:i alpha:p a:p lda:i b:p ldb:i

# ---- extensions
?gemm      dz,sc     -  gemm     transa:c transb:c m:i n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i  +ext
?gemv      dz,sc     -  gemv     trans:c m:i n:i alpha:p a:p lda:i x:p incx:i beta:p y:p incy:i  +ext
?ptrmm     sd        -  ptrmm    side:c uplo:c transa:c diag:c m:i n:i alpha:p a:p lda:i b:p ldb:i  +ext
?gemmt     sdcz      -  gemmt    uplo:c transa:c transb:c n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i
?gemm3m    cz        -  gemm     transa:c transb:c m:i n:i k:i alpha:p a:p lda:i b:p ldb:i beta:p c:p ldc:i  +ext
?gem2vu    sd        -  gem2v    m:i n:i alpha:p a:p lda:i x1:p incx1:i x2:p incx2:i beta:p y1:p incy1:i y2:p incy2:i
?gem2vc    cz        -  gem2v    m:i n:i alpha:p a:p lda:i x1:p incx1:i x2:p incx2:i beta:p y1:p incy1:i y2:p incy2:i
?gemm_batch   sdcz   -  gemm_batch  transa_array:c transb_array:c m_array:p n_array:p k_array:p alpha_array:p a_array:p lda_array:p b_array:p ldb_array:p beta_array:p c_array:p ldc_array:p group_count:p group_size:p  +ext +batch
?gemm3m_batch cz     -  gemm_batch  transa_array:c transb_array:c m_array:p n_array:p k_array:p alpha_array:p a_array:p lda_array:p b_array:p ldb_array:p beta_array:p c_array:p ldc_array:p group_count:p group_size:p  +ext +batch
?gemm_alloc   sd     p  gemm_alloc  identifier:c m:i n:i k:i  +ext
?gemm_pack    sd     -  gemm_pack   identifier:c trans:c m:i n:i k:i alpha:p src:p ld:i dest:p  +ext
?gemm_compute sd     -  gemm_compute  transa:c transb:c m:i n:i k:i a:p lda:i b:p ldb:i beta:p c:p ldc:i  +ext
?gemm_free    sd     -  -        dest:p

# ---- small-matrix direct entries
direct  ?axpy    sdcz  flag    n<=1500
direct  ?dot     sd    noflag  n<=1500
direct  ?gemm    scz   flag    m<35&&n<35&&k<35
direct  ?gemm    d     flag    (m<35&&n<35&&k<35)||(m>=2&&m<=60&&n>=2&&n<=10&&k<=10)
direct  ?gemm3m  cz    flag    (m<=8&&n<=8)||(m<35&&n<35&&k<=8)
direct  ?syrk    s     flag    n<23&&k<40
direct  ?syrk    d     flag    n<23&&k<45
direct  ?syrk    c     flag    n<15&&k<70
direct  ?syrk    z     flag    n<15&&k<50
direct  ?trsm    sdcz  flag    m<=32&&n<=32
