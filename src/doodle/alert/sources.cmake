target_sources(doodle PRIVATE
    doodle/alert/RoShow.cpp)
target_sources(doodle PUBLIC FILE_SET HEADERS FILES
    doodle/alert/RoShow.h)
