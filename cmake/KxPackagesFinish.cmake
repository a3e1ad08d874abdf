# What only packages want, done in the folder that they are made of: below /usr the loader finds libraries by itself.
file(GLOB_RECURSE files ${CPACK_TEMPORARY_DIRECTORY}/*/kxhost ${CPACK_TEMPORARY_DIRECTORY}/*/kxreader
    ${CPACK_TEMPORARY_DIRECTORY}/*.so)
foreach(file ${files})
    if(NOT IS_DIRECTORY ${file} AND NOT IS_SYMLINK ${file})
        file(RPATH_REMOVE FILE ${file})
    endif()
endforeach()
