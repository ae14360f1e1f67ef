target_sources(doodle PRIVATE
    doodle/controller/DoodleLayout.cpp
    doodle/controller/DoodleLayoutCoordinates.cpp
    doodle/controller/DoodleLayoutExport.cpp
    doodle/controller/DoodleLayoutInput.cpp
    doodle/controller/DoodleLayoutLive.cpp
    doodle/controller/DoodleLayoutReplay.cpp
    doodle/controller/DoodleLayoutSnapshot.cpp
    doodle/controller/DoodleLayoutState.cpp
    doodle/controller/DoodleLayoutToolbar.cpp
    doodle/controller/DoodleLayoutView.cpp
    doodle/controller/DoodleLayoutView.h
    doodle/controller/DoodleLayout_p.h)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/controller/DoodleLayout.h
    doodle/controller/DoodleLayoutDelegate.h)
