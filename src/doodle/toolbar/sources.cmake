target_sources(doodle PRIVATE
    doodle/toolbar/BrushColorButton.cpp
    doodle/toolbar/BrushColorView.cpp
    doodle/toolbar/BrushLineView.cpp
    doodle/toolbar/BrushWidthSlider.cpp
    doodle/toolbar/BrushWidthSlider_p.h
    doodle/toolbar/DoodlePointer.cpp
    doodle/toolbar/DoodlePointer_p.h
    doodle/toolbar/ZQColourToolbar.cpp
    doodle/toolbar/ZQColourToolbar_p.h
    doodle/toolbar/ZQDoodleButton.cpp
    doodle/toolbar/ZQDoodleButton_p.h
    doodle/toolbar/ZQDoodleButtonView.cpp
    doodle/toolbar/ZQDoodleButtonView_p.h
    doodle/toolbar/ZQDoodleRoundedView.cpp
    doodle/toolbar/ZQDoodleToolbar.cpp
    doodle/toolbar/ZQDoodleToolbar_p.h)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/toolbar/BrushColorButton.h
    doodle/toolbar/BrushColorView.h
    doodle/toolbar/BrushLineView.h
    doodle/toolbar/ZQColourToolbar.h
    doodle/toolbar/ZQDoodleButton.h
    doodle/toolbar/ZQDoodleButtonView.h
    doodle/toolbar/ZQDoodleRoundedView.h
    doodle/toolbar/ZQDoodleToolbar.h)
