# Builds only the DLL or only the static library, as BUILD_SHARED_LIBS says. Installs the library without the runtime
# DLLs, and builds and runs the project one_library/ with the installed library.
#
#   SOURCE: the folder of the library's sources; SHARED: the value of BUILD_SHARED_LIBS; DLLS: the folder of the runtime
#   DLLs; LAUNCHER: the compiler launcher

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

# Checks that all of the files exist in the package, or if `exist` is false, that none of them exists.
function(expect_files exist)
    foreach(file IN LISTS ARGN)
        if(EXISTS "${FOLDER}/vorelCore/${file}" AND NOT exist)
            message(SEND_ERROR "${file} must not be installed")
        elseif(exist AND NOT EXISTS "${FOLDER}/vorelCore/${file}")
            message(SEND_ERROR "${file} must be installed")
        endif()
    endforeach()
endfunction()

file(REMOVE_RECURSE "${WORK}")
# The options of the release preset, so that the compiler cache already contains the objects.
run("Configure the library"
    "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}/library" -G "${GENERATOR}"
    "-DCMAKE_TOOLCHAIN_FILE=${SOURCE}/cmake/${TOOLCHAIN}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
    -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG"
    "-DBUILD_SHARED_LIBS=${SHARED}" -DVOREL_INSTALL_RUNTIME_DLLS=OFF
    -DVOREL_WARNINGS_AS_ERRORS=ON
    -DVOREL_BUILD_TOOLS=OFF -DVOREL_BUILD_EXAMPLES=OFF)
run("Build the library" "${CMAKE_COMMAND}" --build "${WORK}/library")
run("Install" "${CMAKE_COMMAND}" --install "${WORK}/library" --prefix "${FOLDER}/vorelCore")
expect_files(${SHARED} bin/vorelCore.dll lib/libvorelCore.dll.a lib/pkgconfig/vorelCore.pc)
if(SHARED)
    expect_files(OFF lib/libvorelCoreStatic.a lib/pkgconfig/vorelCoreStatic.pc)
else()
    expect_files(ON lib/libvorelCoreStatic.a lib/pkgconfig/vorelCoreStatic.pc)
endif()
expect_files(OFF
    bin/libstdc++-6.dll bin/libgcc_s_seh-1.dll bin/libwinpthread-1.dll share/vorelCore/LICENSES/GPL-3.0.txt)

build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/one_library" "${FOLDER}/vorelCore/lib/cmake/vorelCore/${TOOLCHAIN}" consumer
    -DCMAKE_BUILD_TYPE=Release "-DCMAKE_PREFIX_PATH=${FOLDER}/vorelCore" "-DONE_LIBRARY_DLLS=${DLLS}")
