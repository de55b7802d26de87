# The files that `cmake --install` and CPack install:
#
#   bin/                     vorelCore.dll, the compiler's runtime DLLs, the tools
#   include/vorel/           the headers
#   lib/                     the import library and the static library; vorelCore.lib, the import library of the flat
#                            interface for C compilers of Microsoft's ABI, and vorelCore.def, from which vorelCore.lib
#                            is made
#   lib/cmake/vorelCore/     the files for find_package, and the toolchain files
#   lib/pkgconfig/           vorelCore.pc and vorelCoreStatic.pc
#   bin/vorelCore.dll-gdb.py makes GDB show the contents of containers and exceptions; GDB finds it next to the DLL
#   share/vorelCore/         the licences of the runtime DLLs and of code in the tools, vorelCore.natvis, which makes
#                            Visual Studio show the contents of containers and exceptions, and the completion of the
#                            tools for PowerShell
#   share/man/man1/          the manual pages of the tools
#   share/bash-completion/   the completion of the tools for bash
#   share/doc/vorelCore/     README, changelog, SECURITY.md, docs/, examples/, integrations/, and the page of the
#                            package for Node
#
# The packages of CPack also have README.txt in the top folder.
#
# The component "symbols" contains bin/vorelCore.dll.debug. Only a command that names the component installs it: `cmake
# --install build --component symbols`. The package may be moved to another folder, because it contains no absolute
# paths.

include(CMakePackageConfigHelpers)

set(vorelPackageDir "${CMAKE_INSTALL_LIBDIR}/cmake/vorelCore")
set(vorelPkgConfigDir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(vorelDataDir "${CMAKE_INSTALL_DATADIR}/vorelCore")
set(vorelPackageFiles "${PROJECT_BINARY_DIR}/package")

install(DIRECTORY include/vorel DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
install(TARGETS ${vorelLibraries} EXPORT vorelCoreTargets)
if(vorelCLibrary)
    install(FILES "${vorelCLibrary}.lib" "${vorelCLibrary}.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()
if(MINGW AND TARGET vorelCore AND CMAKE_BUILD_TYPE STREQUAL "Release")
    install(FILES "$<TARGET_FILE:vorelCore>.debug" DESTINATION "${CMAKE_INSTALL_BINDIR}"
        COMPONENT symbols EXCLUDE_FROM_ALL)
endif()

# ---- Runtime DLLs ---------------------------------------------------------------------------------------------------

option(VOREL_INSTALL_RUNTIME_DLLS "Install the compiler's runtime DLLs; OFF if a package manager provides them" ON)
set(vorelInstalledDllNames "")
if(VOREL_INSTALL_RUNTIME_DLLS)
    set(vorelInstalledDllNames ${VOREL_RUNTIME_DLL_NAMES})
    # Removes the symbols and the debug information from Debian's runtime DLLs, because they take more than ten times as
    # much space as the rest of these DLLs.
    foreach(dll IN LISTS VOREL_RUNTIME_DLLS)
        cmake_path(GET dll FILENAME name)
        set(stripped "${vorelPackageFiles}/bin/${name}")
        if("${dll}" IS_NEWER_THAN "${stripped}")
            file(MAKE_DIRECTORY "${vorelPackageFiles}/bin")
            execute_process(
                COMMAND "${CMAKE_OBJCOPY}" --strip-all "${dll}" "${stripped}"
                COMMAND_ERROR_IS_FATAL ANY)
        endif()
        install(FILES "${stripped}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
    endforeach()
endif()

# ---- For find_package -----------------------------------------------------------------------------------------------

install(EXPORT vorelCoreTargets NAMESPACE vorel:: DESTINATION "${vorelPackageDir}")
if(MSVC)
    set(vorelAbi Microsoft)
else()
    set(vorelAbi GCC)
endif()
set(vorelProcessor "${CMAKE_SYSTEM_PROCESSOR}")
set(vorelProcessors "${CMAKE_SYSTEM_PROCESSOR}") # the processor's names, as a regular expression
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    set(vorelProcessor "x86-64")
    set(vorelProcessors "x86_64|AMD64|amd64")
endif()
configure_package_config_file(cmake/vorelCoreConfig.cmake.in "${vorelPackageFiles}/vorelCoreConfig.cmake"
    INSTALL_DESTINATION "${vorelPackageDir}"
    PATH_VARS CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
# Before 1.0 a minor version may change the interface, so only the same minor version is compatible. The version file
# does not check the architecture (ARCH_INDEPENDENT). vorelCoreConfig.cmake checks the architecture, because its
# messages can give the reason.
write_basic_package_version_file("${vorelPackageFiles}/vorelCoreConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(
    FILES
        "${vorelPackageFiles}/vorelCoreConfig.cmake"
        "${vorelPackageFiles}/vorelCoreConfigVersion.cmake"
        cmake/ucrt-target.cmake
        cmake/mingw-ucrt.cmake
        cmake/clang-ucrt.cmake
    DESTINATION "${vorelPackageDir}")

# ---- For pkg-config -------------------------------------------------------------------------------------------------

string(REGEX REPLACE "[^/]+" ".." vorelToPrefix "${vorelPkgConfigDir}")
foreach(name IN LISTS vorelLibraries)
    configure_file(cmake/${name}.pc.in "${vorelPackageFiles}/${name}.pc" @ONLY)
    install(FILES "${vorelPackageFiles}/${name}.pc" DESTINATION "${vorelPkgConfigDir}")
endforeach()

# ---- Debugger views -------------------------------------------------------------------------------------------------

install(FILES debuggers/vorelCore-gdb.py DESTINATION "${CMAKE_INSTALL_BINDIR}" RENAME vorelCore.dll-gdb.py)
install(FILES debuggers/vorelCore.natvis DESTINATION "${vorelDataDir}")

# ---- Licences -------------------------------------------------------------------------------------------------------

set(vorelRuntimeLicences "")
if(vorelInstalledDllNames)
    file(READ LICENSES/runtime.txt.in vorelRuntimeLicences)
    string(CONFIGURE "${vorelRuntimeLicences}" vorelRuntimeLicences @ONLY)
    install(FILES LICENSES/GPL-3.0.txt LICENSES/GCC-exception-3.1.txt LICENSES/winpthreads.txt
        DESTINATION "${vorelDataDir}/LICENSES")
endif()
configure_file(LICENSES/README.txt.in "${vorelPackageFiles}/README.txt" @ONLY NEWLINE_STYLE CRLF)
install(
    FILES
        "${vorelPackageFiles}/README.txt"
        LICENSES/re2.txt
        LICENSES/uplot.txt
        LICENSES/zlib.txt
    DESTINATION "${vorelDataDir}/LICENSES")

# ---- Documentation --------------------------------------------------------------------------------------------------

install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs examples DESTINATION "${CMAKE_INSTALL_DOCDIR}"
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png" PATTERN "*.h" PATTERN "*.cpp" PATTERN "*.txt"
    PATTERN "docs/site" EXCLUDE)

# Other files to which the documents refer.
install(FILES bindings/node/README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}/bindings/node")
install(DIRECTORY integrations DESTINATION "${CMAKE_INSTALL_DOCDIR}" PATTERN "integrations/test" EXCLUDE)

# ---- Archive and installer ------------------------------------------------------------------------------------------

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

set(CPACK_PACKAGE_VENDOR "Talvenor")
set(CPACK_PACKAGE_NAME "${PROJECT_NAME}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_FILE_NAME "${PROJECT_NAME}-${PROJECT_VERSION}-win64-ucrt")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "${PROJECT_NAME} ${PROJECT_VERSION}")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_RESOURCE_FILE_LICENSE "${vorelPackageFiles}/README.txt")
set(CPACK_VERBATIM_VARIABLES ON)
# ./dev package builds the targets of the package. Without this setting, the install step would build all tests too.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

# Without this setting, the installer would offer the symbols as a component.
set(CPACK_MONOLITHIC_INSTALL ON)

# README.txt in the top folder of the package is the first text that a user of the archive reads.
configure_file(cmake/package-readme.txt.in "${vorelPackageFiles}/top/README.txt" @ONLY NEWLINE_STYLE CRLF)
set(CPACK_INSTALLED_DIRECTORIES "${vorelPackageFiles}/top;.")

set(CPACK_GENERATOR ZIP)
find_program(VOREL_MAKENSIS makensis DOC "Makes the installer")
if(VOREL_MAKENSIS)
    list(APPEND CPACK_GENERATOR NSIS)
    set(CPACK_NSIS_EXECUTABLE "${VOREL_MAKENSIS}")
    # A 64-bit installer, with Unicode file names.
    set(CPACK_NSIS_EXECUTABLE_PRE_ARGUMENTS [[-XTarget\ amd64-unicode]])
    # The default, LZMA, compresses in a separate thread, and makensis sometimes waits for this thread forever.
    set(CPACK_NSIS_COMPRESSOR zlib)
    set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES64")
    set(CPACK_NSIS_DISPLAY_NAME "${PROJECT_NAME} ${PROJECT_VERSION}")
    set(CPACK_NSIS_PACKAGE_NAME "${PROJECT_NAME} ${PROJECT_VERSION}")
    set(CPACK_NSIS_UNINSTALL_NAME "uninstall")
    set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)
endif()
include(CPack)
