# Configures the project refused/ with compilers for other systems or processors. find_package must refuse each compiler
# with a message that gives the reason.
#
#   PROJECT_BUILD: the build to install; or PACKAGE: the folder of an existing package; CLANG: the folder of clang

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

# refused(<name> <reason> <option>...): find_package must fail for the reason.
function(refused name reason)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/refused" -B "${FOLDER}/${name}" -G "${GENERATOR}"
            "-DCMAKE_PREFIX_PATH=${FOLDER}/vorelCore" "-DREFUSED_CLANG=${CLANG}" ${ARGN}
        RESULT_VARIABLE result ERROR_VARIABLE messages OUTPUT_VARIABLE output)
    string(REGEX REPLACE "[ \n]+" " " messages "${messages}")
    set(expected
        "This package of vorelCore is for 64-bit Windows (x86-64), but ${reason}. Use a compiler for Windows on x86-64")
    string(FIND "${messages}" "${expected}" found)
    if(result EQUAL 0 OR found EQUAL -1)
        message(SEND_ERROR "${name}: expected '${expected}', found:\n${messages}\n${output}")
    else()
        message(STATUS "${name}: refused because ${reason}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
install_or_copy_package()
set(windows "-DCMAKE_TOOLCHAIN_FILE=${CMAKE_CURRENT_LIST_DIR}/refused/windows.cmake")
refused(native "this project is compiled for Linux" "-DCMAKE_CXX_COMPILER=${CLANG}/clang++")
refused(32-bit "the compiler of this project does not make 64-bit programs" ${windows} -DREFUSED_PROCESSOR=i686)
refused(aarch64 "this project is compiled for the processor aarch64" ${windows} -DREFUSED_PROCESSOR=aarch64)
