# The ten reference kernel libraries: kernels.cpp compiled once per instruction
# set, on SLEEF's build for that set, into build/lib beside the facade.
# index : file stem : SLEEF suffix : compiler flags, separated by commas
set(QNL_VML_KERNEL_BUILDS
  "0:def:sse2:"
  "1:cmpt:purec:"
  "2:p4n:sse2:-msse3"
  "3:mc:sse2:-mssse3"
  "4:mc2:sse4:-msse4.1"
  "5:mc3:sse4:-msse4.2,-mpopcnt"
  "6:avx:avx:-mavx"
  "7:avx2:avx2:-mavx2,-mfma,-mbmi,-mbmi2,-mlzcnt"
  "8:avx512_mic:avx512f:-mavx512f,-mavx512cd,-mavx2,-mfma"
  "9:avx512:avx512f:-mavx512f,-mavx512dq,-mavx512bw,-mavx512vl,-mavx2,-mfma")
set(QNL_VML_ISA_sse2 SSE2)
set(QNL_VML_ISA_sse4 SSE4)
set(QNL_VML_ISA_avx AVX)
set(QNL_VML_ISA_avx2 AVX)
set(QNL_VML_ISA_avx512f AVX512)
set(QNL_VML_ISA_purec SCALAR)
set(QNL_VML_KERNEL_TARGETS)
foreach(build IN LISTS QNL_VML_KERNEL_BUILDS)
  string(REPLACE ":" ";" parts "${build}")
  list(GET parts 0 index)
  list(GET parts 1 stem)
  list(GET parts 2 sleef)
  list(GET parts 3 flags)
  string(REPLACE "," ";" flags "${flags}")
  set(target qnl_vml_kernel_${stem})
  add_library(${target} SHARED ${CMAKE_CURRENT_LIST_DIR}/kernels.cpp)
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_LIST_DIR} ${CMAKE_SOURCE_DIR}/include
    ${CMAKE_SOURCE_DIR}/src/runtime ${QNL_GEN}/runtime ${QNL_VML_GEN})
  target_compile_definitions(${target} PRIVATE QNL_VML_INDEX=${index} QNL_VML_SLEEF=${sleef}
    QNL_VML_ISA_${QNL_VML_ISA_${sleef}}=1)
  target_compile_options(${target} PRIVATE -O2 ${flags} -fvisibility=hidden -fno-math-errno -Wno-ignored-attributes
    -Wno-dangling-pointer)  # SLEEF's vector types; GCC 12 mistakes the callback's context for a dangling pointer
  target_link_libraries(${target} PRIVATE sleef quadmath qnl_catalogue ${QNL_VSL_LINK})  # and the random-number kernels
  target_link_options(${target} PRIVATE -Wl,--no-undefined)
  add_dependencies(${target} qnl_vml_generated)
  # The same search path in the build tree and installed: CMake's build path,
  # padded for the rewrite at install, ends in an empty entry that means the
  # current directory.
  set_target_properties(${target} PROPERTIES OUTPUT_NAME qnl_vml_${stem} INSTALL_RPATH "$ORIGIN"
    BUILD_WITH_INSTALL_RPATH ON)
  list(APPEND QNL_VML_KERNEL_TARGETS ${target})
endforeach()
add_custom_target(qnl_vml_kernels ALL DEPENDS ${QNL_VML_KERNEL_TARGETS})
