# Adds every direct sub-folder of the current folder that has a CMakeLists.txt,
# so that each subsystem keeps its own test and benchmark lists.
function(doodle_add_subfolders)
    file(GLOB _entries LIST_DIRECTORIES true ${CMAKE_CURRENT_SOURCE_DIR}/*)
    list(SORT _entries)
    foreach(_entry IN LISTS _entries)
        if(IS_DIRECTORY ${_entry} AND EXISTS ${_entry}/CMakeLists.txt)
            add_subdirectory(${_entry})
        endif()
    endforeach()
endfunction()
