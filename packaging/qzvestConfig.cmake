include(${CMAKE_CURRENT_LIST_DIR}/qzvestTargets.cmake)
