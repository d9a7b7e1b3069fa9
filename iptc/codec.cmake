# The IIM block codec, its byte reader, and the IPTC date and time forms with
# the date macros.
target_sources(vliptc_core PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/Codec.cpp
  ${CMAKE_CURRENT_LIST_DIR}/Dates.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/IPTCReader.cpp)
