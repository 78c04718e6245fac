# One call per family of entries (see tools/qnlgen/model.py):
#
#   qnl_family(NAME <name> TABLES <table>... [SHARDS <n>] [DIR <folder>]
#              [SOURCES <file>...] [INCLUDES <folder>...] [FILES <name>...]
#              [PROBE [PROBE_SHARDS <n>] [PROBE_SKIP <file>]] [CASES])
#
# generates, in DIR (default ${QNL_GEN}/<name>), the SHARDS entry sources that the
# facade compiles, <name>_gen.h (typed prototypes of the hidden bodies),
# backend_<name>.h and <name>.names (merged into the version script). SOURCES are the
# family's hand-written sources (its frame), compiled into the facade with INCLUDES
# (and DIR) on the include path. FILES names further files the module writes in DIR.
# The target qnl_<name>_generated stands for all of them. PROBE gives
# every probe back-end the family's stand-ins (PROBE_SKIP: symbols written by hand
# there), CASES gives the tests <name>_cases.inc. Call it from src/ (or a file src/
# includes): the facade's targets live there.

# Sets OUT to the COUNT generated sources STEM_0.cpp ... in DIR.
function(qnl_shard_files out dir stem count)
  set(files)
  math(EXPR last "${count} - 1")
  foreach(k RANGE ${last})
    list(APPEND files ${dir}/${stem}_${k}.cpp)
  endforeach()
  set(${out} ${files} PARENT_SCOPE)
endfunction()

function(qnl_family)
  cmake_parse_arguments(F "PROBE;CASES" "NAME;SHARDS;DIR;PROBE_SHARDS;PROBE_SKIP" "TABLES;SOURCES;INCLUDES;FILES" ${ARGN})
  if(NOT F_NAME OR NOT F_TABLES OR F_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "qnl_family: NAME and TABLES are required (${F_UNPARSED_ARGUMENTS})")
  endif()
  set(name ${F_NAME})
  if(NOT F_SHARDS)
    set(F_SHARDS 1)
  endif()
  if(NOT F_PROBE_SHARDS)
    set(F_PROBE_SHARDS ${F_SHARDS})
  endif()
  if(NOT F_DIR)
    set(F_DIR ${QNL_GEN}/${name})
  endif()
  qnl_shard_files(sources ${F_DIR} ${name}_entries ${F_SHARDS})
  list(TRANSFORM F_FILES PREPEND ${F_DIR}/ OUTPUT_VARIABLE files)
  set(outputs ${sources} ${F_DIR}/${name}_gen.h ${F_DIR}/${name}.names ${F_DIR}/backend_${name}.h ${files})
  add_custom_command(
    OUTPUT ${outputs}
    COMMAND Python3::Interpreter ${QNL_GENERATOR} family ${name} ${F_DIR} ${F_SHARDS} ${F_TABLES}
    DEPENDS ${F_TABLES} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
    COMMENT "Generating the ${name} entries")
  add_custom_target(qnl_${name}_generated DEPENDS ${outputs})
  set_property(GLOBAL APPEND PROPERTY QNL_FAMILIES ${name})
  list(TRANSFORM F_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]" OUTPUT_VARIABLE own_sources)
  list(TRANSFORM F_INCLUDES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]" OUTPUT_VARIABLE own_includes)
  set_property(GLOBAL APPEND PROPERTY QNL_FAMILY_SOURCES ${sources} ${own_sources})
  set_property(GLOBAL APPEND PROPERTY QNL_FAMILY_OUTPUTS ${outputs})
  set_property(GLOBAL APPEND PROPERTY QNL_FAMILY_DIRS ${F_DIR} ${own_includes})
  set_property(GLOBAL APPEND PROPERTY QNL_EXPORT_LISTS ${F_DIR}/${name}.names)
  set_property(GLOBAL PROPERTY QNL_FAMILY_${name}_TABLES ${F_TABLES})
  if(F_PROBE)
    set_property(GLOBAL APPEND PROPERTY QNL_PROBE_FAMILIES ${name})
    set_property(GLOBAL PROPERTY QNL_FAMILY_${name}_PROBE_SHARDS ${F_PROBE_SHARDS})
    set_property(GLOBAL PROPERTY QNL_FAMILY_${name}_PROBE_SKIP ${F_PROBE_SKIP})
  endif()
  if(F_CASES)
    set_property(GLOBAL APPEND PROPERTY QNL_CASE_FAMILIES ${name})
  endif()
endfunction()

# The probe back-end's stand-ins of every family registered with PROBE, generated in
# DIR; sets OUT to the sources.
function(qnl_family_probe_sources out dir)
  get_property(families GLOBAL PROPERTY QNL_PROBE_FAMILIES)
  set(all)
  foreach(name IN LISTS families)
    get_property(tables GLOBAL PROPERTY QNL_FAMILY_${name}_TABLES)
    get_property(shards GLOBAL PROPERTY QNL_FAMILY_${name}_PROBE_SHARDS)
    get_property(skip GLOBAL PROPERTY QNL_FAMILY_${name}_PROBE_SKIP)
    qnl_shard_files(sources ${dir} probe_${name} ${shards})
    set(skip_args)
    if(skip)
      set(skip_args --skip ${skip})
    endif()
    add_custom_command(
      OUTPUT ${sources}
      COMMAND Python3::Interpreter ${QNL_GENERATOR} probe ${name} ${dir} ${shards} ${skip_args} ${tables}
      DEPENDS ${tables} ${skip} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
      COMMENT "Generating the probe's ${name} stand-ins")
    list(APPEND all ${sources})
  endforeach()
  set(${out} ${all} PARENT_SCOPE)
endfunction()

# The tests' cases of every family registered with CASES, as DIR/<name>_cases.inc;
# sets OUT to the files.
function(qnl_family_cases out dir)
  get_property(families GLOBAL PROPERTY QNL_CASE_FAMILIES)
  set(all)
  foreach(name IN LISTS families)
    get_property(tables GLOBAL PROPERTY QNL_FAMILY_${name}_TABLES)
    add_custom_command(
      OUTPUT ${dir}/${name}_cases.inc
      COMMAND Python3::Interpreter ${QNL_GENERATOR} cases ${name} ${dir}/${name}_cases.inc ${tables}
      DEPENDS ${tables} ${QNL_GENERATOR} ${QNL_GENERATOR_SOURCES}
      COMMENT "Generating the ${name} test cases")
    list(APPEND all ${dir}/${name}_cases.inc)
  endforeach()
  set(${out} ${all} PARENT_SCOPE)
endfunction()
