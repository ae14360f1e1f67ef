target_sources(doodle PRIVATE
    doodle/support/DoodleBundle.cpp
    doodle/support/DoodleLog.cpp
    doodle/support/DoodleScreen.cpp)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/support/DoodleBundle.h
    doodle/support/DoodleLog.h
    doodle/support/DoodleScreen.h
    doodle/support/DoodleWeak.h)
