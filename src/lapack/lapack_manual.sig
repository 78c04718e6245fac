# Hand-classified lines of the LAPACK table. Same format as lapack.sig;
# each line replaces the extracted one (or stands for a routine that the
# documentation in liblapack-doc does not cover). Grouped by family.

# Environment and version enquiries (no reference pages).
ilaenv i : ispec:i name:c opts:c n1:i n2:i n3:i n4:i
ilaver - : vers_major:o vers_minor:o vers_patch:o
iparam2stage i : ispec:i name:c opts:c ni:i nbi:i ibi:i nxi:i
slamch s : cmach:c
dlamch d : cmach:c
slamc3 s : a:e b:e
dlamc3 d : a:e b:e
sroundup_lwork s : lwork:i
droundup_lwork d : lwork:i

# Complex division helpers of ?ladiv (no reference pages).
sladiv1 - : a:y b:e c:e d:e p:y q:y
dladiv1 - : a:y b:e c:e d:e p:y q:y
sladiv2 s : a:e b:e c:e d:e r:e t:e
dladiv2 d : a:e b:e c:e d:e r:e t:e

# Tall-skinny / short-wide QR and LQ (no reference pages; lapack.h for the drivers).
sgelq - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
dgelq - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
cgelq - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
zgelq - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
sgeqr - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
dgeqr - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
cgeqr - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
zgeqr - : m:i n:i a:y lda:i t:y tsize:i work:y lwork:i info:o
sgemlq - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
dgemlq - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
cgemlq - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
zgemlq - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
sgemqr - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
dgemqr - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
cgemqr - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
zgemqr - : side:c trans:c m:i n:i k:i a:e lda:i t:e tsize:i c:y ldc:i work:y lwork:i info:o
slaswlq - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
dlaswlq - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
claswlq - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
zlaswlq - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
slatsqr - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
dlatsqr - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
clatsqr - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
zlatsqr - : m:i n:i mb:i nb:i a:y lda:i t:y ldt:i work:y lwork:i info:o
slamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
dlamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
clamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
zlamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
slamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
dlamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
clamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o
zlamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:e lda:i t:e ldt:i c:y ldc:i work:y lwork:i info:o

# Two-stage band reduction kernels (no reference pages).
ssb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:y lda:i v:y tau:y ldvt:i work:y
dsb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:y lda:i v:y tau:y ldvt:i work:y
chb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:y lda:i v:y tau:y ldvt:i work:y
zhb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:y lda:i v:y tau:y ldvt:i work:y
ssytrd_sb2st - : stage1:c vect:c uplo:c n:i kd:i ab:y ldab:i d:y e:y hous:y lhous:i work:y lwork:i info:o
dsytrd_sb2st - : stage1:c vect:c uplo:c n:i kd:i ab:y ldab:i d:y e:y hous:y lhous:i work:y lwork:i info:o

# Deprecated GSVD driver (no reference page): IWORK returns the sorting
# information, as in ?ggsvd3.
sggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:y lda:i b:y ldb:i alpha:y beta:y u:y ldu:i v:y ldv:i q:y ldq:i work:y iwork:io[n] info:o
dggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:y lda:i b:y ldb:i alpha:y beta:y u:y ldu:i v:y ldv:i q:y ldq:i work:y iwork:io[n] info:o
cggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:y lda:i b:y ldb:i alpha:w beta:w u:y ldu:i v:y ldv:i q:y ldq:i work:y rwork:w iwork:io[n] info:o
zggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:y lda:i b:y ldb:i alpha:w beta:w u:y ldu:i v:y ldv:i q:y ldq:i work:y rwork:w iwork:io[n] info:o

# Blocked Sylvester solver (no reference page): IWORK answers the
# LIWORK = -1 query in element 1.
strsyl3 - : trana:c tranb:c isgn:i m:i n:i a:e lda:i b:e ldb:i c:y ldc:i scale:y iwork:iw[max(1,liwork)] liwork:i swork:y ldswork:i info:o
dtrsyl3 - : trana:c tranb:c isgn:i m:i n:i a:e lda:i b:e ldb:i c:y ldc:i scale:y iwork:iw[max(1,liwork)] liwork:i swork:y ldswork:i info:o

# Least squares by divide and conquer: IWORK has no size argument but
# answers the LWORK = -1 query in element 1. NLVL is bounded with SMLSIZ = 0.
sgelsd - : m:i n:i nrhs:i a:y lda:i b:y ldb:i s:y rcond:e rank:o work:y lwork:i iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o
dgelsd - : m:i n:i nrhs:i a:y lda:i b:y ldb:i s:y rcond:e rank:o work:y lwork:i iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o
cgelsd - : m:i n:i nrhs:i a:y lda:i b:y ldb:i s:w rcond:r rank:o work:y lwork:i rwork:w iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o
zgelsd - : m:i n:i nrhs:i a:y lda:i b:y ldb:i s:w rcond:r rank:o work:y lwork:i rwork:w iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o

# Jacobi SVD, complex: IWORK is at most 2*N+M long depending on the job,
# and returns results in its first 4 elements only.
cgejsv - : joba:c jobu:c jobv:c jobr:c jobt:c jobp:c m:i n:i a:y lda:i sva:w u:y ldu:i v:y ldv:i cwork:y lwork:i rwork:w lrwork:i iwork:io[max(4,2*n+m),4] info:o
zgejsv - : joba:c jobu:c jobv:c jobr:c jobt:c jobp:c m:i n:i a:y lda:i sva:w u:y ldu:i v:y ldv:i cwork:y lwork:i rwork:w lrwork:i iwork:io[max(4,2*n+m),4] info:o

# Row interchanges: IPIV is read at K1..K2 with stride INCX.
slaswp - : n:i a:y lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i
dlaswp - : n:i a:y lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i
claswp - : n:i a:y lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i
zlaswp - : n:i a:y lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i

# Reverse-communication norm estimators: ISGN keeps its contents between
# the calls of one estimate, so it is read as well as written.
slacn2 - : n:i v:y x:y isgn:iio[n] est:y kase:o isave:iio[3]
dlacn2 - : n:i v:y x:y isgn:iio[n] est:y kase:o isave:iio[3]
slacon - : n:i v:y x:y isgn:iio[n] est:y kase:o
dlacon - : n:i v:y x:y isgn:iio[n] est:y kase:o

# Aasen panel of ?hetrf_aa, as ?lasyf_aa: IPIV has dimension M.
clahef_aa - : uplo:c j1:i m:i nb:i a:y lda:i ipiv:io[m] h:y ldh:i work:y
zlahef_aa - : uplo:c j1:i m:i nb:i a:y lda:i ipiv:io[m] h:y ldh:i work:y

# Divide and conquer eigensolver: 'N lg N' with lg N = ceil(log2 N),
# written log2(2*n-1). ?laed7 updates the merge-tree arrays (PRMPTR, PERM,
# GIVPTR, GIVCOL) although they are documented as input.
slaed0 - : icompq:i qsiz:i n:i d:y e:e q:y ldq:i qstore:y ldqs:i work:y iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
dlaed0 - : icompq:i qsiz:i n:i d:y e:e q:y ldq:i qstore:y ldqs:i work:y iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
claed0 - : qsiz:i n:i d:w e:w q:y ldq:i qstore:y ldqs:i rwork:w iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
zlaed0 - : qsiz:i n:i d:w e:w q:y ldq:i qstore:y ldqs:i rwork:w iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
slaed7 - : icompq:i n:i qsiz:i tlvls:i curlvl:i curpbm:i d:y q:y ldq:i indxq:io[n] rho:e cutpnt:i qstore:y qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:e work:y iwork:ix[4*n] info:o
dlaed7 - : icompq:i n:i qsiz:i tlvls:i curlvl:i curpbm:i d:y q:y ldq:i indxq:io[n] rho:e cutpnt:i qstore:y qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:e work:y iwork:ix[4*n] info:o
claed7 - : n:i cutpnt:i qsiz:i tlvls:i curlvl:i curpbm:i d:w q:y ldq:i rho:r indxq:io[n] qstore:w qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:r work:y rwork:w iwork:ix[4*n] info:o
zlaed7 - : n:i cutpnt:i qsiz:i tlvls:i curlvl:i curpbm:i d:w q:y ldq:i rho:r indxq:io[n] qstore:w qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:r work:y rwork:w iwork:ix[4*n] info:o
slaeda - : n:i tlvls:i curlvl:i curpbm:i prmptr:ii[n*log2(2*n-1)] perm:ii[n*log2(2*n-1)] givptr:ii[n*log2(2*n-1)] givcol:ii[2*n*log2(2*n-1)] givnum:e q:e qptr:ii[n+2] z:y ztemp:y info:o
dlaeda - : n:i tlvls:i curlvl:i curpbm:i prmptr:ii[n*log2(2*n-1)] perm:ii[n*log2(2*n-1)] givptr:ii[n*log2(2*n-1)] givcol:ii[2*n*log2(2*n-1)] givnum:e q:e qptr:ii[n+2] z:y ztemp:y info:o

# Divide and conquer SVD: N = NL+NR+1 in the merge steps; NLVL, the
# levels of the computation tree, is log2(N/(SMLSIZ+1))+1 as ?lasdt makes it.
# ?bdsdc assumes the reference SMLSIZ of 25 for the size of IQ.
sbdsdc - : uplo:c compq:c n:i d:y e:y u:y ldu:i vt:y ldvt:i q:y iq:io[n*(3+3*log2(n/26))]?compq=P work:y iwork:ix[8*n] info:o
dbdsdc - : uplo:c compq:c n:i d:y e:y u:y ldu:i vt:y ldvt:i q:y iq:io[n*(3+3*log2(n/26))]?compq=P work:y iwork:ix[8*n] info:o
slals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:y ldb:i bx:y ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:e ldgnum:i poles:e difl:e difr:e z:e k:i c:e s:e work:y info:o
dlals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:y ldb:i bx:y ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:e ldgnum:i poles:e difl:e difr:e z:e k:i c:e s:e work:y info:o
clals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:y ldb:i bx:y ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:r ldgnum:i poles:r difl:r difr:r z:r k:i c:r s:r rwork:w info:o
zlals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:y ldb:i bx:y ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:r ldgnum:i poles:r difl:r difr:r z:r k:i c:r s:r rwork:w info:o
slalsa - : icompq:i smlsiz:i n:i nrhs:i b:y ldb:i bx:y ldbx:i u:e ldu:i vt:e k:ii[n] difl:e difr:e z:e poles:e givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:e c:e s:e work:y iwork:ix[3*n] info:o
dlalsa - : icompq:i smlsiz:i n:i nrhs:i b:y ldb:i bx:y ldbx:i u:e ldu:i vt:e k:ii[n] difl:e difr:e z:e poles:e givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:e c:e s:e work:y iwork:ix[3*n] info:o
clalsa - : icompq:i smlsiz:i n:i nrhs:i b:y ldb:i bx:y ldbx:i u:r ldu:i vt:r k:ii[n] difl:r difr:r z:r poles:r givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:r c:r s:r rwork:w iwork:ix[3*n] info:o
zlalsa - : icompq:i smlsiz:i n:i nrhs:i b:y ldb:i bx:y ldbx:i u:r ldu:i vt:r k:ii[n] difl:r difr:r z:r poles:r givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:r c:r s:r rwork:w iwork:ix[3*n] info:o
slalsd - : uplo:c smlsiz:i n:i nrhs:i d:y e:y b:y ldb:i rcond:e rank:o work:y iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
dlalsd - : uplo:c smlsiz:i n:i nrhs:i d:y e:y b:y ldb:i rcond:e rank:o work:y iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
clalsd - : uplo:c smlsiz:i n:i nrhs:i d:w e:w b:y ldb:i rcond:r rank:o work:y rwork:w iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
zlalsd - : uplo:c smlsiz:i n:i nrhs:i d:w e:w b:y ldb:i rcond:r rank:o work:y rwork:w iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
slasd1 - : nl:i nr:i sqre:i d:y alpha:y beta:y u:y ldu:i vt:y ldvt:i idxq:iio[nl+nr+1] iwork:ix[4*(nl+nr+1)] work:y info:o
dlasd1 - : nl:i nr:i sqre:i d:y alpha:y beta:y u:y ldu:i vt:y ldvt:i idxq:iio[nl+nr+1] iwork:ix[4*(nl+nr+1)] work:y info:o
slasd2 - : nl:i nr:i sqre:i k:o d:y z:y alpha:e beta:e u:y ldu:i vt:y ldvt:i dsigma:y u2:y ldu2:i vt2:y ldvt2:i idxp:io[nl+nr+1] idx:io[nl+nr+1] idxc:io[nl+nr+1] idxq:iio[nl+nr+1] coltyp:io[nl+nr+1] info:o
dlasd2 - : nl:i nr:i sqre:i k:o d:y z:y alpha:e beta:e u:y ldu:i vt:y ldvt:i dsigma:y u2:y ldu2:i vt2:y ldvt2:i idxp:io[nl+nr+1] idx:io[nl+nr+1] idxc:io[nl+nr+1] idxq:iio[nl+nr+1] coltyp:io[nl+nr+1] info:o
slasd3 - : nl:i nr:i sqre:i k:i d:y q:y ldq:i dsigma:y u:y ldu:i u2:e ldu2:i vt:y ldvt:i vt2:y ldvt2:i idxc:ii[nl+nr+1] ctot:ii[4] z:y info:o
dlasd3 - : nl:i nr:i sqre:i k:i d:y q:y ldq:i dsigma:y u:y ldu:i u2:e ldu2:i vt:y ldvt:i vt2:y ldvt2:i idxc:ii[nl+nr+1] ctot:ii[4] z:y info:o
slasd6 - : icompq:i nl:i nr:i sqre:i d:y vf:y vl:y alpha:y beta:y idxq:iio[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:y ldgnum:i poles:y difl:y difr:y z:y k:o c:y s:y work:y iwork:ix[3*(nl+nr+1)] info:o
dlasd6 - : icompq:i nl:i nr:i sqre:i d:y vf:y vl:y alpha:y beta:y idxq:iio[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:y ldgnum:i poles:y difl:y difr:y z:y k:o c:y s:y work:y iwork:ix[3*(nl+nr+1)] info:o
slasd7 - : icompq:i nl:i nr:i sqre:i k:o d:y z:y zw:y vf:y vfw:y vl:y vlw:y alpha:e beta:e dsigma:y idx:io[nl+nr+1] idxp:io[nl+nr+1] idxq:ii[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:y ldgnum:i c:y s:y info:o
dlasd7 - : icompq:i nl:i nr:i sqre:i k:o d:y z:y zw:y vf:y vfw:y vl:y vlw:y alpha:e beta:e dsigma:y idx:io[nl+nr+1] idxp:io[nl+nr+1] idxq:ii[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:y ldgnum:i c:y s:y info:o
slasda - : icompq:i smlsiz:i n:i sqre:i d:y e:e u:y ldu:i vt:y k:io[1+(n-1)*icompq] difl:y difr:y z:y poles:y givptr:io[n]?icompq!=0 givcol:io[ldgcol*2*(log2(n/(smlsiz+1))+1)]?icompq!=0 ldgcol:i perm:io[ldgcol*(log2(n/(smlsiz+1))+1)]?icompq!=0 givnum:y c:y s:y work:y iwork:ix[7*n] info:o
dlasda - : icompq:i smlsiz:i n:i sqre:i d:y e:e u:y ldu:i vt:y k:io[1+(n-1)*icompq] difl:y difr:y z:y poles:y givptr:io[n]?icompq!=0 givcol:io[ldgcol*2*(log2(n/(smlsiz+1))+1)]?icompq!=0 ldgcol:i perm:io[ldgcol*(log2(n/(smlsiz+1))+1)]?icompq!=0 givnum:y c:y s:y work:y iwork:ix[7*n] info:o

# Test-matrix auxiliaries (libtmglib; exported by qnl_rt as well).
# ?latm2/?latm3 read the single permutation entry IWORK(I) or IWORK(J);
# for ?latmr the permutation has M entries (row pivoting) or N (column),
# and M = N when both sides are pivoted.
slatm2 s : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:e
dlatm2 d : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:e
clatm2 c : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:r
zlatm2 z : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:r
slatm3 s : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:e
dlatm3 d : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:e
clatm3 c : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:r
zlatm3 z : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:e igrade:i dl:e dr:e ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:r
slatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:e mode:i cond:e dmax:e rsign:c grade:c dl:y model:i condl:e dr:y moder:i condr:e pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:e anorm:e pack:c a:y lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
dlatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:y mode:i cond:e dmax:e rsign:c grade:c dl:y model:i condl:e dr:y moder:i condr:e pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:e anorm:e pack:c a:y lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
clatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:y mode:i cond:r dmax:e rsign:c grade:c dl:y model:i condl:r dr:y moder:i condr:r pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:r anorm:r pack:c a:y lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
zlatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:y mode:i cond:r dmax:e rsign:c grade:c dl:y model:i condl:r dr:y moder:i condr:r pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:r anorm:r pack:c a:y lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
