target_sources(doodle_core PRIVATE
    doodle/support/DoodleBundle.cpp
    doodle/support/DoodleBundle_p.h
    doodle/support/DoodleLog.cpp
    doodle/support/DoodleLog_p.h
    doodle/support/DoodleScreen.cpp
    doodle/support/DoodleTranslations.cpp
    doodle/support/DoodleWatermark.cpp
    doodle/support/DoodleWatermark_p.h)
target_sources(doodle_core PUBLIC FILE_SET HEADERS FILES
    doodle/support/DoodleScreen.h
    doodle/support/DoodleTranslations.h
    doodle/support/DoodleWeak.h)
