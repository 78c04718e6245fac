# Random streams and distribution generators.
#
# stream rows: the stream entries (bodies hand-written in vsl_streams.cpp).
#   stream  <C name>  <bodies>  <kernel symbol>  <kernel arguments>
#   bodies: split  = a C body (one name) and a Fortran body (UPPER, lower, lower_);
#           shared = one body under all four names (C and Fortran arguments coincide).
#   kernel arguments (words of tools/qnlgen/model.py): ptr a pointer, ptr* the address of a
#   stream handle, i32 a 32-bit integer, u64 a 64-bit word, r a real scalar of the entry's
#   type letter (vsl<t>...), - none.
#
# dist rows: one generator per type letter, on the distribution frame of vsl_frame.h.
#   dist  <Stem>  <types>  <result>  <method limit>  <flag>  <name:letter>...  <position:rejected>...
#   types d, s (real element), i (integer results); result y = the type's real, or the word
#   of the element: i32, u32, u64. flag: accurate = the method may carry 0x40000000.
#   Parameters from position 5, by value in C and by reference in Fortran:
#     r  real scalar (float for s, double for d and for i)
#     e  const array of that real type
#     i32  32-bit integer
#   A test is "position:condition", the condition (C++, no blanks) rejecting the call;
#   tests run in the order written. +kernel=<symbol> overrides the kernel's name.
#
# stream  C name                  bodies  kernel symbol              kernel arguments
stream    vslNewStream            split   __vslNewStreamEx           ptr* i32 i32 ptr
stream    vslNewStreamEx          split   __vslNewStreamEx           ptr* i32 i32 ptr
stream    vslDeleteStream         shared  __vslDeleteStream          ptr*
stream    vslCopyStream           split   __vslCopyStream            ptr* ptr
stream    vslCopyStreamState      split   __vslCopyStreamState       ptr ptr
stream    vslLeapfrogStream       split   __vslLeapfrogStream        ptr i32 i32
stream    vslSkipAheadStream      split   __vslSkipAheadStream       ptr u64
stream    vslGetStreamStateBrng   split   __vslGetStreamStateBrng    ptr
stream    vslGetStreamSize        split   __vslGetStreamSize         ptr
stream    vslSaveStreamF          split   __vslSaveStreamF           ptr ptr u64
stream    vslLoadStreamF          split   __vslLoadStreamF           ptr* ptr u64
stream    vslSaveStreamM          split   __vslSaveStreamM           ptr ptr
stream    vslLoadStreamM          shared  __vslLoadStreamM           ptr* ptr
stream    vsliNewAbstractStream   split   __vsliNewAbstractStream    ptr* i32 ptr ptr
stream    vsldNewAbstractStream   split   __vsldNewAbstractStream    ptr* i32 ptr r r ptr
stream    vslsNewAbstractStream   split   __vslsNewAbstractStream    ptr* i32 ptr r r ptr
stream    vslGetNumRegBrngs       shared  __vslGetNumRegBrngs        -
stream    vslRegisterBrng         shared  __vslRegisterBrng          ptr
stream    vslGetBrngProperties    split   __vslGetBrngProperties     i32 ptr
#
# dist  Stem            types result limit flag      parameters                           tests
dist    Cauchy          ds    y      0     -         a:r beta:r                           6:!(beta>0)
dist    Exponential     ds    y      0     accurate  a:r beta:r                           6:!(beta>0)
dist    Gaussian        ds    y      2     -         a:r sigma:r                          6:!(sigma>0)
dist    GaussianMV      ds    y      2     -         dimen:i32 mstorage:i32 a:e t:e       5:dimen<1 6:mstorage<0||mstorage>2
dist    Gumbel          ds    y      0     -         a:r beta:r                           6:!(beta>0)
dist    Laplace         ds    y      0     -         a:r beta:r                           6:!(beta>0)
dist    Lognormal       ds    y      1     accurate  a:r sigma:r b:r beta:r               6:!(sigma>0) 8:!(beta>0)
dist    Rayleigh        ds    y      0     accurate  a:r beta:r                           6:!(beta>0)
dist    Uniform         ds    y      0     accurate  a:r b:r                              5:!(b>a)
dist    Weibull         ds    y      0     accurate  alpha:r a:r beta:r                   5:!(alpha>0) 7:!(beta>0)
dist    Beta            ds    y      0     accurate  p:r q:r a:r beta:r                   5:!(p>0) 6:!(q>0) 8:!(beta>0)
dist    Gamma           ds    y      0     accurate  alpha:r a:r beta:r                   5:!(alpha>0) 7:!(beta>0)
dist    Bernoulli       i     i32    0     -         p:r                                  5:p<0||p>1
dist    Binomial        i     i32    0     -         ntrial:i32 p:r                       5:ntrial<1 6:p<0||p>1
dist    Geometric       i     i32    0     -         p:r                                  5:!(p>0)||!(p<1)
dist    Hypergeometric  i     i32    0     -         l:i32 s:i32 m:i32                    6:s<0 7:m<0 5:(s>m?s:m)>l
dist    NegBinomial     i     i32    0     -         a:r p:r                              5:!(a>0) 6:!(p>0)||!(p<1) +kernel=_vsliRngNegbinomial
dist    Poisson         i     i32    1     -         lambda:r                             5:!(lambda>0)
dist    PoissonV        i     i32    0     -         lambda:e                             5:lambda==nullptr
dist    Uniform         i     i32    0     -         a:i32 b:i32                          5:!(b>a)
dist    UniformBits     i     u32    0     -
dist    UniformBits32   i     u32    0     -
dist    UniformBits64   i     u64    0     -
