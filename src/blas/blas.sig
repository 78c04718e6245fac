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
#            and, each %p in the record and typed in the body's prototype:
#            e  element data read      y  element data written      a  element scalar
#            r  real value read        w  real value written        j  integer array
#            A  array of element pointers, read        C  array of element pointers
#            a data letter ending in .s .d .c .z takes that precision's element; a
#            two-letter prefix's element is its complex letter (cs, zd, sc, dz)
# flags    trailing words beginning with "+":
#            +ext    report name is the routine's name and one blank ("DZGEMM ", 7)
#            +batch  the back-end gets a 32-bit layer word after the arguments
#
# Direct rows ("direct" first) add the <routine>_direct entry of a routine above:
#   direct  name  prefixes  flag|noflag  size-test
# the size test is a C++ expression over the routine's integer arguments.

# ---- level 1
?rotg      sd        -  -        a:y b:y c:w s:y
?rotg      cz        -  -        a:y b:e c:w s:y
?rotmg     sd        -  -        d1:y d2:y x1:y y1:e param:y
?rot       s,d,cs,zd     -  -    n:i x:y incx:i y:y incy:i c:r s:r
?rot       c,z           -  -    n:i x:y incx:i y:y incy:i c:r s:a
?rotm      sd        -  -        n:i x:y incx:i y:y incy:i param:e
?swap      sdcz      -  -        n:i x:y incx:i y:y incy:i
?scal      sdcz          -  -    n:i a:a x:y incx:i
?scal      cs,zd         -  -    n:i a:r x:y incx:i
?copy      sdcz      -  -        n:i x:e incx:i y:y incy:i
?axpy      sdcz      -  -        n:i a:a x:e incx:i y:y incy:i
?axpby     sdcz      -  -        n:i a:a x:e incx:i b:a y:y incy:i
?dot       sd        T  -        n:i x:e incx:i y:e incy:i
?dotu      cz        T  -        n:i x:e incx:i y:e incy:i
?dotc      cz        T  -        n:i x:e incx:i y:e incy:i
sdsdot     -         R  -        n:i sb:e x:e incx:i y:e incy:i
dsdot      -         R  -        n:i x:e.s incx:i y:e.s incy:i
?nrm2      s,d,sc,dz R  -        n:i x:e incx:i
?asum      s,d,sc,dz R  -        n:i x:e incx:i
i?amax     sdcz      l  -        n:i x:e incx:i
i?amin     sdcz      l  -        n:i x:e incx:i
scabs1     -         R  -        z:e.c
dcabs1     -         R  -        z:e.z

# ---- sparse level 1
?axpyi     sdcz      -  -        nz:i a:a x:e indx:x y:y
?doti      sd        T  -        nz:i x:e indx:x y:e
?dotui     cz        T  -        nz:i x:e indx:x y:e
?dotci     cz        T  -        nz:i x:e indx:x y:e
?gthr      sdcz      -  -        nz:i y:e x:y indx:x
?gthrz     sdcz      -  -        nz:i y:y x:y indx:x
?sctr      sdcz      -  -        nz:i x:e indx:x y:y
?roti      sd        -  -        nz:i x:y indx:x y:y c:r s:r

# ---- level 2
?gemv      sdcz      -  gemv     trans:c m:i n:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?gbmv      sdcz      -  gbmv     trans:c m:i n:i kl:i ku:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?hemv      cz        -  symv     uplo:c n:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?symv      sd        -  symv     uplo:c n:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?hbmv      cz        -  sbmv     uplo:c n:i k:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?sbmv      sd        -  sbmv     uplo:c n:i k:i alpha:a a:e lda:i x:e incx:i beta:a y:y incy:i
?hpmv      cz        -  spmv     uplo:c n:i alpha:a ap:e x:e incx:i beta:a y:y incy:i
?spmv      sd        -  spmv     uplo:c n:i alpha:a ap:e x:e incx:i beta:a y:y incy:i
?trmv      sdcz      -  trmv     uplo:c trans:c diag:c n:i a:e lda:i x:y incx:i
?trsv      sdcz      -  trmv     uplo:c trans:c diag:c n:i a:e lda:i x:y incx:i
?tbmv      sdcz      -  tbmv     uplo:c trans:c diag:c n:i k:i a:e lda:i x:y incx:i
?tbsv      sdcz      -  tbmv     uplo:c trans:c diag:c n:i k:i a:e lda:i x:y incx:i
?tpmv      sdcz      -  tpmv     uplo:c trans:c diag:c n:i ap:e x:y incx:i
?tpsv      sdcz      -  tpmv     uplo:c trans:c diag:c n:i ap:e x:y incx:i
?ger       sd        -  ger      m:i n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?geru      cz        -  ger      m:i n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?gerc      cz        -  ger      m:i n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?her       cz        -  syr      uplo:c n:i alpha:r x:e incx:i a:y lda:i
?syr       sd        -  syr      uplo:c n:i alpha:a x:e incx:i a:y lda:i
?hpr       cz        -  spr      uplo:c n:i alpha:r x:e incx:i ap:y
?spr       sd        -  spr      uplo:c n:i alpha:a x:e incx:i ap:y
?her2      cz        -  syr2     uplo:c n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?syr2      sd        -  syr2     uplo:c n:i alpha:a x:e incx:i y:e incy:i a:y lda:i
?hpr2      cz        -  spr2     uplo:c n:i alpha:a x:e incx:i y:e incy:i ap:y
?spr2      sd        -  spr2     uplo:c n:i alpha:a x:e incx:i y:e incy:i ap:y

# ---- level 3
?gemm      sdcz      -  gemm     transa:c transb:c m:i n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?symm      sdcz      -  symm     side:c uplo:c m:i n:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?hemm      cz        -  symm     side:c uplo:c m:i n:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?syrk      sd        -  syrk     uplo:c trans:c n:i k:i alpha:a a:e lda:i beta:a c:y ldc:i
?syrk      cz        -  syrk.NT  uplo:c trans:c n:i k:i alpha:a a:e lda:i beta:a c:y ldc:i
?herk      cz        -  syrk.NC  uplo:c trans:c n:i k:i alpha:r a:e lda:i beta:r c:y ldc:i
?syr2k     sd        -  syr2k    uplo:c trans:c n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?syr2k     cz        -  syr2k.NT uplo:c trans:c n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?her2k     cz        -  syr2k.NC uplo:c trans:c n:i k:i alpha:a a:e lda:i b:e ldb:i beta:r c:y ldc:i
?trmm      sdcz      -  trmm     side:c uplo:c transa:c diag:c m:i n:i alpha:a a:e lda:i b:y ldb:i
?trsm      sdcz      -  trmm     side:c uplo:c transa:c diag:c m:i n:i alpha:a a:e lda:i b:y ldb:i

# ---- extensions
?gemm      dz,sc     -  gemm     transa:c transb:c m:i n:i k:i alpha:a a:r lda:i b:e ldb:i beta:a c:y ldc:i  +ext
?gemv      dz,sc     -  gemv     trans:c m:i n:i alpha:a a:r lda:i x:e incx:i beta:a y:y incy:i  +ext
?ptrmm     sd        -  ptrmm    side:c uplo:c transa:c diag:c m:i n:i alpha:a a:e lda:i b:y ldb:i  +ext
?gemmt     sdcz      -  gemmt    uplo:c transa:c transb:c n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i
?gemm3m    cz        -  gemm     transa:c transb:c m:i n:i k:i alpha:a a:e lda:i b:e ldb:i beta:a c:y ldc:i  +ext
?gem2vu    sd        -  gem2v    m:i n:i alpha:a a:e lda:i x1:e incx1:i x2:e incx2:i beta:a y1:y incy1:i y2:y incy2:i
?gem2vc    cz        -  gem2v    m:i n:i alpha:a a:e lda:i x1:e incx1:i x2:e incx2:i beta:a y1:y incy1:i y2:y incy2:i
?gemm_batch   sdcz   -  gemm_batch  transa_array:c transb_array:c m_array:j n_array:j k_array:j alpha_array:e a_array:A lda_array:j b_array:A ldb_array:j beta_array:e c_array:C ldc_array:j group_count:j group_size:j  +ext +batch
?gemm3m_batch cz     -  gemm_batch  transa_array:c transb_array:c m_array:j n_array:j k_array:j alpha_array:e a_array:A lda_array:j b_array:A ldb_array:j beta_array:e c_array:C ldc_array:j group_count:j group_size:j  +ext +batch
?gemm_alloc   sd     p  gemm_alloc  identifier:c m:i n:i k:i  +ext
?gemm_pack    sd     -  gemm_pack   identifier:c trans:c m:i n:i k:i alpha:a src:e ld:i dest:y  +ext
?gemm_compute sd     -  gemm_compute  transa:c transb:c m:i n:i k:i a:e lda:i b:e ldb:i beta:a c:y ldc:i  +ext
?gemm_free    sd     -  -        dest:y

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
