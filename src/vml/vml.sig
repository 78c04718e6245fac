# Vector-math functions: one row per group and type letters, then the stems.
# Every (type, stem) is one function with four bodies and eight names:
#   v<t><Stem>, vm<t><Stem> (mode appended), V<T><STEM>/v<t><stem>/v<t><stem>_ (by reference)
#   and VM<T><STEM>/vm<t><stem>/vm<t><stem>_ (by reference, mode appended).
#
# group      arguments after n                          pointers tested: position
#   unary      a, y                                       a:2 y:3
#   binary     a, b, y                                    a:2 b:3 y:4
#   tworesult  a, y, z                                    a:2 y:3 z:3
#   powx       a, b (scalar), y                           a:2 y:4
#   c2r        a (complex), y (real)                      a:2 y:3
#   r2c        a (real), y (complex; the type letter)     a:2 y:3
#   linfrac    a, b, scalea, shifta, scaleb, shiftb, y    a:2 b:3 y:8
#   pack       a, third, fourth (own frame, no threader)  none
# flags: warn = post the accuracy warning when the table index is not 2.
# service: the mode, status and callback calls, names vml<Stem>, VML<STEM>, vml<stem>, vml<stem>_
# (bodies in mode.cpp).
#
# group      types  flags  stems
unary        sd     -      Abs Acos Acosh Asin Asinh Atan Atanh Cbrt CdfNorm CdfNormInv Ceil Cos Cosh Erf
unary        sd     -      ErfInv Erfc ErfcInv Exp ExpInt1 Expm1 Floor Frac Inv InvCbrt InvSqrt LGamma Ln
unary        sd     -      Log10 Log1p NearbyInt Pow2o3 Pow3o2 Rint Round Sin Sinh Sqr Sqrt TGamma Tan Tanh
unary        sd     -      Trunc
unary        cz     -      Acos Acosh Asin Asinh Atan Atanh Conj Cos Cosh Exp Ln Log10 Sin Sinh Sqrt Tan Tanh
binary       sd     -      Add Atan2 Div Hypot Mul Pow Sub
binary       c      -      Add Div Mul MulByConj Pow Sub
binary       z      -      Add Div Mul MulByConj Sub
binary       z      warn   Pow
tworesult    sd     -      Modf SinCos
powx         sdc    -      Powx
powx         z      warn   Powx
c2r          cz     -      Abs Arg
r2c          cz     -      CIS
linfrac      sd     warn   LinearFrac
pack         sdcz   -      PackI PackV PackM UnpackI UnpackV UnpackM
service      -      -      SetMode SetErrStatus GetMode GetErrStatus ClearErrStatus SetErrorCallBack GetErrorCallBack ClearErrorCallBack
