# Where things lie below a prefix, and what is installed there: by components, of which packages are made.
# Nothing of it names the prefix: programs and libraries find each other by the ways between their folders.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KX_PLUGINS ${CMAKE_INSTALL_LIBDIR}/kxhost)
set(KX_PROGRAMS ${CMAKE_INSTALL_LIBEXECDIR}/kxhost)
set(KX_DATA ${CMAKE_INSTALL_DATADIR}/kxhost)
set(KX_CMAKE ${CMAKE_INSTALL_LIBDIR}/cmake/kxAnimationWidgets)

# What is made for packages alone doesn't hold up an install: it takes what was built.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

# kx_way(RESULT FROM TO): how one folder below the prefix is reached from another.
function(kx_way result from to)
    file(RELATIVE_PATH way /prefix/${from} /prefix/${to})
    string(REGEX REPLACE "/$" "" way ${way})
    set(${result} ${way} PARENT_SCOPE)
endfunction()

# kx_source_knows_way(SOURCE NAME FROM TO): such a way as a macro of one source.
function(kx_source_knows_way source name from to)
    kx_way(way ${from} ${to})
    set_property(SOURCE ${source} APPEND PROPERTY COMPILE_DEFINITIONS ${name}="${way}")
endfunction()

# kx_install(TARGET FOLDER COMPONENT): a program or a plug-in, which finds the platform's library by itself.
function(kx_install target folder component)
    kx_way(way ${folder} ${CMAKE_INSTALL_LIBDIR})
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${way}")
    install(TARGETS ${target} RUNTIME DESTINATION ${folder} COMPONENT ${component}
        LIBRARY DESTINATION ${folder} COMPONENT ${component})
endfunction()

# kx_install_platform(): the library, and what another plug-in is built with.
function(kx_install_platform)
    set_target_properties(kxPlatform PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} INSTALL_RPATH "")
    install(TARGETS kxPlatform kxContract EXPORT kxAnimationWidgets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT dev
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kxAnimationWidgets)
    install(DIRECTORY ${KX_CONTRACT_DIR}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kxAnimationWidgets COMPONENT dev
        FILES_MATCHING PATTERN *.h)
    install(EXPORT kxAnimationWidgets FILE kxAnimationWidgetsTargets.cmake NAMESPACE kxAnimationWidgets::
        DESTINATION ${KX_CMAKE} COMPONENT dev)
    configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/kxAnimationWidgetsConfig.cmake.in
        ${CMAKE_BINARY_DIR}/kxAnimationWidgetsConfig.cmake INSTALL_DESTINATION ${KX_CMAKE})
    write_basic_package_version_file(${CMAKE_BINARY_DIR}/kxAnimationWidgetsConfigVersion.cmake
        COMPATIBILITY SameMinorVersion)
    install(FILES ${CMAKE_BINARY_DIR}/kxAnimationWidgetsConfig.cmake
        ${CMAKE_BINARY_DIR}/kxAnimationWidgetsConfigVersion.cmake DESTINATION ${KX_CMAKE} COMPONENT dev)
endfunction()

install(FILES docs/user-guide.md docs/scripting.md docs/security.md docs/dependencies.md DESTINATION ${KX_DATA}/docs COMPONENT program)
install(DIRECTORY docs/pictures DESTINATION ${KX_DATA}/docs COMPONENT program)
install(DIRECTORY examples/ DESTINATION ${KX_DATA}/examples COMPONENT program
    FILES_MATCHING PATTERN *.py PATTERN *.kxs PATTERN maker EXCLUDE PATTERN plugin EXCLUDE PATTERN __pycache__ EXCLUDE)
install(DIRECTORY examples/plugin DESTINATION ${KX_DATA}/examples COMPONENT dev)
