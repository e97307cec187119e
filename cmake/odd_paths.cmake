# Ninja reads the list of headers that the compiler writes for each file only up to one of these characters. In a folder
# whose name has one, it would look for files that are not there, and build everything anew each time. There the lists
# name the files of this tree by their way from the build tree.
set(cut_short "['&*?<^`\t]")
file(RELATIVE_PATH way_to_sources "${CMAKE_BINARY_DIR}" "${CMAKE_SOURCE_DIR}")
string(REGEX REPLACE "/$" "" way_to_sources "${way_to_sources}")
if(CMAKE_SOURCE_DIR MATCHES "${cut_short}" AND NOT way_to_sources MATCHES "${cut_short}")
    # In a file of the build tree: CMake would take a part of the command for a placeholder of its own, such as <FLAGS>.
    file(WRITE "${CMAKE_BINARY_DIR}/folder_of_sources" "${CMAKE_SOURCE_DIR}/")
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${way_to_sources}/cmake/relative_dependencies" folder_of_sources "${way_to_sources}/"
        ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()
