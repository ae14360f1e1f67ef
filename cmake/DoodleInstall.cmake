# Installs a library of the package with its public headers, under an export
# set of its own that the package's config file includes. It finds the
# package's other libraries beside it, from any prefix.
function(doodle_install_library target export_set)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${target} EXPORT ${export_set}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT ${export_set}
        NAMESPACE Doodle::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Doodle)
endfunction()
