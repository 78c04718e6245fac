# The library's own LAPACK routines, in the row format of lapack.sig, and the
# frame options of routines of either table. Read with lapack.sig by tools/gen.py.
#
# Rows: name result : arg:class ...  (see lapack.sig for the classes).
# A name that starts with qnl_ is exported as qnl_x, qnl_x_ and QNL_X; its
# back-end symbol drops the prefix (qnl_dgetrfnpi -> qnl_lapack_dgetrfnpi).
#
# Option lines: @ name option...
#   short        no trace, no verbose mode; bound as qnl_lapack_ps_<name>, and an
#                empty slot after binding is fatal
#   check=K      arguments checked at the entry by the pair K in checks.cpp
#   route=K      a second symbol qnl_lapack_ao_<name> chosen per call by sizes:
#                big (m, n >= 8192), potrf (n >= 6144), npi (m, n >= 500),
#                spffrt (n, ncolm against QNL_SPFFRT_NX)

# Tridiagonal solves without pivoting.
sdttrsb - : trans:c n:i nrhs:i dl:e d:e du:e b:y ldb:i info:o
ddttrsb - : trans:c n:i nrhs:i dl:e d:e du:e b:y ldb:i info:o
cdttrsb - : trans:c n:i nrhs:i dl:e d:e du:e b:y ldb:i info:o
zdttrsb - : trans:c n:i nrhs:i dl:e d:e du:e b:y ldb:i info:o
sdtsvb - : n:i nrhs:i dl:y d:y du:y b:y ldb:i info:o
ddtsvb - : n:i nrhs:i dl:y d:y du:y b:y ldb:i info:o
cdtsvb - : n:i nrhs:i dl:y d:y du:y b:y ldb:i info:o
zdtsvb - : n:i nrhs:i dl:y d:y du:y b:y ldb:i info:o
sdttrfb - : n:i dl:y d:y du:y info:o
ddttrfb - : n:i dl:y d:y du:y info:o
cdttrfb - : n:i dl:y d:y du:y info:o
zdttrfb - : n:i dl:y d:y du:y info:o

# LU without pivoting, of the first nfact columns.
qnl_sgetf2npi - : m:i n:i nfact:i a:y lda:i info:o
qnl_dgetf2npi - : m:i n:i nfact:i a:y lda:i info:o
qnl_cgetf2npi - : m:i n:i nfact:i a:y lda:i info:o
qnl_zgetf2npi - : m:i n:i nfact:i a:y lda:i info:o
qnl_sgetrfnpi - : m:i n:i nfact:i a:y lda:i info:o
qnl_dgetrfnpi - : m:i n:i nfact:i a:y lda:i info:o
qnl_cgetrfnpi - : m:i n:i nfact:i a:y lda:i info:o
qnl_zgetrfnpi - : m:i n:i nfact:i a:y lda:i info:o

# Partial factorisation of a packed symmetric matrix.
qnl_sspffrt2 - : ap:y n:i ncolm:i work:y work2:y
qnl_dspffrt2 - : ap:y n:i ncolm:i work:y work2:y
qnl_cspffrt2 - : ap:y n:i ncolm:i work:y work2:y
qnl_zspffrt2 - : ap:y n:i ncolm:i work:y work2:y
qnl_sspffrtx - : ap:y n:i ncolm:i work:y work2:y
qnl_dspffrtx - : ap:y n:i ncolm:i work:y work2:y
qnl_cspffrtx - : ap:y n:i ncolm:i work:y work2:y
qnl_zspffrtx - : ap:y n:i ncolm:i work:y work2:y

# Copies between packed triangles and full blocks.
qnl_stppack - : uplo:c trans:c n:i ap:y i:i j:i rows:i cols:i a:e lda:i info:o
qnl_dtppack - : uplo:c trans:c n:i ap:y i:i j:i rows:i cols:i a:e lda:i info:o
qnl_ctppack - : uplo:c trans:c n:i ap:y i:i j:i rows:i cols:i a:e lda:i info:o
qnl_ztppack - : uplo:c trans:c n:i ap:y i:i j:i rows:i cols:i a:e lda:i info:o
qnl_stpunpack - : uplo:c trans:c n:i ap:e i:i j:i rows:i cols:i a:y lda:i info:o
qnl_dtpunpack - : uplo:c trans:c n:i ap:e i:i j:i rows:i cols:i a:y lda:i info:o
qnl_ctpunpack - : uplo:c trans:c n:i ap:e i:i j:i rows:i cols:i a:y lda:i info:o
qnl_ztpunpack - : uplo:c trans:c n:i ap:e i:i j:i rows:i cols:i a:y lda:i info:o

# Reduction of a band matrix to tridiagonal form.
ssyrdb - : jobz:c uplo:c n:i kd:i a:y lda:i d:y e:y tau:y z:y ldz:i work:y lwork:i info:o
dsyrdb - : jobz:c uplo:c n:i kd:i a:y lda:i d:y e:y tau:y z:y ldz:i work:y lwork:i info:o
cherdb - : jobz:c uplo:c n:i kd:i a:y lda:i d:w e:w tau:y z:y ldz:i work:y lwork:i info:o
zherdb - : jobz:c uplo:c n:i kd:i a:y lda:i d:w e:w tau:y z:y ldz:i work:y lwork:i info:o

@ sdtsvb short check=dtsvb
@ ddtsvb short check=dtsvb
@ cdtsvb short check=dtsvb
@ zdtsvb short check=dtsvb
@ sdttrfb short check=dttrfb
@ ddttrfb short check=dttrfb
@ cdttrfb short check=dttrfb
@ zdttrfb short check=dttrfb
@ sgetc2 short
@ dgetc2 short
@ cgetc2 short
@ zgetc2 short
@ sgtts2 short
@ dgtts2 short
@ cgtts2 short
@ zgtts2 short
@ sptts2 short
@ dptts2 short
@ cptts2 short
@ zptts2 short
@ slartv short
@ dlartv short
@ clartv short
@ zlartv short
@ slarfx short
@ dlarfx short
@ clarfx short
@ zlarfx short
@ slasd3 short
@ dlasd3 short
@ slasd4 short
@ dlasd4 short
@ cspr short

@ qnl_sgetrfnpi route=npi
@ qnl_dgetrfnpi route=npi
@ qnl_cgetrfnpi route=npi
@ qnl_zgetrfnpi route=npi
@ qnl_sspffrt2 route=spffrt
@ qnl_dspffrt2 route=spffrt
@ qnl_cspffrt2 route=spffrt
@ qnl_zspffrt2 route=spffrt
@ qnl_sspffrtx route=spffrt
@ qnl_dspffrtx route=spffrt
@ qnl_cspffrtx route=spffrt
@ qnl_zspffrtx route=spffrt

# Checked at the entry: twenty routines per type.
@ sgetrf check=getrf route=big
@ dgetrf check=getrf route=big
@ cgetrf check=getrf route=big
@ zgetrf check=getrf route=big
@ sgeqrf check=geqrf route=big
@ dgeqrf check=geqrf route=big
@ cgeqrf check=geqrf route=big
@ zgeqrf check=geqrf route=big
@ spotrf check=potrf route=potrf
@ dpotrf check=potrf route=potrf
@ cpotrf check=potrf route=potrf
@ zpotrf check=potrf route=potrf
@ sgetf2 check=getrf
@ dgetf2 check=getrf
@ cgetf2 check=getrf
@ zgetf2 check=getrf
@ sgelqf check=gelqf
@ dgelqf check=gelqf
@ cgelqf check=gelqf
@ zgelqf check=gelqf
@ sgeqlf check=geqlf
@ dgeqlf check=geqlf
@ cgeqlf check=geqlf
@ zgeqlf check=geqlf
@ sgebrd check=gebrd
@ dgebrd check=gebrd
@ cgebrd check=gebrd
@ zgebrd check=gebrd
@ sgehrd check=gehrd
@ dgehrd check=gehrd
@ cgehrd check=gehrd
@ zgehrd check=gehrd
@ sorghr check=orghr
@ dorghr check=orghr
@ ssytrd check=sytrd
@ dsytrd check=sytrd
@ chetrd check=sytrd
@ zhetrd check=sytrd
@ ssygst check=sygst
@ dsygst check=sygst
@ chegst check=sygst
@ zhegst check=sygst
@ ssyrdb check=syrdb
@ dsyrdb check=syrdb
@ cherdb check=syrdb
@ zherdb check=syrdb
@ ssyevd check=syevd
@ dsyevd check=syevd
@ cheevd check=heevd
@ zheevd check=heevd
@ chegvd check=hegvd
@ zhegvd check=hegvd
@ sgesvd check=gesvd
@ dgesvd check=gesvd
@ cgesvd check=gesvd
@ zgesvd check=gesvd
@ sgeev check=geev_real
@ dgeev check=geev_real
@ cgeev check=geev_complex
@ zgeev check=geev_complex
@ sorgqr check=orgqr
@ dorgqr check=orgqr
@ cungqr check=orgqr
@ zungqr check=orgqr
@ sormqr check=ormqr
@ dormqr check=ormqr
@ sormlq check=ormlq
@ dormlq check=ormlq
@ sormql check=ormql
@ dormql check=ormql
@ sormrq check=ormrq
@ dormrq check=ormrq
@ cunmqr check=ormqr
@ zunmqr check=ormqr
@ cunmlq check=ormlq
@ zunmlq check=ormlq
@ cunmql check=ormql
@ zunmql check=ormql
@ cunmrq check=ormrq
@ zunmrq check=ormrq
