# Builds the project fetch_content/, and with it the whole library, from the sources of this tree. Without optimisation,
# because that is quicker.
#
#   SOURCE: the library's sources

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

file(REMOVE_RECURSE "${WORK}")
build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/fetch_content" "${SOURCE}/cmake/mingw-ucrt.cmake"
    "consumer_dll"
    "-DCMAKE_BUILD_TYPE=Debug" "-DCMAKE_CXX_FLAGS_DEBUG=-O0" "-DFETCHCONTENT_SOURCE_DIR_VORELCORE=${SOURCE}"
    # As this build has them: what speeds up one compilation speeds up the other.
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}")
