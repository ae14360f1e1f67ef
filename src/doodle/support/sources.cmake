target_sources(doodle PRIVATE
    doodle/support/DoodleLog.cpp
    doodle/support/DoodleScreen.cpp)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/support/DoodleLog.h
    doodle/support/DoodleScreen.h
    doodle/support/DoodleWeak.h)
