target_sources(doodle PRIVATE
    doodle/canvas/DoodleWidgetCanvas.cpp
    doodle/canvas/DoodleWidgetCanvas_p.h
    doodle/canvas/ZQDoodleDrawView.cpp
    doodle/canvas/ZQDoodleView.cpp)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/canvas/ZQDoodleDrawView.h
    doodle/canvas/ZQDoodleView.h)
