# Builds the project flat_c/ with clang for Microsoft's ABI and lld-link, and runs its programs. All of them are built
# from one source, which uses the flat interface. It is compiled as C99, C11, C17, C23 and C++20.
#
#   PROJECT_BUILD: the build to install; or PACKAGE: the folder of an existing package; CLANG: the folder of clang

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

file(REMOVE_RECURSE "${WORK}")
install_or_copy_package()
build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/flat_c" "${CMAKE_CURRENT_LIST_DIR}/flat_c/msvc.cmake"
    "flat_c99;flat_c11;flat_c17;flat_c23;flat_cxx20"
    "-DCMAKE_BUILD_TYPE=Release" "-DFLAT_CLANG=${CLANG}" "-DCMAKE_PREFIX_PATH=${FOLDER}/vorelCore")
