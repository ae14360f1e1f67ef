# The board's core: what the board is, whatever toolkit shows it. It builds
# as its own object library that sees only Qt Core and Gui, so a widget or
# Quick header included here fails the build; its objects go into Doodle::core.
add_library(doodle_board OBJECT
    doodle/board/DoodleBarLayout.cpp
    doodle/board/DoodleBarLayout_p.h
    doodle/board/DoodleBitmap.cpp
    doodle/board/DoodleBitmap_p.h
    doodle/board/DoodleBoardBudget.cpp
    doodle/board/DoodleBoardCanvas_p.h
    doodle/board/DoodleBoardCommands.cpp
    doodle/board/DoodleBoardCoordinates.cpp
    doodle/board/DoodleBoardCore_p.h
    doodle/board/DoodleBoardGestures.cpp
    doodle/board/DoodleBoardLimits.cpp
    doodle/board/DoodleBoardLive.cpp
    doodle/board/DoodleBoardLive_p.h
    doodle/board/DoodleBoardOrder.cpp
    doodle/board/DoodleBoardRedraw.cpp
    doodle/board/DoodleBoardRedraw_p.h
    doodle/board/DoodleBoardReplay.cpp
    doodle/board/DoodleBoardStateParts.cpp
    doodle/board/DoodleBoardTypes.h
    doodle/board/DoodleDrawInput.cpp
    doodle/board/DoodleDrawInput.h
    doodle/board/DoodleStateText.cpp
    doodle/board/DoodleStateText_p.h
    doodle/board/DoodleSurface.cpp
    doodle/board/DoodleTile.cpp
    doodle/board/DoodleTile_p.h)
target_include_directories(doodle_board PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}
    ${CMAKE_CURRENT_BINARY_DIR})
target_compile_definitions(doodle_board PRIVATE doodle_EXPORTS)
set_target_properties(doodle_board PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
find_package(ZLIB REQUIRED) # a board's state travels deflated
target_link_libraries(doodle_board PRIVATE Qt6::Core Qt6::Gui ZLIB::ZLIB)
target_link_libraries(doodle_core PRIVATE ZLIB::ZLIB)
doodle_use_build_flags(doodle_board)

target_sources(doodle_core PRIVATE $<TARGET_OBJECTS:doodle_board>)
target_sources(doodle_core PUBLIC FILE_SET HEADERS FILES
    doodle/board/DoodleBoardTypes.h
    doodle/board/DoodleSurface.h)
