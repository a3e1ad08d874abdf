# Debian packages of what is installed, a component each, and what a desktop wants to know of the program.

set(KX_RELEASE_DATE 2026-11-24)
set(KX_MAINTAINER "kxAnimationWidgets maintainers <maintainers@kxanimationwidgets.example>" CACHE STRING
    "Who answers for the packages, with a mail address")
set(KX_METADATA_LICENSE "" CACHE STRING "The licence of the AppStream data, which its owners have to choose")
set(KX_DEBIAN_VERSION ${PROJECT_VERSION}-1)
set(packaging ${CMAKE_BINARY_DIR}/packaging)

execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C date -R -u -d ${KX_RELEASE_DATE}
    OUTPUT_VARIABLE KX_RELEASE_TIME OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(KX_METADATA_LICENSE)
    set(KX_METADATA_LICENSE_TAG "  <metadata_license>${KX_METADATA_LICENSE}</metadata_license>")
endif()
configure_file(packaging/kxhost.metainfo.xml.in ${packaging}/kxhost.metainfo.xml @ONLY)
configure_file(packaging/changelog.in ${packaging}/changelog.Debian @ONLY)
execute_process(COMMAND gzip -9nkf ${packaging}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

# The manual page says what --help says.
find_program(KX_HELP2MAN help2man)
if(KX_HELP2MAN AND NOT KX_SANITIZE)
    set(manual ${packaging}/kxhost.1)
    add_custom_command(OUTPUT ${manual}.gz
        COMMAND ${KX_HELP2MAN} --no-info "--name=show, animate and render 3D scenes" --output=${manual} $<TARGET_FILE:kxhost>
        COMMAND gzip -9nf ${manual}
        DEPENDS kxhost)
    add_custom_target(manual ALL DEPENDS ${manual}.gz)
    install(FILES ${manual}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
endif()

install(FILES packaging/kxhost.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT program)
install(FILES packaging/kxhost.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT program)
install(FILES ${packaging}/kxhost.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT program)
install(FILES platform/widgets/icons/AppIcon.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
    RENAME kxhost.svg COMPONENT program)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kxanimationwidgets)
set(CPACK_PACKAGE_CONTACT ${KX_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program library dev)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/KxPackagesFinish.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# All that starts with the same version: nothing promises more of the library than that.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/bin)

# kx_package(COMPONENT NAME SECTION TEXT)
macro(kx_package component name section text)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION ${text})
    install(FILES packaging/copyright ${packaging}/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endmacro()

kx_package(program kxhost graphics "Shows, animates and renders 3D scenes
Open a model that somebody else made, animate it, play it, save it, render it,
hand it on. It has a timeline, a curve editor, a clip maker and a wizard for
animations, scripts in Python, and works without a window too.
.
This package holds the program, its guide and examples.")
kx_package(library libkxanimationwidgets libs "Animation plug-in for a 3D application
A timeline bar, a curve editor, trees of animations, a clip maker, an animation
wizard, preferences and a Python module.
.
This package holds the plug-in, the library it stands on, and the program that
reads models of other programs apart from them.")
kx_package(dev libkxanimationwidgets-dev libdevel "Animation plug-in for a 3D application (headers)
A timeline bar, a curve editor, trees of animations, a clip maker, an animation
wizard, preferences and a Python module.
.
This package holds what another plug-in is built with: headers, the files that
CMake finds it by, and an example.")
install(FILES packaging/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    RENAME libkxanimationwidgets COMPONENT library)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "libkxanimationwidgets (= ${KX_DEBIAN_VERSION}), libqt5svg5")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS ffmpeg)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS libqt5svg5)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "libkxanimationwidgets (= ${KX_DEBIAN_VERSION}), qtbase5-dev, libtbb-dev, libboost-dev")
include(CPack)
