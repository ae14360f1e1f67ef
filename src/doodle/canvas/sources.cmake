target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/canvas/ZQDoodleDrawView.h
    doodle/canvas/ZQDoodleView.h)
