# The Fortran LAPACK entries: generated from lapack.sig and lapack_ext.sig into
# shards of at most 500 routines, with the hand-written frame beside them.
# The tables, the output folder and the shard count are shared with the probe
# and the tests.
set(QNL_LAPACK_GEN ${QNL_GEN}/lapack CACHE INTERNAL "")
set(QNL_LAPACK_TABLES ${CMAKE_CURRENT_LIST_DIR}/lapack.sig ${CMAKE_CURRENT_LIST_DIR}/lapack_ext.sig CACHE INTERNAL "")
set(QNL_LAPACK_SHARDS 5 CACHE INTERNAL "")
set(QNL_LAPACK_OUT ${QNL_LAPACK_GEN}/lapack.names ${QNL_LAPACK_GEN}/backend_lapack.h)
foreach(k RANGE 4)
  list(APPEND QNL_LAPACK_OUT ${QNL_LAPACK_GEN}/lapack_entries_${k}.cpp)
endforeach()
add_custom_command(
  OUTPUT ${QNL_LAPACK_OUT}
  COMMAND Python3::Interpreter ${QNL_GENERATOR} lapack ${QNL_LAPACK_TABLES} ${QNL_LAPACK_GEN} ${QNL_LAPACK_SHARDS}
  DEPENDS ${QNL_LAPACK_TABLES} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
  COMMENT "Generating the LAPACK entries")
add_custom_target(qnl_lapack_generated DEPENDS ${QNL_LAPACK_OUT})
list(APPEND QNL_EXPORT_LISTS ${QNL_LAPACK_GEN}/lapack.names)
set(QNL_LAPACK_SOURCES ${CMAKE_CURRENT_LIST_DIR}/frame.cpp ${CMAKE_CURRENT_LIST_DIR}/checks.cpp)
foreach(k RANGE 4)
  list(APPEND QNL_LAPACK_SOURCES ${QNL_LAPACK_GEN}/lapack_entries_${k}.cpp)
endforeach()
