# The LAPACKE entries: generated from lapacke.sig into shards of twin bodies (each built
# as LP64 and as ILP64) and one file of exported selectors, with the hand-written
# template and layout kit beside them.
set(QNL_LAPACKE_GEN ${QNL_GEN}/lapacke CACHE INTERNAL "")
set(QNL_LAPACKE_SHARDS 2)
set(QNL_LAPACKE_INPUTS ${CMAKE_CURRENT_LIST_DIR}/lapacke.sig ${QNL_LAPACK_TABLES}
    ${CMAKE_SOURCE_DIR}/include/lapacke_utils.h
    ${CMAKE_SOURCE_DIR}/include/lapacke.h)
set(QNL_LAPACKE_SOURCES ${CMAKE_CURRENT_LIST_DIR}/lapacke_frame.cpp ${QNL_LAPACKE_GEN}/lapacke_select.cpp)
set(QNL_LAPACKE_OUT ${QNL_LAPACKE_GEN}/lapacke_select.cpp ${QNL_LAPACKE_GEN}/lapacke.names
    ${QNL_LAPACKE_GEN}/lapacke_routines.txt)
math(EXPR last "${QNL_LAPACKE_SHARDS} - 1")
foreach(k RANGE ${last})
  list(APPEND QNL_LAPACKE_OUT ${QNL_LAPACKE_GEN}/lapacke_entries_${k}.inc ${QNL_LAPACKE_GEN}/lapacke_lp64_${k}.cpp
       ${QNL_LAPACKE_GEN}/lapacke_ilp64_${k}.cpp)
  list(APPEND QNL_LAPACKE_SOURCES ${QNL_LAPACKE_GEN}/lapacke_lp64_${k}.cpp ${QNL_LAPACKE_GEN}/lapacke_ilp64_${k}.cpp)
endforeach()
add_custom_command(
  OUTPUT ${QNL_LAPACKE_OUT}
  COMMAND Python3::Interpreter ${QNL_GENERATOR} lapacke ${QNL_LAPACKE_INPUTS} ${QNL_LAPACKE_GEN} ${QNL_LAPACKE_SHARDS}
  DEPENDS ${QNL_LAPACKE_INPUTS} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
  COMMENT "Generating the LAPACKE entries")
set_property(GLOBAL APPEND PROPERTY QNL_EXPORT_LISTS ${QNL_LAPACKE_GEN}/lapacke.names)
