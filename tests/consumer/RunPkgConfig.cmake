# Builds main.cpp with one command whose options come from pkg-config. The package is moved after it is installed.
#
#   PROJECT_BUILD: the build to install; COMPILER, OPTIONS: the compiler and its options for the C runtime

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

# The options for a package as a list. pkg-config escapes spaces in paths.
function(query_pkg_config name result)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env
            "PKG_CONFIG_LIBDIR=${FOLDER}/vorelCore/lib/pkgconfig" PKG_CONFIG_PATH= pkg-config --cflags --libs ${name}
        OUTPUT_VARIABLE options
        OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(options UNIX_COMMAND "${options}")
    set(${result} "${options}" PARENT_SCOPE)
endfunction()

separate_arguments(OPTIONS UNIX_COMMAND "${OPTIONS}")
file(REMOVE_RECURSE "${WORK}")
run("Install" "${CMAKE_COMMAND}" --install "${PROJECT_BUILD}" --config "${CONFIG}" --prefix "${WORK}/first")
file(MAKE_DIRECTORY "${FOLDER}/build")
file(RENAME "${WORK}/first" "${FOLDER}/vorelCore")
file(GLOB dlls "${FOLDER}/vorelCore/bin/*.dll")
file(COPY ${dlls} DESTINATION "${FOLDER}/build")

foreach(name IN ITEMS vorelCore vorelCoreStatic)
    query_pkg_config(${name} options)
    set(program "${FOLDER}/build/${name}.exe")
    run("Build with ${options}"
        "${COMPILER}" -std=c++20 ${OPTIONS} "${CMAKE_CURRENT_LIST_DIR}/main.cpp" -o "${program}" ${options})
    run_program("${program}")
endforeach()
