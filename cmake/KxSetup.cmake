# Language, warnings, packages and output folders of the whole house.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

# The plug-in is looked for beside the executable, and all libraries are found there.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# What was compiled in another folder serves here too: paths below the sources count from there.
find_program(KX_CCACHE ccache)
if(KX_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                    ${KX_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()
# Most of a build's steps link a test.
find_program(KX_MOLD mold)
if(KX_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

# The interpreter that Boost.Python was built for, whatever is first on PATH.
set(Python3_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "Interpreter Boost.Python was built for")
find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter Development.Embed)
find_package(Boost 1.74 REQUIRED COMPONENTS python${Python3_VERSION_MAJOR}${Python3_VERSION_MINOR})
set(KX_BOOST_PYTHON Boost::python${Python3_VERSION_MAJOR}${Python3_VERSION_MINOR})
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets Test LinguistTools)
# It names the build's folder, which objects that serve in every folder can't.
set_property(TARGET Qt5::Test PROPERTY INTERFACE_COMPILE_DEFINITIONS QT_TESTLIB_LIB)
find_package(TBB REQUIRED)
find_package(assimp REQUIRED)
find_package(OpenGL REQUIRED COMPONENTS OpenGL EGL)
find_package(ZLIB REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(OpenEXR 3 REQUIRED)

add_compile_definitions(QT_NO_KEYWORDS QT_NO_CAST_FROM_BYTEARRAY BOOST_BIND_GLOBAL_PLACEHOLDERS
                        BOOST_ALLOW_DEPRECATED_HEADERS QT_DEPRECATED_WARNINGS)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(KX_SANITIZE)
    add_compile_options(-fsanitize=${KX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=${KX_SANITIZE})
    add_compile_definitions(KX_SANITIZED)
endif()
