# header_only(TARGET FOLDER HEADER): a library that is nothing but the headers of one folder. They are reached by
# a link in the build tree: the folder that they lie in has the machine's own headers too, which a build for another
# system must not see. TARGET is not made when they are not installed.
function(header_only target folder header)
    find_path(${target}_headers "${folder}/${header}" PATHS /usr/include /usr/local/include /opt/homebrew/include
        NO_CMAKE_FIND_ROOT_PATH)
    mark_as_advanced(${target}_headers)
    if(NOT ${target}_headers)
        return()
    endif()
    set(links "${PROJECT_BINARY_DIR}/header_only/${target}")
    file(MAKE_DIRECTORY "${links}")
    file(CREATE_LINK "${${target}_headers}/${folder}" "${links}/${folder}" SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE "${links}")
endfunction()
