# PAGE_FILES: a source with every file of the page. npm builds the page in the build tree, from copies: several build trees
# of one source tree do not get in each other's way, and nothing is written into the source.
set(PAGE_FILES "${CMAKE_CURRENT_BINARY_DIR}/page_files.cpp")
set(page_source "${PROJECT_SOURCE_DIR}/console")
set(page_build "${CMAKE_CURRENT_BINARY_DIR}/page")
set(embed "${PROJECT_SOURCE_DIR}/cmake/embed.cmake")
find_program(NPM npm)
mark_as_advanced(NPM)

if(NPM AND EXISTS "${page_source}/package.json")
    file(GLOB_RECURSE page_sources CONFIGURE_DEPENDS
        "${page_source}/*" "${PROJECT_SOURCE_DIR}/clients/typescript/*")
    list(FILTER page_sources EXCLUDE REGEX "/(node_modules|dist)/")
    add_custom_command(OUTPUT "${PAGE_FILES}" "${page_build}/done"
        COMMAND "${CMAKE_COMMAND}" -DNPM=${NPM} -DSOURCE=${PROJECT_SOURCE_DIR} -DBUILD=${page_build}
            -DCOMPLETE=${CAMERA_WORKER_COMPLETE} -DDONE=${page_build}/done
            -P "${CMAKE_CURRENT_SOURCE_DIR}/build_page.cmake"
        COMMAND "${CMAKE_COMMAND}" -DFOLDER=${page_build}/console/dist -DOUTPUT=${PAGE_FILES} -P "${embed}"
        DEPENDS ${page_sources} build_page.cmake "${embed}"
        COMMENT "Building the page"
        VERBATIM)
else()
    if(NOT NPM)
        left_out("The page of tether console" "npm")
    endif()
    add_custom_command(OUTPUT "${PAGE_FILES}"
        COMMAND "${CMAKE_COMMAND}" -DOUTPUT=${PAGE_FILES} -P "${embed}"
        DEPENDS "${embed}"
        VERBATIM)
endif()
