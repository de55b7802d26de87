# Compiles Misuse.cpp, whose formats are checked, and compares the compiler's warnings with what its lines say; then
# RuntimeFormats.cpp, whose formats are not checked, and lets every warning fail.
#
#   COMPILER, FLAGS, INCLUDE: given by tests/CMakeLists.txt

set(source "${CMAKE_CURRENT_LIST_DIR}/Misuse.cpp")
separate_arguments(flags NATIVE_COMMAND "${FLAGS}")
execute_process(
    COMMAND "${COMPILER}" ${flags} -DVOREL_CHECK_FORMATS -std=c++20 -fsyntax-only -Wall -Wextra -Wformat-security
        "-I${INCLUDE}" "${source}"
    RESULT_VARIABLE result ERROR_VARIABLE warnings)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "it does not compile:\n${warnings}")
endif()

file(STRINGS "${source}" lines)
set(number 0)
set(expected 0)
foreach(line IN LISTS lines)
    math(EXPR number "${number} + 1")
    if(line MATCHES "// warns: (.+)$")
        math(EXPR expected "${expected} + 1")
        if(NOT warnings MATCHES "Misuse\\.cpp:${number}:[^\n]*\\[${CMAKE_MATCH_1}[^\n]*\\]")
            message(SEND_ERROR "line ${number}: no ${CMAKE_MATCH_1}")
        endif()
    elseif(warnings MATCHES "Misuse\\.cpp:${number}:[^\n]*warning")
        message(SEND_ERROR "line ${number}: a warning that is not expected")
    endif()
endforeach()
if(expected EQUAL 0)
    message(SEND_ERROR "no line expects a warning")
endif()
message(STATUS "${expected} lines warned of, as they say")

execute_process(
    COMMAND "${COMPILER}" ${flags} -std=c++20 -fsyntax-only -Wall -Wextra -Wformat=2 -Werror "-I${INCLUDE}"
        "${CMAKE_CURRENT_LIST_DIR}/RuntimeFormats.cpp"
    RESULT_VARIABLE result ERROR_VARIABLE warnings)
if(NOT result EQUAL 0)
    message(SEND_ERROR "formats of the runtime:\n${warnings}")
endif()
