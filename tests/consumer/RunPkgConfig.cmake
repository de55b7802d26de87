# Builds main.cpp with one command line, whose options come from pkg-config, against a package that has been moved after
# it was installed.
#
#   PROJECT_BUILD: the build to install; COMPILER, SPECS: the compiler and the specs file of its C runtime

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

# The options for a package, as the shell reads them: blanks in a path come escaped.
function(ask_pkg_config name result)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env
            "PKG_CONFIG_LIBDIR=${PLACE}/vorelCore/lib/pkgconfig" PKG_CONFIG_PATH= pkg-config --cflags --libs ${name}
        OUTPUT_VARIABLE options
        OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(options UNIX_COMMAND "${options}")
    set(${result} "${options}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")
run("Install" "${CMAKE_COMMAND}" --install "${PROJECT_BUILD}" --config "${CONFIG}" --prefix "${WORK}/first")
file(MAKE_DIRECTORY "${PLACE}/build")
file(RENAME "${WORK}/first" "${PLACE}/vorelCore")
file(GLOB dlls "${PLACE}/vorelCore/bin/*.dll")
file(COPY ${dlls} DESTINATION "${PLACE}/build")

foreach(name IN ITEMS vorelCore vorelCoreStatic)
    ask_pkg_config(${name} options)
    set(program "${PLACE}/build/${name}.exe")
    run("Build with ${options}"
        "${COMPILER}" -std=c++20 "-specs=${SPECS}" "${CMAKE_CURRENT_LIST_DIR}/main.cpp" -o "${program}" ${options})
    run_program("${program}")
endforeach()
