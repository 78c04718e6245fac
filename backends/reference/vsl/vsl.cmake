# Random streams and distributions: one shared library, compiled once, that
# every reference kernel library links, so that their handles find its symbols.
# The vector paths inside pick AVX2 or AVX-512 at run time.
add_library(qnl_vsl_kernels SHARED
  ${CMAKE_CURRENT_LIST_DIR}/streams.cpp
  ${CMAKE_CURRENT_LIST_DIR}/brng_congruential.cpp
  ${CMAKE_CURRENT_LIST_DIR}/brng_twister.cpp
  ${CMAKE_CURRENT_LIST_DIR}/brng_counter.cpp
  ${CMAKE_CURRENT_LIST_DIR}/brng_quasi.cpp
  ${CMAKE_CURRENT_LIST_DIR}/gaussian.cpp
  ${CMAKE_CURRENT_LIST_DIR}/dist_continuous.cpp
  ${CMAKE_CURRENT_LIST_DIR}/dist_discrete.cpp)
target_include_directories(qnl_vsl_kernels PRIVATE ${CMAKE_CURRENT_LIST_DIR} ${CMAKE_SOURCE_DIR}/include)
# -fvect-cost-model=dynamic: at -O2 GCC 12 vectorises only loops that need no
# remainder, which left the conversions and the twister's refill scalar.
target_compile_options(qnl_vsl_kernels PRIVATE -O2 -fvect-cost-model=dynamic -fvisibility=hidden -fvisibility-inlines-hidden
  -Wno-ignored-attributes)
target_link_libraries(qnl_vsl_kernels PRIVATE sleef)
target_link_options(qnl_vsl_kernels PRIVATE -Wl,--no-undefined
  -Wl,--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map)
set_property(TARGET qnl_vsl_kernels APPEND PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
set_target_properties(qnl_vsl_kernels PROPERTIES OUTPUT_NAME qnl_vsl_kernels)
# What a kernel library links: the dependency is kept although the kernel
# library calls nothing in it, since dlsym on its handle is what finds these.
set(QNL_VSL_LINK "-Wl,--push-state,--no-as-needed" qnl_vsl_kernels "-Wl,--pop-state")
