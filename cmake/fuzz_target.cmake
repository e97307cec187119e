# Bytes that nobody thought of. With Clang and -fsanitize=fuzzer-no-link (the preset fuzz) each target is a fuzzer, with
# any other compiler it runs over the inputs that are kept in corpus/. Built when asked for: plainly they show little.

# add_fuzz_target(NAME LIBRARY [SOURCE...]): fuzz_NAME from NAME.cpp. What it does not define itself comes from the library.
function(add_fuzz_target name library)
    add_executable(fuzz_${name} EXCLUDE_FROM_ALL ${name}.cpp ${ARGN})
    target_include_directories(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(fuzz_${name} PRIVATE ${library} warnings)
    # Runs by the million: elsewhere a test program's own code is not waited for.
    target_compile_options(fuzz_${name} PRIVATE -O2)
    if(CMAKE_CXX_FLAGS MATCHES "fuzzer-no-link")
        target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    else()
        target_sources(fuzz_${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/worker/fuzz/replay.cpp)
    endif()
endfunction()
