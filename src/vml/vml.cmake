# Vector math: the entries of vml.sig on the frame of vml_frame.h, the kernel-library
# loader and the mode/status/callback calls. The folder of the generated files is
# shared with the kernel libraries (vml_functions.inc), the probe and the tests.
set(QNL_VML_GEN ${QNL_GEN}/vml CACHE INTERNAL "the vector-math family's generated files")
qnl_family(NAME vml TABLES ${CMAKE_CURRENT_LIST_DIR}/vml.sig SHARDS 4 DIR ${QNL_VML_GEN} FILES vml_functions.inc
           SOURCES vml/cpu.cpp vml/kernel_loader.cpp vml/mode.cpp INCLUDES vml ${CMAKE_SOURCE_DIR}/include PROBE CASES)
