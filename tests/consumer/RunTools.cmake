# Runs the installed tools, and checks their manual pages and completion scripts. Each of these files must be equal to
# the output of its tool. The completion scripts for bash must offer the expected words.
#
#   PROJECT_BUILD: the build to install; or PACKAGE: the folder of an existing package

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

function(expect what expected actual)
    if(NOT actual STREQUAL expected)
        message(FATAL_ERROR "${what}: expected\n${expected}\nbut found\n${actual}")
    endif()
endfunction()

# Checks that the installed file is equal to the output of the tool with the remaining arguments, and contains `part`.
function(check_file tool file part)
    set(path "${FOLDER}/vorelCore/share/${file}")
    if(NOT EXISTS "${path}")
        message(FATAL_ERROR "${path} is not installed")
    endif()
    file(READ "${path}" installed)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C.UTF-8 ${EMULATOR} "${FOLDER}/vorelCore/bin/${tool}.exe" ${ARGN}
        OUTPUT_VARIABLE written
        COMMAND_ERROR_IS_FATAL ANY)
    expect("${path}" "${written}" "${installed}")
    string(FIND "${installed}" "${part}" position)
    if(position EQUAL -1)
        message(FATAL_ERROR "${path} does not contain ${part}")
    endif()
endfunction()

# Checks the completions that bash offers for the words of a command line.
function(check_completion expected tool)
    execute_process(
        COMMAND bash -c "source \"$0\" && COMP_WORDS=(\"$@\") COMP_CWORD=$(($# - 1)) && _$1 && echo \"\${COMPREPLY[@]}\""
            "${FOLDER}/vorelCore/share/bash-completion/completions/${tool}" ${tool} ${ARGN}
        OUTPUT_VARIABLE found
        OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    expect("Completion of ${tool} ${ARGN}" "${expected}" "${found}")
endfunction()

file(REMOVE_RECURSE "${WORK}")
install_or_copy_package()
foreach(tool IN ITEMS vorelconv vorellog)
    string(TOUPPER "${tool}" title)
    check_file(${tool} man/man1/${tool}.1 ".TH ${title} 1" --manual)
    check_file(${tool} bash-completion/completions/${tool} "complete -F _${tool}" --completion bash)
    check_file(${tool} vorelCore/completions/${tool}.ps1 "Register-ArgumentCompleter" --completion powershell)
endforeach()
check_completion("--summary" vorellog --su)
check_completion("base64" vorelconv base)
check_completion("--decode" vorelconv base64 --dec)
