# The transforms family: the descriptor interface's C and Fortran entries and
# the FFTW3 plan layer on them. Hand-written frames; the export list is read
# from the two name tables (dfti_fortran.def and the QNL_EXPORT lines of
# fftw3/api.inc, expanded over fftw_ and fftwf_) by this small hook.
set(QNL_TRANSFORMS_DIR ${CMAKE_CURRENT_LIST_DIR})
set(QNL_TRANSFORMS_SOURCES
  ${QNL_TRANSFORMS_DIR}/dfti.cpp
  ${QNL_TRANSFORMS_DIR}/dfti_core.cpp
  ${QNL_TRANSFORMS_DIR}/dfti_fortran.cpp
  ${QNL_TRANSFORMS_DIR}/fftw3/workers.cpp
  ${QNL_TRANSFORMS_DIR}/fftw3/api_double.cpp
  ${QNL_TRANSFORMS_DIR}/fftw3/api_float.cpp)

function(qnl_transforms_names out)
  set(names DftiCreateDescriptor DftiCreateDescriptor_d_1d DftiCreateDescriptor_s_1d DftiCreateDescriptor_d_md
    DftiCreateDescriptor_s_md DftiCopyDescriptor DftiCommitDescriptor DftiComputeForward DftiComputeBackward
    DftiSetValue DftiGetValue DftiFreeDescriptor DftiErrorClass DftiErrorMessage fftw3_qnl)
  file(STRINGS ${QNL_TRANSFORMS_DIR}/dfti_fortran.def rows REGEX "^QNL_DFTI_F\\(")
  foreach(row IN LISTS rows)
    string(REGEX REPLACE "^QNL_DFTI_F\\(([a-z0-9_]+), ([A-Z0-9_]+),.*" "\\1;\\2;\\1_" spellings "${row}")
    list(APPEND names ${spellings})
  endforeach()
  file(STRINGS ${QNL_TRANSFORMS_DIR}/fftw3/api.inc rows REGEX "^QNL_EXPORT")
  foreach(row IN LISTS rows)
    string(REGEX REPLACE ".*QNL_NAME\\(([a-z0-9_]+)\\).*" "\\1" stem "${row}")
    list(APPEND names fftw_${stem} fftwf_${stem})
  endforeach()
  list(JOIN names "\n" text)
  file(CONFIGURE OUTPUT ${out} CONTENT "${text}\n")
endfunction()
qnl_transforms_names(${QNL_GEN}/transforms/transforms.names)
list(APPEND QNL_EXPORT_LISTS ${QNL_GEN}/transforms/transforms.names)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QNL_TRANSFORMS_DIR}/dfti_fortran.def
  ${QNL_TRANSFORMS_DIR}/fftw3/api.inc)
