# The Qt side of the editors: the application profile, window placements, the
# resizable dialog and the IPTC clipboard exchange.
#
# A libFuzzer build takes the core only (the fuzz targets do not link the
# editors), so it does not need Qt.
if(VLIPTC_LIBFUZZER)
  return()
endif()

find_package(Qt6 REQUIRED COMPONENTS Widgets)
set_target_properties(vliptc_editors PROPERTIES AUTOMOC ON)
target_link_libraries(vliptc_editors PUBLIC Qt6::Widgets)
target_sources(vliptc_editors PRIVATE
  Settings.cpp
  WindowPlacement.cpp
  ResizableDialog.cpp
  IPTCClipboard.cpp)

include(dialogs.cmake)
include(sheet.cmake)
