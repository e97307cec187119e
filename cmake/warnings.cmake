# The warnings that every target of this tree is built with. The SDK's callback interface has no virtual destructor by
# design, so -Wnon-virtual-dtor stays off.
add_library(warnings INTERFACE)
target_compile_options(warnings INTERFACE
    -Wall -Wextra -Wshadow -Wconversion
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety>
    $<$<BOOL:${CAMERA_WORKER_WERROR}>:-Werror>)

# A test that cannot run in this build: ctest lists it as skipped, with the reason in its name.
function(not_tested what reason)
    add_test(NAME "${what} (${reason})" COMMAND "${CMAKE_COMMAND}" -E echo "Skipped: ${reason}")
    set_tests_properties("${what} (${reason})" PROPERTIES SKIP_REGULAR_EXPRESSION "^Skipped: ")
endfunction()

# For libraries that only tests, host tools or pictures need: stops the configuration when the developer asked for
# everything, otherwise says what is left out, to ctest too.
function(left_out what package)
    if(CAMERA_WORKER_COMPLETE)
        message(FATAL_ERROR "${what} needs ${package}")
    endif()
    message(STATUS "${what} left out: ${package} is not installed")
    if(BUILD_TESTING)
        not_tested("${what}" "${package} is not installed")
    endif()
endfunction()

# For a main file that reads its arguments with CLI11: optimising or sanitizing those templates takes the compiler a
# minute, and they run once. What is released is optimised all the same: it would take a millisecond longer to start.
function(compile_plainly file)
    set_source_files_properties(${file} PROPERTIES
        COMPILE_OPTIONS "$<$<NOT:$<CONFIG:Release>>:-O0;-fno-sanitize=all>")
endfunction()
