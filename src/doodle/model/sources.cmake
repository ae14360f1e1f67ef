target_sources(doodle PRIVATE
    doodle/model/DoodleAction.cpp
    doodle/model/DoodleKeys.cpp
    doodle/model/DoodlePathCache.cpp
    doodle/model/DoodleTranslate.cpp)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/model/DoodleAction.h
    doodle/model/DoodleKeys.h
    doodle/model/DoodlePathCache.h
    doodle/model/DoodleTranslate.h)

# TEMPORARY, see the file's header: remove when the canvas implementation is merged.
if(NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/doodle/canvas/ZQDoodleView.cpp
   AND NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/doodle/canvas/ZQDoodleDrawView.cpp)
    target_sources(doodle PRIVATE placeholder/CanvasPlaceholder.cpp)
endif()
