# Vector math: the kernel-library loader, the mode/status/callback calls, and the
# entries generated from vml.sig in shards. The folder of the generated files and
# its outputs are shared with the kernel libraries, the probe and the tests.
set(QNL_VML_GEN ${QNL_GEN}/vml CACHE INTERNAL "")
set(QNL_VML_TABLE ${CMAKE_CURRENT_LIST_DIR}/vml.sig CACHE INTERNAL "")
set(QNL_VML_SHARDS 4)
set(QNL_VML_SHARD_SOURCES)
math(EXPR last "${QNL_VML_SHARDS} - 1")
foreach(k RANGE ${last})
  list(APPEND QNL_VML_SHARD_SOURCES ${QNL_VML_GEN}/vml_entries_${k}.cpp)
endforeach()
set(QNL_VML_OUT ${QNL_VML_SHARD_SOURCES} ${QNL_VML_GEN}/vml.names ${QNL_VML_GEN}/vml_functions.inc
    ${QNL_VML_GEN}/vml_cases.h)
add_custom_command(
  OUTPUT ${QNL_VML_OUT}
  COMMAND Python3::Interpreter ${QNL_GENERATOR} vml ${QNL_VML_TABLE} ${QNL_VML_GEN} ${QNL_VML_SHARDS}
  DEPENDS ${QNL_VML_TABLE} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
  COMMENT "Generating the vector-math entries")
add_custom_target(qnl_vml_generated DEPENDS ${QNL_VML_OUT})
set_property(GLOBAL APPEND PROPERTY QNL_EXPORT_LISTS ${QNL_VML_GEN}/vml.names)
set(QNL_VML_SOURCES ${CMAKE_CURRENT_LIST_DIR}/cpu.cpp ${CMAKE_CURRENT_LIST_DIR}/kernel_loader.cpp
    ${CMAKE_CURRENT_LIST_DIR}/mode.cpp ${QNL_VML_SHARD_SOURCES})
# The shards see the public header with 64-bit counts, the width their bodies
# read, and every body must have been declared there: the compiler holds the
# table to the header.
set_source_files_properties(${QNL_VML_SHARD_SOURCES} PROPERTIES
  COMPILE_DEFINITIONS QNL_ILP64 COMPILE_OPTIONS -Wmissing-declarations)
