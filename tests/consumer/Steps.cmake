# What the runs of a user's project have in common. All of them take place in a folder with a blank and letters beyond
# ASCII in its name, where Wine needs a UTF-8 locale to find its way.
#
#   GENERATOR, CONFIG, EMULATOR, WORK: given by tests/CMakeLists.txt

set(PLACE "${WORK}/für alle")

function(run what)
    message(STATUS "${what}")
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${what} failed: ${result}")
    endif()
endfunction()

# A program gets the path of the log that it is to write; its exit code says whether all was well.
function(run_program program)
    run("Run ${program}" "${CMAKE_COMMAND}" -E env LC_ALL=C.UTF-8 ${EMULATOR} "${program}" "${program}.log")
endfunction()

# Configures and builds a project in PLACE/build with the toolchain file given, and runs programs of it.
function(build_and_run source toolchain programs)
    run("Configure"
        "${CMAKE_COMMAND}" -S "${source}" -B "${PLACE}/build" -G "${GENERATOR}"
        "-DCMAKE_TOOLCHAIN_FILE=${toolchain}"
        ${ARGN})
    run("Build" "${CMAKE_COMMAND}" --build "${PLACE}/build" --target ${programs})
    foreach(program IN LISTS programs)
        run_program("${PLACE}/build/${program}.exe")
    endforeach()
endfunction()
