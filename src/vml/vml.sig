# Vector-math functions.
#
# A shape row gives the arguments after the count in the letters of the tables'
# vocabulary (tools/qnlgen/model.py), each name:letter, with :k the position a call
# reports when that array is null; the kernel group the kernel libraries build it
# with; the threader of the threading layer, per type letter ({t} the type letter,
# {r} its real letter; "-" calls the kernel directly, without pieces), which the
# threading layer provides for every type letter of the row.
#
# shape      group      types  threader            arguments after n
shape unary     unary     sdcz   {t}_1i_1o           a:e:2 y:y:3
shape binary    binary    sdcz   {t}_2i_1o           a:e:2 b:e:3 y:y:4
shape tworesult tworesult sdcz   {t}_1i_2o           a:e:2 y:y:3 z:y:3
shape powx      powx      sdcz   {t}_c{t}_2i_{t}_1o  a:e:2 b:a y:y:4
shape c2r       c2r       cz     {t}_1i_{r}_1o       a:e:2 y:w:3
shape r2c       r2c       cz     {r}_1i_{t}_1o       a:r:2 y:y:3
shape linfrac   linfrac   sd     {t}_6i_1o           a:e:2 b:e:3 scalea:a shifta:a scaleb:a shiftb:a y:y:8
shape packi     pack      sdcz   -                   a:e inc:i y:y
shape packv     pack      sdcz   -                   a:e index:j y:y
shape unpacki   pack      sdcz   -                   a:e y:y inc:i
shape unpackv   pack      sdcz   -                   a:e y:y index:j
#
# A function row: one row per shape and type letters, then the stems. Every (type,
# stem) is one function with four bodies and eight names:
#   v<t><Stem>, vm<t><Stem> (mode appended), V<T><STEM>/v<t><stem>/v<t><stem>_ (by
#   reference) and VM<T><STEM>/vm<t><stem>/vm<t><stem>_ (by reference, mode appended).
# flags: warn = post the accuracy warning when the table index is not 2.
# service: the mode, status and callback calls, names vml<Stem>, VML<STEM>, vml<stem>,
# vml<stem>_ (bodies in mode.cpp).
#
# shape      types  flags  stems
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
packi        sdcz   -      PackI
packv        sdcz   -      PackV PackM
unpacki      sdcz   -      UnpackI
unpackv      sdcz   -      UnpackV UnpackM
service      -      -      SetMode SetErrStatus GetMode GetErrStatus ClearErrStatus SetErrorCallBack GetErrorCallBack ClearErrorCallBack
