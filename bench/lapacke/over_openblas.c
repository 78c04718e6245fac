/* No code: a library whose dependency list is the serial OpenBLAS build first, then
   Debian's liblapacke. Loaded into a namespace of its own, it makes liblapacke's LAPACK
   calls resolve to libopenblas, the very library the facade's back-end calls, rather
   than to the OpenBLAS build's separate liblapack (see lapacke_bench.cpp). */
