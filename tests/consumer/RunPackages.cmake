# Tries what CPack has made: the archive, unpacked elsewhere, has to build and run the project find_package/; the installer
# has to install the same files, and to take them away again.
#
#   PACKAGES: the folder with the archive and the installer

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

function(only_file pattern result)
    file(GLOB found "${PACKAGES}/${pattern}")
    list(LENGTH found count)
    if(NOT count EQUAL 1)
        message(FATAL_ERROR "${PACKAGES} has ${count} files ${pattern}")
    endif()
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

function(list_files folder result)
    file(GLOB_RECURSE files RELATIVE "${folder}" "${folder}/*")
    list(FILTER files EXCLUDE REGEX "^uninstall\\.exe$") # the installer's own
    list(SORT files)
    set(${result} "${files}" PARENT_SCOPE)
endfunction()

# The option of the installer that ends in a folder. It must not be quoted, whatever blanks are in it: so it is given as
# one argument for each word.
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
run("Try the archive"
    "${CMAKE_COMMAND}" "-DPACKAGE=${package}" "-DCONFIG=${CONFIG}" "-DGENERATOR=${GENERATOR}" "-DEMULATOR=${EMULATOR}"
    "-DWORK=${WORK}/project" -P "${CMAKE_CURRENT_LIST_DIR}/RunFindPackage.cmake")

only_file("*.exe" installer)
set(installed "${WORK}/installed here/vorelCore")
folder_option("/D=" "${installed}" option)
run("Install" ${EMULATOR} "${installer}" /S ${option})
list_files("${installed}" found)
if(NOT found STREQUAL expected)
    message(FATAL_ERROR "The installer's files are not the archive's:\n${found}\nbut\n${expected}")
endif()
# With its folder named, it works where it stands, and we can wait for it.
folder_option("_?=" "${installed}" option)
run("Uninstall" ${EMULATOR} "${installed}/uninstall.exe" /S ${option})
list_files("${installed}" found)
if(found)
    message(FATAL_ERROR "The installer leaves behind: ${found}")
endif()
list(LENGTH expected count)
message(STATUS "${count} files in the archive; the installer has the same, and takes them away again")
