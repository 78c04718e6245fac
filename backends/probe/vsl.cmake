# Random numbers on the probe: the stream and generator kernels in the probe kernel
# library, each recording its arguments and answering what a test chose.
get_property(vsl_tables GLOBAL PROPERTY QNL_FAMILY_vsl_TABLES)
add_custom_command(
  OUTPUT ${GEN}/probe_vsl_0.cpp
  COMMAND Python3::Interpreter ${QNL_GENERATOR} probe vsl ${GEN} 1 ${vsl_tables}
  DEPENDS ${vsl_tables} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
  COMMENT "Generating the probe's random-number kernels")
target_sources(qnl_probe_vml_kernel PRIVATE ${GEN}/probe_vsl_0.cpp)
target_include_directories(qnl_probe_vml_kernel PRIVATE ${QNL_GEN}/vsl)
add_dependencies(qnl_probe_vml_kernel qnl_generated)
