# One function for each kind of target.

set(KX_CONTRACT_DIR ${CMAKE_SOURCE_DIR}/plugin/frame/contract)

# The language of the contract, for all that includes its headers.
add_library(kxContract INTERFACE)
target_include_directories(kxContract INTERFACE $<BUILD_INTERFACE:${KX_CONTRACT_DIR}>)
target_compile_definitions(kxContract INTERFACE QT_NO_KEYWORDS) # TBB declares a function of such a name
target_link_libraries(kxContract INTERFACE Qt5::Widgets TBB::tbb Boost::headers)

# The rooms are made anew by each configuration, so that no link outlives its header.
file(REMOVE_RECURSE ${CMAKE_BINARY_DIR}/rooms)

# kx_room(FOLDER): the folder in the build that holds links to the headers of FOLDER, and to none of the folders below.
function(kx_room folder)
    string(REPLACE "/" "." room ${folder})
    set(root ${CMAKE_BINARY_DIR}/rooms/${room})
    set(root ${root} PARENT_SCOPE)
    if(EXISTS ${root})
        return()
    endif()
    string(REGEX MATCH "/(.*)" place ${folder})
    set(place ${CMAKE_MATCH_1})
    file(MAKE_DIRECTORY ${root}/${place})
    file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.h)
    foreach(header ${headers})
        get_filename_component(name ${header} NAME)
        file(CREATE_LINK ${header} ${root}/${place}/${name} SYMBOLIC)
    endforeach()
endfunction()

# kx_sees(TARGET FOLDER...): the target's sources may include headers of these folders, which are named from the root,
# as <view/header.h> of host/view and <files/gltf/header.h> of platform/files/gltf.
# Nothing is passed on: a target names each folder whose headers it meets, and a wrong include isn't found.
function(kx_sees target)
    foreach(folder ${ARGN})
        kx_room(${folder})
        target_include_directories(${target} PRIVATE ${root})
    endforeach()
endfunction()

function(kx_sees_itself target)
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    kx_sees(${target} ${folder})
endfunction()

# A folder of the platform: its objects go into the library.
function(kx_add_platform_part name)
    add_library(${name} OBJECT ${ARGN})
    target_link_libraries(${name} PRIVATE kxContract)
    target_link_libraries(kxPlatform PRIVATE ${name})
    set_property(GLOBAL APPEND PROPERTY KX_PLATFORM_PARTS ${name})
    kx_sees_itself(${name})
endfunction()

# A folder of the plug-in or the host as a library of its own.
function(kx_add_part name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PUBLIC kxPlatform)
    kx_sees_itself(${name})
endfunction()

# A test: <name>.cpp and the libraries it needs, run without a display.
function(kx_add_test name)
    add_executable(${name} ${name}.cpp)
    target_link_libraries(${name} PRIVATE kxTestSupport Qt5::Test ${ARGN})
    add_dependencies(${name} kxreader)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;KX_SETTINGS_DIR=${CMAKE_BINARY_DIR}/test-settings/${name}")
endfunction()

# Sources of `target` that hold Boost.Python's classes: its holders are asked for their type once more after they have
# died, which the check of the undefined-behaviour sanitizer makes a crash.
function(kx_boost_python_sources target)
    if(KX_SANITIZE)
        list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
        set_property(SOURCE ${ARGN} TARGET_DIRECTORY ${target} APPEND PROPERTY COMPILE_OPTIONS -fno-sanitize=vptr)
    endif()
endfunction()
