# Compiles the sources in this folder, and compares the compiler's messages with the comments on the same lines.
#
#   COMPILER, COMPILER_ID, FLAGS, INCLUDE: set by tests/CMakeLists.txt
#   CLANG: the program clang++; LIBCXX: the folder of the headers of libc++, empty if the headers are missing

separate_arguments(flags NATIVE_COMMAND "${FLAGS}")
if(COMPILER_ID STREQUAL "GNU")
    set(access "is X within this context")
else()
    list(APPEND flags -ferror-limit=0)
    set(access "is a X member")
endif()

# compile(<source> <option>...): sets `result` and `messages`.
macro(compile name)
    execute_process(
        COMMAND "${COMPILER}" ${flags} -std=c++20 -fsyntax-only -Wall -Wextra ${ARGN} "-I${INCLUDE}"
            "${CMAKE_CURRENT_LIST_DIR}/${name}"
        RESULT_VARIABLE result ERROR_VARIABLE messages)
endmacro()

# check(<source> <mark> <compiles> <text> <option>...): if `compiles` is true, `source` must compile with the options.
# For each line of `source` with the comment "// <mark>: X", the compiler must write a message that matches the regular
# expression `text`, in which X is replaced by the word after the mark. For a line with the comment "// <mark>: X (GCC)",
# GCC must write this message, and clang must write no warning and no error. The compiler must write no warning and no
# error for other lines.
function(check name mark compiles text)
    compile(${name} ${ARGN})
    if(compiles AND NOT result EQUAL 0)
        message(FATAL_ERROR "${name} does not compile:\n${messages}")
    endif()
    file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/${name}" lines)
    set(number 0)
    set(expected 0)
    foreach(line IN LISTS lines)
        math(EXPR number "${number} + 1")
        if(COMPILER_ID STREQUAL "GNU")
            string(REPLACE " (GCC)" "" line "${line}")
        endif()
        if(line MATCHES "// ${mark}: ([^ ]+)$")
            math(EXPR expected "${expected} + 1")
            string(REPLACE "=" "" option "${CMAKE_MATCH_1}") # clang's messages name the options without "="
            string(REPLACE "X" "${option}" wanted "${text}")
            if(NOT messages MATCHES "${name}:${number}:[^\n]*${wanted}")
                message(SEND_ERROR "${name}, line ${number}: the compiler does not write the expected message "
                                   "(${CMAKE_MATCH_1})")
            endif()
        elseif(messages MATCHES "${name}:${number}:[^\n]*(warning|error)")
            message(SEND_ERROR "${name}, line ${number}: the compiler writes an unexpected message")
        endif()
    endforeach()
    if(expected EQUAL 0)
        message(SEND_ERROR "no line of ${name} expects a message")
    endif()
    message(STATUS "${name}: checked ${expected} lines with expected messages")
endfunction()

check(Warnings.cpp "warns" TRUE "\\[X[^\n]*\\]" -DVOREL_CHECK_FORMATS -Wformat-security)
check(Access.cpp "rejected" FALSE "error: [^\n]* ${access}")
check(Ambiguous.cpp "rejected" FALSE "error: [^\n]* is X")

# Without VOREL_CHECK_FORMATS, narrow formats that are valid for the Windows runtime must compile without a warning.
compile(RuntimeFormats.cpp -Wformat=2 -Werror)
if(NOT result EQUAL 0)
    message(SEND_ERROR "RuntimeFormats.cpp must compile without a warning:\n${messages}")
endif()

# refuse(<source> <text> <option>...): compiles `source` with options that the library does not support. The compiler
# must report an error that matches the regular expression `text`.
function(refuse name text)
    compile(${name} ${ARGN})
    if(result EQUAL 0 OR NOT messages MATCHES "error: [^\n]*${text}")
        message(SEND_ERROR "${name} with ${ARGN}: the compiler does not report the error '${text}':\n${messages}")
    endif()
endfunction()

refuse(RuntimeFormats.cpp "needs the universal C runtime" -U_UCRT -U__MSVCRT_VERSION__ -D__MSVCRT_VERSION__=0x700)
refuse(RuntimeFormats.cpp "needs C[+][+]20" -std=c++17)
refuse(RuntimeFormats.cpp "is a library for 64-bit Windows" -U_WIN64)
# The flat interface needs neither the universal C runtime nor C++20.
compile(Flat.cpp -std=c++11 -Wpedantic -Werror -U_UCRT -U__MSVCRT_VERSION__ -D__MSVCRT_VERSION__=0x700)
if(NOT result EQUAL 0)
    message(SEND_ERROR "the flat interface does not compile as C++11:\n${messages}")
endif()

# The formatters are compiled with libc++, because GCC 12 has no <format>.
if(LIBCXX)
    execute_process(
        COMMAND "${CLANG}" --target=x86_64-w64-mingw32 -nostdinc++ -isystem "${LIBCXX}" -D_UCRT -D__MSVCRT_VERSION__=0xE00
            -std=c++20 -fsyntax-only -Wall -Wextra -Werror "-I${INCLUDE}" "${CMAKE_CURRENT_LIST_DIR}/Formatters.cpp"
        RESULT_VARIABLE result ERROR_VARIABLE messages)
    if(NOT result EQUAL 0)
        message(SEND_ERROR "the formatters do not compile with libc++:\n${messages}")
    endif()
endif()
