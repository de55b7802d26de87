# Builds the project find_package/ against the installed library as a user would, with find_package and nothing else, and
# runs its two programs: one uses the DLL, one the static form.
#
#   PROJECT_BUILD: the build to install; or PACKAGE: the folder of a package that is there

include("${CMAKE_CURRENT_LIST_DIR}/Steps.cmake")

file(REMOVE_RECURSE "${WORK}")
if(PACKAGE)
    file(COPY "${PACKAGE}/" DESTINATION "${PLACE}/vorelCore")
else()
    run("Install" "${CMAKE_COMMAND}" --install "${PROJECT_BUILD}" --config "${CONFIG}" --prefix "${PLACE}/vorelCore")
endif()
build_and_run(
    "${CMAKE_CURRENT_LIST_DIR}/find_package" "${PLACE}/vorelCore/lib/cmake/vorelCore/mingw-ucrt.cmake"
    "consumer_dll;consumer_static"
    "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_PREFIX_PATH=${PLACE}/vorelCore")
