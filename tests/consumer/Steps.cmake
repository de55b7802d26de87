# Common steps of the tests that build a user's project. The steps use a folder whose name contains a space and a
# non-ASCII letter. Wine needs a UTF-8 locale for such paths.
#
#   GENERATOR, CONFIG, EMULATOR, WORK, TOOLCHAIN (the name of the toolchain file): set by the command that runs the test

set(FOLDER "${WORK}/für alle")

# run(<what> <command>...): prints the output of the command only if the command fails, because the list of installed
# files alone is so long that it hides a later error.
function(run what)
    message(STATUS "${what}")
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(NOTICE "${output}")
        message(FATAL_ERROR "${what} failed: ${result}")
    endif()
endfunction()

# Puts the package into FOLDER/vorelCore: copies the folder PACKAGE, or if PACKAGE is not set, installs the build
# PROJECT_BUILD.
function(install_or_copy_package)
    if(PACKAGE)
        file(COPY "${PACKAGE}/" DESTINATION "${FOLDER}/vorelCore")
    else()
        run("Install" "${CMAKE_COMMAND}" --install "${PROJECT_BUILD}" --config "${CONFIG}" --prefix "${FOLDER}/vorelCore")
    endif()
endfunction()

# Runs a program with the path of its log as the argument. Its exit code must be 0.
function(run_program program)
    run("Run ${program}" "${CMAKE_COMMAND}" -E env LC_ALL=C.UTF-8 ${EMULATOR} "${program}" "${program}.log")
endfunction()

# Configures a project in FOLDER/build with a toolchain file, and builds and runs the programs in the list `programs`.
# Further arguments are options of the configuration.
function(build_and_run source toolchain programs)
    run("Configure"
        "${CMAKE_COMMAND}" -S "${source}" -B "${FOLDER}/build" -G "${GENERATOR}"
        "-DCMAKE_TOOLCHAIN_FILE=${toolchain}"
        ${ARGN})
    run("Build" "${CMAKE_COMMAND}" --build "${FOLDER}/build" --target ${programs})
    foreach(program IN LISTS programs)
        run_program("${FOLDER}/build/${program}.exe")
    endforeach()
endfunction()
