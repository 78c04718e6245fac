# Stand-ins for every qnl_lapack_ symbol, generated from the LAPACK tables.
set(QNL_PROBE_LAPACK_OUT)
foreach(k RANGE 4)
  list(APPEND QNL_PROBE_LAPACK_OUT ${GEN}/probe_lapack_${k}.cpp)
endforeach()
add_custom_command(
  OUTPUT ${QNL_PROBE_LAPACK_OUT}
  COMMAND Python3::Interpreter ${QNL_GENERATOR} lapack --probe ${QNL_LAPACK_TABLES} ${GEN} ${QNL_LAPACK_SHARDS}
  DEPENDS ${QNL_LAPACK_TABLES} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
  COMMENT "Generating the probe's LAPACK stand-ins")
foreach(layer IN LISTS PROBE_LAYERS)
  target_sources(qnl_probe_${layer} PRIVATE ${QNL_PROBE_LAPACK_OUT})
  target_include_directories(qnl_probe_${layer} PRIVATE ${QNL_LAPACK_GEN})
  add_dependencies(qnl_probe_${layer} qnl_lapack_generated)
endforeach()
