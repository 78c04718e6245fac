# Vector math on the probe: one probe kernel library copied under the kernel file
# names into build/probe (the threaders are the family's stand-ins in every probe
# threading layer). The copy for index 2 is left out, so the loader's fallback to
# index 0 can be seen.
add_library(qnl_probe_vml_kernel SHARED ${CMAKE_CURRENT_LIST_DIR}/probe_vml_kernel.cpp)
target_include_directories(qnl_probe_vml_kernel PRIVATE ${QNL_VML_GEN})
add_dependencies(qnl_probe_vml_kernel qnl_vml_generated)
target_link_libraries(qnl_probe_vml_kernel PRIVATE qnl_probe_state)
set_target_properties(qnl_probe_vml_kernel PROPERTIES OUTPUT_NAME qnl_vml_def
  LIBRARY_OUTPUT_DIRECTORY ${QNL_PROBE_DIR} BUILD_RPATH "$ORIGIN")
set(copies)
foreach(stem cmpt mc mc2 mc3 avx avx2 avx512_mic avx512)
  list(APPEND copies COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:qnl_probe_vml_kernel>
       ${QNL_PROBE_DIR}/libqnl_vml_${stem}.so)
endforeach()
add_custom_command(TARGET qnl_probe_vml_kernel POST_BUILD ${copies})
add_dependencies(qnl_probe qnl_probe_vml_kernel)
