include("${CMAKE_CURRENT_LIST_DIR}/pixkit-targets.cmake")
