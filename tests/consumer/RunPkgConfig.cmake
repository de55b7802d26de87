# Builds main.cpp with the DLL, and again with the static library, and runs both programs. Each program is built with
# one command, whose options come from pkg-config. The package is moved after it is installed, because its .pc files
# must work in every folder.
#
#   PROJECT_BUILD: the build to install; COMPILER, OPTIONS: the compiler and its options for the C runtime

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

# Stores the options for a package as a list in `result`. pkg-config escapes spaces in paths.
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

# The options from pkg-config do not choose the C runtime. So the headers must refuse a compiler whose default is
# another C runtime, and both .pc files must state the requirements.
set(options ${OPTIONS})
list(FILTER options INCLUDE REGEX "^--target=")
query_pkg_config(vorelCore flags)
execute_process(
    COMMAND "${COMPILER}" -std=c++20 ${options} "${CMAKE_CURRENT_LIST_DIR}/main.cpp" -fsyntax-only ${flags}
        -D__MSVCRT_VERSION__=0x700
    RESULT_VARIABLE result ERROR_VARIABLE messages)
if(result EQUAL 0 OR NOT messages MATCHES "vorelCore needs the universal C runtime")
    message(SEND_ERROR "the headers must refuse a compiler with another C runtime:\n${messages}")
endif()
foreach(name IN ITEMS vorelCore vorelCoreStatic)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env "PKG_CONFIG_LIBDIR=${FOLDER}/vorelCore/lib/pkgconfig" PKG_CONFIG_PATH=
            pkg-config --variable=needs ${name}
        OUTPUT_VARIABLE needs COMMAND_ERROR_IS_FATAL ANY)
    if(NOT needs MATCHES "C[+][+]20.*x86_64-w64-mingw32.*UCRT")
        message(SEND_ERROR "`needs` in ${name}.pc must name the language, the target and the runtime: ${needs}")
    endif()
endforeach()
