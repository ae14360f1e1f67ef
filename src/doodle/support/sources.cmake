target_sources(doodle PRIVATE
    doodle/support/DoodleBundle.cpp
    doodle/support/DoodleBundle_p.h
    doodle/support/DoodleLog.cpp
    doodle/support/DoodleLog_p.h
    doodle/support/DoodleScreen.cpp
    doodle/support/DoodleTranslations.cpp)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/support/DoodleScreen.h
    doodle/support/DoodleTranslations.h
    doodle/support/DoodleWeak.h)
