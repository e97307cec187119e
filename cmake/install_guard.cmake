# Before anything is installed: what lies where the worker or the simulated SDK will lie must be an older one of them.
# Over a host's own program, or over the headers and the library of the maker's SDK, nothing is installed.
set(guards [[
    # only_over(FILE WORDS): FILE, when there is one, has these words in it.
    function(only_over file words)
        set(file "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${file}")
        set(found "")
        if(EXISTS "${file}" AND NOT IS_DIRECTORY "${file}")
            file(STRINGS "${file}" found REGEX "${words}" LIMIT_COUNT 1)
        endif()
        if(found STREQUAL "" AND (EXISTS "${file}" OR IS_SYMLINK "${file}"))
            message(FATAL_ERROR "${file} is there already and was not installed from here: "
                "move it away, or name another folder with --prefix")
        endif()
    endfunction()
]])
install(CODE "${guards}
    only_over(Contents/MacOS/sony-worker \"CPP_WORKER.START\")" COMPONENT worker)
install(CODE "${guards}
    foreach(page sony-worker tether)
        only_over(share/man/man1/\${page}.1 \"Written by tools/manual\")
    endforeach()" COMPONENT manual)
if(NOT SONY_SDK_ROOT)
    install(CODE "${guards}
    foreach(header CameraRemote_SDK camera_object device_callback device_property types)
        only_over(include/CRSDK/\${header}.h \"simulated camera\")
    endforeach()
    only_over(lib/libCr_Core${CMAKE_SHARED_LIBRARY_SUFFIX} CAMERA_SIM_)
    only_over(lib/libcamera_sim_pictures${CMAKE_SHARED_LIBRARY_SUFFIX} camera_sim_draw_)
    only_over(lib/CrAdapter/libCr_PTP_USB.dylib \"simulated SDK\")
    only_over(bin/camera-sim CAMERA_SIM_)
    only_over(share/man/man1/camera-sim.1 \"Written by tools/manual\")
    only_over(simulator.md CAMERA_SIM_)" COMPONENT simulator EXCLUDE_FROM_ALL)
endif()
