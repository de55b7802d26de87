# Tests the packages of CPack. The projects find_package/ and flat_c/ must build and run with a copy of the unpacked
# archive, and the tools in the copy must run. The examples in the archive must build. The installer must install the
# files that the archive contains, and the uninstaller must remove all of them. The archive of the symbols must contain
# the symbols of the DLL in the archive.
#
#   PACKAGES: the folder with the archives and the installer; CLANG: the folder of clang

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

function(only_file pattern result)
    file(GLOB found "${PACKAGES}/${pattern}")
    list(LENGTH found count)
    if(NOT count EQUAL 1)
        message(FATAL_ERROR "${PACKAGES} contains ${count} files ${pattern}, expected 1")
    endif()
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

function(list_files folder result)
    file(GLOB_RECURSE files RELATIVE "${folder}" "${folder}/*")
    list(FILTER files EXCLUDE REGEX "^uninstall\\.exe$") # added by the installer
    list(SORT files)
    set(${result} "${files}" PARENT_SCOPE)
endfunction()

# Stores in `result` an option of the installer that ends in the path of a folder. The installer requires a path without
# quotes, even if the path contains spaces. So each word of the path becomes an argument.
function(folder_option option folder result)
    string(REPLACE "/" "\\" folder "Z:${folder}")
    string(REPLACE " " ";" words "${option}${folder}")
    set(${result} "${words}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")

only_file("*-ucrt.zip" archive)
message(STATUS "Unpack ${archive}")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${WORK}/archive")
file(GLOB package "${WORK}/archive/*")
list_files("${package}" expected)

# The archive must contain these files for users.
foreach(file IN ITEMS
        README.txt share/doc/vorelCore/README.md share/doc/vorelCore/CHANGELOG.md
        share/doc/vorelCore/docs/getting-started.md share/doc/vorelCore/examples/hello/main.cpp
        share/doc/vorelCore/bindings/node/README.md
        share/doc/vorelCore/integrations/README.md share/doc/vorelCore/integrations/rsyslog/vorel.rulebase
        share/vorelCore/vorelCore.natvis bin/vorelCore.dll-gdb.py
        share/vorelCore/LICENSES/README.txt share/vorelCore/LICENSES/GPL-3.0.txt
        lib/vorelCore.lib lib/vorelCore.def)
    if(NOT EXISTS "${package}/${file}")
        message(SEND_ERROR "The archive does not contain ${file}")
    endif()
endforeach()
if(EXISTS "${package}/share/doc/vorelCore/integrations/test")
    message(SEND_ERROR "The archive must not contain integrations/test")
endif()
file(READ "${package}/share/vorelCore/LICENSES/README.txt" licences)
if(NOT licences MATCHES "symbols and debug information are removed")
    message(SEND_ERROR "The licence text does not say that the runtime DLLs are stripped")
endif()
# No program and no DLL may have symbols or debug information. The debug information of the runtime DLLs would be the
# largest part of the archive.
file(GLOB programs "${package}/bin/*.dll" "${package}/bin/*.exe")
foreach(program IN LISTS programs)
    execute_process(
        COMMAND x86_64-w64-mingw32-objdump -h -t "${program}" OUTPUT_VARIABLE sections COMMAND_ERROR_IS_FATAL ANY)
    if(sections MATCHES "\\.debug_" OR NOT sections MATCHES "no symbols")
        message(SEND_ERROR "${program} must have neither symbols nor debug information")
    endif()
endforeach()

# The archive of the symbols must contain only the file with the symbols of the DLL. If this file is in the folder of
# the DLL, the debugger must find the symbols.
only_file("*-ucrt-symbols.zip" symbols)
file(ARCHIVE_EXTRACT INPUT "${symbols}" DESTINATION "${WORK}/symbols")
file(GLOB_RECURSE found RELATIVE "${WORK}/symbols" "${WORK}/symbols/*")
if(NOT found MATCHES "^[^/;]+/bin/vorelCore\\.dll\\.debug$")
    message(SEND_ERROR "The archive of the symbols must contain only bin/vorelCore.dll.debug, but contains: ${found}")
endif()
file(COPY "${package}/bin/vorelCore.dll" DESTINATION "${WORK}/debugged")
file(COPY "${WORK}/symbols/${found}" DESTINATION "${WORK}/debugged")
execute_process(
    COMMAND x86_64-w64-mingw32-gdb -nx -batch -ex "info line vorel::version" "${WORK}/debugged/vorelCore.dll"
    OUTPUT_VARIABLE line ERROR_VARIABLE messages)
if(NOT line MATCHES "Line [0-9]+ of \"[^\"]*src/Version\\.cpp\"")
    message(SEND_ERROR "The debugger does not find the symbols of vorelCore.dll: ${line}${messages}")
endif()

run("Test the archive"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DCONFIG=${CONFIG}" "-DGENERATOR=${GENERATOR}" "-DEMULATOR=${EMULATOR}"
    "-DTOOLCHAIN=mingw-ucrt.cmake"
    "-DWORK=${WORK}/project" -P "${CMAKE_CURRENT_LIST_DIR}/RunFindPackage.cmake")

set(FOLDER "${WORK}/examples")
run("Configure the examples"
    "${CMAKE_COMMAND}" -S "${package}/share/doc/vorelCore/examples" -B "${FOLDER}" -G "${GENERATOR}"
    "-DCMAKE_TOOLCHAIN_FILE=${package}/lib/cmake/vorelCore/mingw-ucrt.cmake"
    "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_PREFIX_PATH=${package}")
run("Build the examples" "${CMAKE_COMMAND}" --build "${FOLDER}")
run("Run an example" "${CMAKE_COMMAND}" -E chdir "${FOLDER}" ${EMULATOR} "${FOLDER}/hello.exe")

run("Test the archive's import library for C"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DCONFIG=${CONFIG}" "-DGENERATOR=${GENERATOR}" "-DEMULATOR=${EMULATOR}"
    "-DCLANG=${CLANG}" "-DWORK=${WORK}/flat_c" -P "${CMAKE_CURRENT_LIST_DIR}/RunFlatC.cmake")

run("Test the archive's tools"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DEMULATOR=${EMULATOR}" "-DWORK=${WORK}/tools"
    -P "${CMAKE_CURRENT_LIST_DIR}/RunTools.cmake")

only_file("*.exe" installer)
set(installed "${WORK}/installed here/vorelCore")
folder_option("/D=" "${installed}" option)
run("Install" ${EMULATOR} "${installer}" /S ${option})
list_files("${installed}" found)
if(NOT found STREQUAL expected)
    set(missing ${expected})
    list(REMOVE_ITEM missing ${found})
    list(REMOVE_ITEM found ${expected})
    message(FATAL_ERROR "The installer does not install: ${missing}; not in the archive, but installed: ${found}")
endif()
# With this option the uninstaller does not copy itself to another folder, so this script can wait until the
# uninstaller ends.
folder_option("_?=" "${installed}" option)
run("Uninstall" ${EMULATOR} "${installed}/uninstall.exe" /S ${option})
list_files("${installed}" found)
if(found)
    message(FATAL_ERROR "The uninstaller does not remove: ${found}")
endif()
list(LENGTH expected count)
message(STATUS "${count} files in the archive; the installer installs and removes the same files")
