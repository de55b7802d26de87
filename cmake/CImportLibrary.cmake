# Writes the import library of the flat interface for compilers of Microsoft's ABI, and the module definition file from
# which the library is made. Runs after vorelCore.dll is linked. The variables:
#
#   OBJDUMP, DLLTOOL: the programs; DLL: the library; OUTPUT: the path of both files without extension
#
# The import library has only the functions of the flat interface, which have C linkage and names that begin with
# `vorel_`. It has no C++ names, because they differ between compilers.

execute_process(COMMAND "${OBJDUMP}" -p "${DLL}" OUTPUT_VARIABLE tables COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n[^\n]*\\[ *[0-9]+\\][^\n]* vorel_[a-z0-9_]+" lines "${tables}")
set(names "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE ".* " "" name "${line}")
    list(APPEND names "${name}")
endforeach()
list(REMOVE_DUPLICATES names)
list(SORT names)
if(NOT names)
    message(FATAL_ERROR "${DLL} exports no function of the flat interface")
endif()
list(JOIN names "\n    " text)
cmake_path(GET DLL FILENAME library)
file(WRITE "${OUTPUT}.def" "LIBRARY ${library}\nEXPORTS\n    ${text}\n")
execute_process(
    COMMAND "${DLLTOOL}" -m i386:x86-64 --input-def "${OUTPUT}.def" --output-lib "${OUTPUT}.lib"
    COMMAND_ERROR_IS_FATAL ANY)
