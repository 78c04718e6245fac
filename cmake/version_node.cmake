# cmake -DIN=exports.map -DOUT=qnl_rt.map -DNODE=QNL_RT_0 -P version_node.cmake
# Names the version node of a linker version script: every export of the
# library carries that version, so a later major version can keep old ones.
file(READ "${IN}" text)
string(REGEX REPLACE "^{" "${NODE} {" text "${text}")
if(NOT text MATCHES "^${NODE} {")
  message(FATAL_ERROR "${IN} does not start with an anonymous version node")
endif()
file(WRITE "${OUT}" "${text}")
