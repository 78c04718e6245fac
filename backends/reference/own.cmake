# The routines the reference back-end computes itself because the ILP64 OpenBLAS has no
# routine of that name, compiled once for every threading-layer build. Every back-end
# symbol they define is listed in handwritten.txt, which the forwarding-stub generator
# leaves out.
add_library(qnl_ref_own OBJECT
  ${CMAKE_CURRENT_LIST_DIR}/own_gemm.cpp
  ${CMAKE_CURRENT_LIST_DIR}/own_lapack_ext.cpp
  ${CMAKE_CURRENT_LIST_DIR}/own_lu.cpp
  ${CMAKE_CURRENT_LIST_DIR}/own_packed.cpp
  ${CMAKE_CURRENT_LIST_DIR}/own_sparse.cpp
  ${CMAKE_CURRENT_LIST_DIR}/own_syrdb.cpp
  ${CMAKE_CURRENT_LIST_DIR}/own_trans.cpp)
target_include_directories(qnl_ref_own PRIVATE ${CMAKE_CURRENT_LIST_DIR} ${QNL_GEN}/blas ${QNL_GEN}/lapack)
add_dependencies(qnl_ref_own qnl_generated)
set(REF_OWN_OBJECTS $<TARGET_OBJECTS:qnl_ref_own>)
