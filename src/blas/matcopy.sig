# Matrix copy and transposition entries: one family per row, expanded over s, d, c, z.
# Each routine <t><family> is exported as
#   QNL_<T><family>    C, by value (QNL_Domatcopy)
#   qnl_<t><family>    Fortran, by reference; qnl_<t><family>_ and QNL_<T><FAMILY> alias it
# and forwards to qnl_trans_qnl_<t><family>, whose one signature is the C spelling's with
# each character widened to an int.
#
# args     name:role, in the routine's order; the letters are those of tools/qnlgen/model.py (VOCABULARY)
#            c  character option: char in C; the back-end gets its first byte,
#               sign-extended, as a 32-bit int
#            n  dimension, leading dimension or stride: size_t in C; the Fortran spelling
#               reads it at the interface layer's width (LP64: 32 bits, sign-extended)
#            a  scalar of the routine's type: by value in C, read through its address in
#               Fortran
#            e  array the routine reads, y  array it writes: passed on as they are
#
# family    args
imatcopy    ordering:c trans:c rows:n cols:n alpha:a ab:y lda:n ldb:n
omatcopy    ordering:c trans:c rows:n cols:n alpha:a a:e lda:n b:y ldb:n
omatcopy2   ordering:c trans:c rows:n cols:n alpha:a a:e lda:n stridea:n b:y ldb:n strideb:n
omatadd     ordering:c transa:c transb:c rows:n cols:n alpha:a a:e lda:n beta:a b:e ldb:n c:y ldc:n
