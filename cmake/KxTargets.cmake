# One function for each kind of target.

set(KX_CONTRACT_DIR ${CMAKE_SOURCE_DIR}/plugin/frame/contract)

# A part of the plug-in: its sources see Qt, Boost, Python, TBB, the other plug-in folders and the contract.
function(kx_add_plugin_part name)
    add_library(${name} STATIC ${ARGN})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/plugin)
    target_link_libraries(${name} PUBLIC kxPlatform)
endfunction()

# A test: <name>.cpp and the libraries it needs, run without a display.
function(kx_add_test name)
    add_executable(${name} ${name}.cpp)
    target_link_libraries(${name} PRIVATE kxTestSupport Qt5::Test ${ARGN})
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
