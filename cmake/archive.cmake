# Run by cpack: makes an archive of each component that it has laid out, with the licence. Whoever builds where and when,
# the bytes are the same: sorted, owned by nobody, and as old as SOURCE_DATE_EPOCH says.
if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
    message(FATAL_ERROR "SOURCE_DATE_EPOCH says how old the files are; tools/package sets it")
endif()
if("${CPACK_TEMPORARY_DIRECTORY}" STREQUAL "")
    message(FATAL_ERROR "Only cpack runs this: it names the folder for what comes in between")
endif()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(name "${CPACK_PACKAGE_NAME}-${component}-${CPACK_PACKAGE_VERSION}-${CPACK_SYSTEM_NAME}")
    # The merged tree of two builds takes the place of what one of them has installed.
    set(tree "${CPACK_TEMPORARY_DIRECTORY}/${component}")
    if(CPACK_MERGED)
        set(tree "${CPACK_MERGED}/${component}")
    endif()
    set(staged "${CPACK_TEMPORARY_DIRECTORY}/archive")
    file(REMOVE_RECURSE "${staged}")
    file(COPY "${tree}/" "${CPACK_RESOURCE_FILE_LICENSE}" DESTINATION "${staged}/${name}")
    # Not installed with the worker: a bundle that is signed has no room beside its Contents.
    if(CPACK_MANUAL_${component})
        file(COPY "${CPACK_MANUAL_${component}}" DESTINATION "${staged}/${name}/share/man/man1")
    endif()
    execute_process(COMMAND_ERROR_IS_FATAL ANY
        COMMAND tar --create --file "${CPACK_TEMPORARY_DIRECTORY}/${name}.tar.gz" "--use-compress-program=gzip -9n"
            --format=ustar --sort=name --owner=0 --group=0 --numeric-owner --mode=u=rwX,go=rX
            "--mtime=@$ENV{SOURCE_DATE_EPOCH}" --directory "${staged}" "${name}")
    list(APPEND CPACK_EXTERNAL_BUILT_PACKAGES "${CPACK_TEMPORARY_DIRECTORY}/${name}.tar.gz")
endforeach()
