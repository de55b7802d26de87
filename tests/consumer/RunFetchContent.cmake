# Builds and runs the project fetch_content/, which compiles the library as part of itself. The compiler does not
# optimise, because the build is then faster.
#
#   SOURCE: the folder of the library's sources; LAUNCHER: the compiler launcher of the library's build, or empty

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

file(REMOVE_RECURSE "${WORK}")
build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/fetch_content" "${SOURCE}/cmake/${TOOLCHAIN}"
    "consumer_dll"
    "-DCMAKE_BUILD_TYPE=Debug" "-DCMAKE_CXX_FLAGS_DEBUG=-O0" "-DFETCHCONTENT_SOURCE_DIR_VORELCORE=${SOURCE}"
    # The cache of the compiler launcher also makes this build faster.
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}")
