# Hand-classified lines of the LAPACK table. Same format as lapack.sig;
# each line replaces the extracted one (or stands for a routine that the
# documentation in liblapack-doc does not cover). Grouped by family.

# Environment and version enquiries (no reference pages).
ilaenv i : ispec:i name:c opts:c n1:i n2:i n3:i n4:i
ilaver - : vers_major:o vers_minor:o vers_patch:o
iparam2stage i : ispec:i name:c opts:c ni:i nbi:i ibi:i nxi:i
slamch s : cmach:c
dlamch d : cmach:c
slamc3 s : a:p b:p
dlamc3 d : a:p b:p
sroundup_lwork s : lwork:i
droundup_lwork d : lwork:i

# Complex division helpers of ?ladiv (no reference pages).
sladiv1 - : a:p b:p c:p d:p p:p q:p
dladiv1 - : a:p b:p c:p d:p p:p q:p
sladiv2 s : a:p b:p c:p d:p r:p t:p
dladiv2 d : a:p b:p c:p d:p r:p t:p

# Tall-skinny / short-wide QR and LQ (no reference pages; lapack.h for the drivers).
sgelq - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
dgelq - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
cgelq - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
zgelq - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
sgeqr - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
dgeqr - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
cgeqr - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
zgeqr - : m:i n:i a:p lda:i t:p tsize:i work:p lwork:i info:o
sgemlq - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
dgemlq - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
cgemlq - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
zgemlq - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
sgemqr - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
dgemqr - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
cgemqr - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
zgemqr - : side:c trans:c m:i n:i k:i a:p lda:i t:p tsize:i c:p ldc:i work:p lwork:i info:o
slaswlq - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
dlaswlq - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
claswlq - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
zlaswlq - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
slatsqr - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
dlatsqr - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
clatsqr - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
zlatsqr - : m:i n:i mb:i nb:i a:p lda:i t:p ldt:i work:p lwork:i info:o
slamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
dlamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
clamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
zlamswlq - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
slamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
dlamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
clamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o
zlamtsqr - : side:c trans:c m:i n:i k:i mb:i nb:i a:p lda:i t:p ldt:i c:p ldc:i work:p lwork:i info:o

# Two-stage band reduction kernels (no reference pages).
ssb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:p lda:i v:p tau:p ldvt:i work:p
dsb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:p lda:i v:p tau:p ldvt:i work:p
chb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:p lda:i v:p tau:p ldvt:i work:p
zhb2st_kernels - : uplo:c wantz:i ttype:i st:i ed:i sweep:i n:i nb:i ib:i a:p lda:i v:p tau:p ldvt:i work:p
ssytrd_sb2st - : stage1:c vect:c uplo:c n:i kd:i ab:p ldab:i d:p e:p hous:p lhous:i work:p lwork:i info:o
dsytrd_sb2st - : stage1:c vect:c uplo:c n:i kd:i ab:p ldab:i d:p e:p hous:p lhous:i work:p lwork:i info:o

# Deprecated GSVD driver (no reference page): IWORK returns the sorting
# information, as in ?ggsvd3.
sggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:p lda:i b:p ldb:i alpha:p beta:p u:p ldu:i v:p ldv:i q:p ldq:i work:p iwork:io[n] info:o
dggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:p lda:i b:p ldb:i alpha:p beta:p u:p ldu:i v:p ldv:i q:p ldq:i work:p iwork:io[n] info:o
cggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:p lda:i b:p ldb:i alpha:p beta:p u:p ldu:i v:p ldv:i q:p ldq:i work:p rwork:p iwork:io[n] info:o
zggsvd - : jobu:c jobv:c jobq:c m:i n:i p:i k:o l:o a:p lda:i b:p ldb:i alpha:p beta:p u:p ldu:i v:p ldv:i q:p ldq:i work:p rwork:p iwork:io[n] info:o

# Blocked Sylvester solver (no reference page): IWORK answers the
# LIWORK = -1 query in element 1.
strsyl3 - : trana:c tranb:c isgn:i m:i n:i a:p lda:i b:p ldb:i c:p ldc:i scale:p iwork:iw[max(1,liwork)] liwork:i swork:p ldswork:i info:o
dtrsyl3 - : trana:c tranb:c isgn:i m:i n:i a:p lda:i b:p ldb:i c:p ldc:i scale:p iwork:iw[max(1,liwork)] liwork:i swork:p ldswork:i info:o

# Least squares by divide and conquer: IWORK has no size argument but
# answers the LWORK = -1 query in element 1. NLVL is bounded with SMLSIZ = 0.
sgelsd - : m:i n:i nrhs:i a:p lda:i b:p ldb:i s:p rcond:p rank:o work:p lwork:i iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o
dgelsd - : m:i n:i nrhs:i a:p lda:i b:p ldb:i s:p rcond:p rank:o work:p lwork:i iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o
cgelsd - : m:i n:i nrhs:i a:p lda:i b:p ldb:i s:p rcond:p rank:o work:p lwork:i rwork:p iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o
zgelsd - : m:i n:i nrhs:i a:p lda:i b:p ldb:i s:p rcond:p rank:o work:p lwork:i rwork:p iwork:iw[max(1,3*min(m,n)*(log2(min(m,n))+1)+11*min(m,n))] info:o

# Jacobi SVD, complex: IWORK is at most 2*N+M long depending on the job,
# and returns results in its first 4 elements only.
cgejsv - : joba:c jobu:c jobv:c jobr:c jobt:c jobp:c m:i n:i a:p lda:i sva:p u:p ldu:i v:p ldv:i cwork:p lwork:i rwork:p lrwork:i iwork:io[max(4,2*n+m),4] info:o
zgejsv - : joba:c jobu:c jobv:c jobr:c jobt:c jobp:c m:i n:i a:p lda:i sva:p u:p ldu:i v:p ldv:i cwork:p lwork:i rwork:p lrwork:i iwork:io[max(4,2*n+m),4] info:o

# Row interchanges: IPIV is read at K1..K2 with stride INCX.
slaswp - : n:i a:p lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i
dlaswp - : n:i a:p lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i
claswp - : n:i a:p lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i
zlaswp - : n:i a:p lda:i k1:i k2:i ipiv:ii[k1+(k2-k1)*abs(incx)] incx:i

# Reverse-communication norm estimators: ISGN keeps its contents between
# the calls of one estimate, so it is read as well as written.
slacn2 - : n:i v:p x:p isgn:iio[n] est:p kase:o isave:iio[3]
dlacn2 - : n:i v:p x:p isgn:iio[n] est:p kase:o isave:iio[3]
slacon - : n:i v:p x:p isgn:iio[n] est:p kase:o
dlacon - : n:i v:p x:p isgn:iio[n] est:p kase:o

# Aasen panel of ?hetrf_aa, as ?lasyf_aa: IPIV has dimension M.
clahef_aa - : uplo:c j1:i m:i nb:i a:p lda:i ipiv:io[m] h:p ldh:i work:p
zlahef_aa - : uplo:c j1:i m:i nb:i a:p lda:i ipiv:io[m] h:p ldh:i work:p

# Divide and conquer eigensolver: 'N lg N' with lg N = ceil(log2 N),
# written log2(2*n-1). ?laed7 updates the merge-tree arrays (PRMPTR, PERM,
# GIVPTR, GIVCOL) although they are documented as input.
slaed0 - : icompq:i qsiz:i n:i d:p e:p q:p ldq:i qstore:p ldqs:i work:p iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
dlaed0 - : icompq:i qsiz:i n:i d:p e:p q:p ldq:i qstore:p ldqs:i work:p iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
claed0 - : qsiz:i n:i d:p e:p q:p ldq:i qstore:p ldqs:i rwork:p iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
zlaed0 - : qsiz:i n:i d:p e:p q:p ldq:i qstore:p ldqs:i rwork:p iwork:ix[6+6*n+5*n*log2(2*n-1)] info:o
slaed7 - : icompq:i n:i qsiz:i tlvls:i curlvl:i curpbm:i d:p q:p ldq:i indxq:io[n] rho:p cutpnt:i qstore:p qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:p work:p iwork:ix[4*n] info:o
dlaed7 - : icompq:i n:i qsiz:i tlvls:i curlvl:i curpbm:i d:p q:p ldq:i indxq:io[n] rho:p cutpnt:i qstore:p qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:p work:p iwork:ix[4*n] info:o
claed7 - : n:i cutpnt:i qsiz:i tlvls:i curlvl:i curpbm:i d:p q:p ldq:i rho:p indxq:io[n] qstore:p qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:p work:p rwork:p iwork:ix[4*n] info:o
zlaed7 - : n:i cutpnt:i qsiz:i tlvls:i curlvl:i curpbm:i d:p q:p ldq:i rho:p indxq:io[n] qstore:p qptr:iio[n+2] prmptr:iio[n*log2(2*n-1)] perm:iio[n*log2(2*n-1)] givptr:iio[n*log2(2*n-1)] givcol:iio[2*n*log2(2*n-1)] givnum:p work:p rwork:p iwork:ix[4*n] info:o
slaeda - : n:i tlvls:i curlvl:i curpbm:i prmptr:ii[n*log2(2*n-1)] perm:ii[n*log2(2*n-1)] givptr:ii[n*log2(2*n-1)] givcol:ii[2*n*log2(2*n-1)] givnum:p q:p qptr:ii[n+2] z:p ztemp:p info:o
dlaeda - : n:i tlvls:i curlvl:i curpbm:i prmptr:ii[n*log2(2*n-1)] perm:ii[n*log2(2*n-1)] givptr:ii[n*log2(2*n-1)] givcol:ii[2*n*log2(2*n-1)] givnum:p q:p qptr:ii[n+2] z:p ztemp:p info:o

# Divide and conquer SVD: N = NL+NR+1 in the merge steps; NLVL, the
# levels of the computation tree, is log2(N/(SMLSIZ+1))+1 as ?lasdt makes it.
# ?bdsdc assumes the reference SMLSIZ of 25 for the size of IQ.
sbdsdc - : uplo:c compq:c n:i d:p e:p u:p ldu:i vt:p ldvt:i q:p iq:io[n*(3+3*log2(n/26))]?compq=P work:p iwork:ix[8*n] info:o
dbdsdc - : uplo:c compq:c n:i d:p e:p u:p ldu:i vt:p ldvt:i q:p iq:io[n*(3+3*log2(n/26))]?compq=P work:p iwork:ix[8*n] info:o
slals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:p ldb:i bx:p ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:p ldgnum:i poles:p difl:p difr:p z:p k:i c:p s:p work:p info:o
dlals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:p ldb:i bx:p ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:p ldgnum:i poles:p difl:p difr:p z:p k:i c:p s:p work:p info:o
clals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:p ldb:i bx:p ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:p ldgnum:i poles:p difl:p difr:p z:p k:i c:p s:p rwork:p info:o
zlals0 - : icompq:i nl:i nr:i sqre:i nrhs:i b:p ldb:i bx:p ldbx:i perm:ii[nl+nr+1] givptr:i givcol:ii[ldgcol*2] ldgcol:i givnum:p ldgnum:i poles:p difl:p difr:p z:p k:i c:p s:p rwork:p info:o
slalsa - : icompq:i smlsiz:i n:i nrhs:i b:p ldb:i bx:p ldbx:i u:p ldu:i vt:p k:ii[n] difl:p difr:p z:p poles:p givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:p c:p s:p work:p iwork:ix[3*n] info:o
dlalsa - : icompq:i smlsiz:i n:i nrhs:i b:p ldb:i bx:p ldbx:i u:p ldu:i vt:p k:ii[n] difl:p difr:p z:p poles:p givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:p c:p s:p work:p iwork:ix[3*n] info:o
clalsa - : icompq:i smlsiz:i n:i nrhs:i b:p ldb:i bx:p ldbx:i u:p ldu:i vt:p k:ii[n] difl:p difr:p z:p poles:p givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:p c:p s:p rwork:p iwork:ix[3*n] info:o
zlalsa - : icompq:i smlsiz:i n:i nrhs:i b:p ldb:i bx:p ldbx:i u:p ldu:i vt:p k:ii[n] difl:p difr:p z:p poles:p givptr:ii[n] givcol:ii[ldgcol*2*(log2(n/(smlsiz+1))+1)] ldgcol:i perm:ii[ldgcol*(log2(n/(smlsiz+1))+1)] givnum:p c:p s:p rwork:p iwork:ix[3*n] info:o
slalsd - : uplo:c smlsiz:i n:i nrhs:i d:p e:p b:p ldb:i rcond:p rank:o work:p iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
dlalsd - : uplo:c smlsiz:i n:i nrhs:i d:p e:p b:p ldb:i rcond:p rank:o work:p iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
clalsd - : uplo:c smlsiz:i n:i nrhs:i d:p e:p b:p ldb:i rcond:p rank:o work:p rwork:p iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
zlalsd - : uplo:c smlsiz:i n:i nrhs:i d:p e:p b:p ldb:i rcond:p rank:o work:p rwork:p iwork:ix[3*n*(log2(n/(smlsiz+1))+1)+11*n] info:o
slasd1 - : nl:i nr:i sqre:i d:p alpha:p beta:p u:p ldu:i vt:p ldvt:i idxq:iio[nl+nr+1] iwork:ix[4*(nl+nr+1)] work:p info:o
dlasd1 - : nl:i nr:i sqre:i d:p alpha:p beta:p u:p ldu:i vt:p ldvt:i idxq:iio[nl+nr+1] iwork:ix[4*(nl+nr+1)] work:p info:o
slasd2 - : nl:i nr:i sqre:i k:o d:p z:p alpha:p beta:p u:p ldu:i vt:p ldvt:i dsigma:p u2:p ldu2:i vt2:p ldvt2:i idxp:io[nl+nr+1] idx:io[nl+nr+1] idxc:io[nl+nr+1] idxq:iio[nl+nr+1] coltyp:io[nl+nr+1] info:o
dlasd2 - : nl:i nr:i sqre:i k:o d:p z:p alpha:p beta:p u:p ldu:i vt:p ldvt:i dsigma:p u2:p ldu2:i vt2:p ldvt2:i idxp:io[nl+nr+1] idx:io[nl+nr+1] idxc:io[nl+nr+1] idxq:iio[nl+nr+1] coltyp:io[nl+nr+1] info:o
slasd3 - : nl:i nr:i sqre:i k:i d:p q:p ldq:i dsigma:p u:p ldu:i u2:p ldu2:i vt:p ldvt:i vt2:p ldvt2:i idxc:ii[nl+nr+1] ctot:ii[4] z:p info:o
dlasd3 - : nl:i nr:i sqre:i k:i d:p q:p ldq:i dsigma:p u:p ldu:i u2:p ldu2:i vt:p ldvt:i vt2:p ldvt2:i idxc:ii[nl+nr+1] ctot:ii[4] z:p info:o
slasd6 - : icompq:i nl:i nr:i sqre:i d:p vf:p vl:p alpha:p beta:p idxq:iio[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:p ldgnum:i poles:p difl:p difr:p z:p k:o c:p s:p work:p iwork:ix[3*(nl+nr+1)] info:o
dlasd6 - : icompq:i nl:i nr:i sqre:i d:p vf:p vl:p alpha:p beta:p idxq:iio[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:p ldgnum:i poles:p difl:p difr:p z:p k:o c:p s:p work:p iwork:ix[3*(nl+nr+1)] info:o
slasd7 - : icompq:i nl:i nr:i sqre:i k:o d:p z:p zw:p vf:p vfw:p vl:p vlw:p alpha:p beta:p dsigma:p idx:io[nl+nr+1] idxp:io[nl+nr+1] idxq:ii[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:p ldgnum:i c:p s:p info:o
dlasd7 - : icompq:i nl:i nr:i sqre:i k:o d:p z:p zw:p vf:p vfw:p vl:p vlw:p alpha:p beta:p dsigma:p idx:io[nl+nr+1] idxp:io[nl+nr+1] idxq:ii[nl+nr+1] perm:io[nl+nr+1]?icompq!=0 givptr:o?icompq!=0 givcol:io[ldgcol*2]?icompq!=0 ldgcol:i givnum:p ldgnum:i c:p s:p info:o
slasda - : icompq:i smlsiz:i n:i sqre:i d:p e:p u:p ldu:i vt:p k:io[1+(n-1)*icompq] difl:p difr:p z:p poles:p givptr:io[n]?icompq!=0 givcol:io[ldgcol*2*(log2(n/(smlsiz+1))+1)]?icompq!=0 ldgcol:i perm:io[ldgcol*(log2(n/(smlsiz+1))+1)]?icompq!=0 givnum:p c:p s:p work:p iwork:ix[7*n] info:o
dlasda - : icompq:i smlsiz:i n:i sqre:i d:p e:p u:p ldu:i vt:p k:io[1+(n-1)*icompq] difl:p difr:p z:p poles:p givptr:io[n]?icompq!=0 givcol:io[ldgcol*2*(log2(n/(smlsiz+1))+1)]?icompq!=0 ldgcol:i perm:io[ldgcol*(log2(n/(smlsiz+1))+1)]?icompq!=0 givnum:p c:p s:p work:p iwork:ix[7*n] info:o

# Test-matrix auxiliaries (libtmglib; exported by qnl_rt as well).
# ?latm2/?latm3 read the single permutation entry IWORK(I) or IWORK(J);
# for ?latmr the permutation has M entries (row pivoting) or N (column),
# and M = N when both sides are pivoted.
slatm2 s : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
dlatm2 d : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
clatm2 c : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
zlatm2 z : m:i n:i i:i j:i kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
slatm3 s : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
dlatm3 d : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
clatm3 c : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
zlatm3 z : m:i n:i i:i j:i isub:o jsub:o kl:i ku:i idist:i iseed:iio[4] d:p igrade:i dl:p dr:p ipvtng:i iwork:ii[max(i,j)]?ipvtng!=0 sparse:p
slatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:p mode:i cond:p dmax:p rsign:c grade:c dl:p model:i condl:p dr:p moder:i condr:p pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:p anorm:p pack:c a:p lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
dlatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:p mode:i cond:p dmax:p rsign:c grade:c dl:p model:i condl:p dr:p moder:i condr:p pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:p anorm:p pack:c a:p lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
clatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:p mode:i cond:p dmax:p rsign:c grade:c dl:p model:i condl:p dr:p moder:i condr:p pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:p anorm:p pack:c a:p lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
zlatmr - : m:i n:i dist:c iseed:iio[4] sym:c d:p mode:i cond:p dmax:p rsign:c grade:c dl:p model:i condl:p dr:p moder:i condr:p pivtng:c ipivot:ii[max(m,n)]?pivtng!=N kl:i ku:i sparse:p anorm:p pack:c a:p lda:i iwork:ix[max(m,n)]?pivtng!=N info:o
