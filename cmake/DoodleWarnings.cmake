# Warnings and sanitizers shared by every target of the project.
add_library(doodle_build_flags INTERFACE)
target_compile_options(doodle_build_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow
    -Wold-style-cast -Wzero-as-null-pointer-constant -Wnon-virtual-dtor -Wconversion)
if(DOODLE_SANITIZE)
    set(_doodle_san -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(doodle_build_flags INTERFACE ${_doodle_san})
    target_link_options(doodle_build_flags INTERFACE ${_doodle_san})
endif()
if(DOODLE_SANITIZE_THREAD)
    set(_doodle_tsan -fsanitize=thread -fno-omit-frame-pointer)
    target_compile_options(doodle_build_flags INTERFACE ${_doodle_tsan})
    target_link_options(doodle_build_flags INTERFACE ${_doodle_tsan})
endif()

# Links the project's flags into a target without exporting them with it.
function(doodle_use_build_flags target)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:doodle_build_flags>)
endfunction()
