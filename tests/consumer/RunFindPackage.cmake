# Builds the project find_package/, which finds the installed library with find_package, as a user's project does. Runs
# the two programs of the project. One program uses the DLL, the other program uses the static library.
#
#   PROJECT_BUILD: the build to install; or PACKAGE: the folder of an existing package

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

file(REMOVE_RECURSE "${WORK}")
install_or_copy_package()
build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/find_package" "${FOLDER}/vorelCore/lib/cmake/vorelCore/${TOOLCHAIN}"
    "consumer_dll;consumer_static"
    "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_PREFIX_PATH=${FOLDER}/vorelCore")
