# Installs the library into an empty folder, builds the project beside this file against it as a user would, with
# find_package and nothing else, and runs its two programs: one uses the DLL, one the static form.
#
#   PROJECT_BUILD, CONFIG, TOOLCHAIN, GENERATOR, EMULATOR, WORK: given by tests/CMakeLists.txt

function(run what)
    message(STATUS "${what}")
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${what} failed: ${result}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
run("Install"
    "${CMAKE_COMMAND}" --install "${PROJECT_BUILD}" --config "${CONFIG}" --prefix "${WORK}/install")
run("Configure"
    "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}" -B "${WORK}/build" -G "${GENERATOR}"
    "-DCMAKE_TOOLCHAIN_FILE=${WORK}/install/lib/cmake/vorelCore/mingw-ucrt.cmake"
    "-DCMAKE_BUILD_TYPE=${CONFIG}"
    "-DCMAKE_PREFIX_PATH=${WORK}/install")
run("Build" "${CMAKE_COMMAND}" --build "${WORK}/build")
foreach(program IN ITEMS consumer_dll consumer_static)
    run("Run ${program}" ${EMULATOR} "${WORK}/build/${program}.exe" "${WORK}/build/${program}.log")
endforeach()
