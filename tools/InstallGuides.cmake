# Runs during an installation. Installs the manual page and the completion scripts that a tool writes. A tool that
# cannot be run on this machine is installed without these files.
#
#   COMMAND: the emulator, if there is one, and the path of the tool; TOOL: the name of the tool
#   MANUALS, DATA: the folders of manual pages and of shared data; relative paths are below the installation prefix

function(install_guide file)
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH folder)
    file(MAKE_DIRECTORY "$ENV{DESTDIR}${folder}")
    execute_process(COMMAND ${COMMAND} ${ARGN} OUTPUT_FILE "$ENV{DESTDIR}${path}" RESULT_VARIABLE result)
    if(result EQUAL 0)
        message(STATUS "Installing: $ENV{DESTDIR}${path}")
        list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${path}")
        set(CMAKE_INSTALL_MANIFEST_FILES "${CMAKE_INSTALL_MANIFEST_FILES}" PARENT_SCOPE)
    else()
        file(REMOVE "$ENV{DESTDIR}${path}")
        message(WARNING "${TOOL} cannot be run, so ${file} is not installed: ${result}")
    endif()
endfunction()

install_guide("${MANUALS}/man1/${TOOL}.1" --manual)
install_guide("${DATA}/bash-completion/completions/${TOOL}" --completion bash)
install_guide("${DATA}/vorelCore/completions/${TOOL}.ps1" --completion powershell)
