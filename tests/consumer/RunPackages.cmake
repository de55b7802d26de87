# Tests the packages of CPack. The project find_package/ must build and run with the archive unpacked in another folder,
# and so must the tools.
# The installer must install the same files, and remove all of them.
#
#   PACKAGES: the folder with the archive and the installer; CLANG: the folder of clang

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

# An option of the installer that ends in a folder. It must not be quoted even if it contains spaces, so each word
# becomes one argument.
function(folder_option option folder result)
    string(REPLACE "/" "\\" folder "Z:${folder}")
    string(REPLACE " " ";" words "${option}${folder}")
    set(${result} "${words}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK}")

only_file("*.zip" archive)
message(STATUS "Unpack ${archive}")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${WORK}/archive")
file(GLOB package "${WORK}/archive/*")
list_files("${package}" expected)
run("Test the archive"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DCONFIG=${CONFIG}" "-DGENERATOR=${GENERATOR}" "-DEMULATOR=${EMULATOR}"
    "-DTOOLCHAIN=mingw-ucrt.cmake"
    "-DWORK=${WORK}/project" -P "${CMAKE_CURRENT_LIST_DIR}/RunFindPackage.cmake")

run("Test its import library for C"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DCONFIG=${CONFIG}" "-DGENERATOR=${GENERATOR}" "-DEMULATOR=${EMULATOR}"
    "-DCLANG=${CLANG}" "-DWORK=${WORK}/flat_c" -P "${CMAKE_CURRENT_LIST_DIR}/RunFlatC.cmake")

run("Test its tools"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DEMULATOR=${EMULATOR}" "-DWORK=${WORK}/tools"
    -P "${CMAKE_CURRENT_LIST_DIR}/RunTools.cmake")

only_file("*.exe" installer)
set(installed "${WORK}/installed here/vorelCore")
folder_option("/D=" "${installed}" option)
run("Install" ${EMULATOR} "${installer}" /S ${option})
list_files("${installed}" found)
if(NOT found STREQUAL expected)
    message(FATAL_ERROR "The files of the installer differ from those of the archive:\n${found}\nbut\n${expected}")
endif()
# With this option the uninstaller does not copy itself to another folder, so this script can wait for it.
folder_option("_?=" "${installed}" option)
run("Uninstall" ${EMULATOR} "${installed}/uninstall.exe" /S ${option})
list_files("${installed}" found)
if(found)
    message(FATAL_ERROR "The uninstaller does not remove: ${found}")
endif()
list(LENGTH expected count)
message(STATUS "${count} files in the archive; the installer installs and removes the same files")
