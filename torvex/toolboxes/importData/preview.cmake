target_sources(importdata PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/PreviewScene.h ${CMAKE_CURRENT_LIST_DIR}/PreviewScene.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PreviewImageItem.h ${CMAKE_CURRENT_LIST_DIR}/PreviewImageItem.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PreviewPlot.h ${CMAKE_CURRENT_LIST_DIR}/PreviewPlot.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PreviewSurface.h ${CMAKE_CURRENT_LIST_DIR}/PreviewSurface.cpp
)
