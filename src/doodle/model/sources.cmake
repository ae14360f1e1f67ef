target_sources(doodle_core PRIVATE
    doodle/model/DoodleAction.cpp
    doodle/model/DoodleColor.cpp
    doodle/model/DoodleJsonText.cpp
    doodle/model/DoodleJsonText_p.h
    doodle/model/DoodleKeys.cpp
    doodle/model/DoodlePathCache.cpp
    doodle/model/DoodlePoint.cpp
    doodle/model/DoodleProgress.cpp
    doodle/model/DoodleProgress_p.h
    doodle/model/DoodleTranslate.cpp)
target_sources(doodle_core PUBLIC FILE_SET HEADERS FILES
    doodle/model/DoodleAction.h
    doodle/model/DoodleColor.h
    doodle/model/DoodleKeys.h
    doodle/model/DoodlePathCache.h
    doodle/model/DoodlePoint.h
    doodle/model/DoodleTranslate.h)

