# Tests the toolchain file mingw-ucrt.cmake with scripts that act as compilers. The first compiler has the universal C
# runtime as its default, and does not find its runtime DLLs with -print-file-name, as in MSYS2. All other compilers
# must be refused.
#
#   PROJECT_BUILD: the build to install; SOURCE: the folder of the library's sources; COMPILER, C_COMPILER: GCC;
#   SPECS: a specs file that links the universal C runtime; DLLS: the folder of the runtime DLLs

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

set(bin "${FOLDER}/bin")

# write_script(<name> <text>): writes an executable shell script.
function(write_script name text)
    file(WRITE "${bin}/${name}" "#!/bin/sh\n${text}\n")
    file(CHMOD "${bin}/${name}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
endfunction()

# refused(<compiler> <text>): the toolchain file must refuse the compiler with the text.
function(refused compiler text)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/refused" -B "${FOLDER}/${compiler}" -G "${GENERATOR}"
            "-DCMAKE_TOOLCHAIN_FILE=${SOURCE}/cmake/mingw-ucrt.cmake" "-DCMAKE_CXX_COMPILER=${bin}/${compiler}"
        RESULT_VARIABLE result ERROR_VARIABLE messages OUTPUT_QUIET)
    string(REGEX REPLACE "[ \n]+" " " messages "${messages}")
    string(FIND "${messages}" "${bin}/${compiler} ${text}" found)
    if(result EQUAL 0 OR found EQUAL -1)
        message(SEND_ERROR "${compiler}: expected '${text}', found:\n${messages}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
install_or_copy_package()
foreach(pair IN ITEMS "g++=${COMPILER}" "gcc=${C_COMPILER}")
    string(REGEX MATCH "^[^=]+" name "${pair}")
    string(REGEX REPLACE "^[^=]+=" "" real "${pair}")
    write_script("x86_64-w64-mingw32ucrt-${name}"
        "case \"$1\" in -print-file-name=*.dll) echo \"\${1#*=}\"; exit;; esac
exec '${real}' -D_UCRT -D__MSVCRT_VERSION__=0xE00 -specs='${SPECS}' \"$@\"")
endforeach()
file(COPY "${DLLS}/libstdc++-6.dll" "${DLLS}/libgcc_s_seh-1.dll" "${DLLS}/libwinpthread-1.dll" DESTINATION "${bin}")
set(compiler "-DCMAKE_CXX_COMPILER=${bin}/x86_64-w64-mingw32ucrt-g++")

# Builds a user's project with the first compiler and the package, and runs its programs.
build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/find_package" "${FOLDER}/vorelCore/lib/cmake/vorelCore/mingw-ucrt.cmake"
    "consumer_dll;consumer_static"
    "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_PREFIX_PATH=${FOLDER}/vorelCore" "${compiler}")
file(STRINGS "${FOLDER}/build/CMakeCache.txt" flags REGEX "^CMAKE_CXX_FLAGS:")
if(NOT flags STREQUAL "CMAKE_CXX_FLAGS:STRING=-D_WIN32_WINNT=0x0A00" OR EXISTS "${FOLDER}/build/ucrt.specs")
    message(SEND_ERROR "the toolchain file must not replace the compiler's own runtime: ${flags}")
endif()

# Configures the library itself. The configuration must find the runtime DLLs in the compiler's folder.
run("Configure the library"
    "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${FOLDER}/library" -G "${GENERATOR}" -DCMAKE_BUILD_TYPE=Release
    "-DCMAKE_TOOLCHAIN_FILE=${SOURCE}/cmake/mingw-ucrt.cmake" "${compiler}"
    -DVOREL_BUILD_TESTS=OFF -DVOREL_BUILD_TOOLS=OFF -DVOREL_BUILD_EXAMPLES=OFF)
if(NOT EXISTS "${FOLDER}/library/bin/libstdc++-6.dll")
    message(SEND_ERROR "the runtime DLLs are not found in the compiler's folder")
endif()

write_script(other-machine-g++ "echo i686-w64-mingw32")
refused(other-machine-g++ "compiles for i686-w64-mingw32")
write_script(native-g++ "echo x86_64-linux-gnu")
refused(native-g++ "compiles for x86_64-linux-gnu")
write_script(broken-g++ "exit 1")
refused(broken-g++ "does not run")
write_script(other-runtime-g++
    "case \"$1\" in -dumpmachine) echo x86_64-w64-mingw32;; -dumpspecs) echo '-lcrtdll';; *) cat;; esac")
refused(other-runtime-g++ "does not link the universal C runtime, and its specs do not contain -lmsvcrt")
