target_sources(vliptc_core PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/FileIO.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/ContainerFile.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/DescribedFile.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/JpegContainer.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/TrailerContainer.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/TiffContainer.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/PsdContainer.cpp)
# TIFF and Photoshop documents: structure walks and the rewrites.
target_sources(vliptc_core PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/internal/TiffLayout.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/TiffRewrite.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/PsdLayout.cpp
  ${CMAKE_CURRENT_LIST_DIR}/internal/PsdRewrite.cpp)
