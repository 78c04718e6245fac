# The transforms family: the descriptor interface's C and Fortran entries and
# the FFTW3 plan layer on them. Hand-written frames; their exported spellings
# come from the tables the frames are built from (tools/qnlgen/transforms.py).
set(QNL_TRANSFORMS_DIR ${CMAKE_CURRENT_LIST_DIR})
set(QNL_TRANSFORMS_SOURCES
  ${QNL_TRANSFORMS_DIR}/dfti.cpp
  ${QNL_TRANSFORMS_DIR}/dfti_core.cpp
  ${QNL_TRANSFORMS_DIR}/dfti_fortran.cpp
  ${QNL_TRANSFORMS_DIR}/fftw3/workers.cpp
  ${QNL_TRANSFORMS_DIR}/fftw3/api_double.cpp
  ${QNL_TRANSFORMS_DIR}/fftw3/api_float.cpp)
qnl_family(NAME transforms
           TABLES ${CMAKE_SOURCE_DIR}/include/qnl_dfti.h ${QNL_TRANSFORMS_DIR}/dfti_fortran.def
                  ${QNL_TRANSFORMS_DIR}/fftw3/api.inc ${CMAKE_SOURCE_DIR}/include/fftw3.h
           SOURCES ${QNL_TRANSFORMS_SOURCES} INCLUDES ${QNL_TRANSFORMS_DIR})
# Built for the 64-bit layer width: the entries read the low half under LP64.
set_source_files_properties(${QNL_TRANSFORMS_SOURCES} PROPERTIES COMPILE_DEFINITIONS QNL_ILP64)
