# Checks that project() and the macros in include/vorel/Version.h have the same version. CMake does not generate the
# header, so that the folder of headers is complete without a build.

set(vorelVersionHeader "${PROJECT_SOURCE_DIR}/include/vorel/Version.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${vorelVersionHeader}")
file(READ "${vorelVersionHeader}" vorelVersionText)
foreach(part IN ITEMS MAJOR MINOR PATCH)
    if(NOT vorelVersionText MATCHES "#define VOREL_VERSION_${part} ${PROJECT_VERSION_${part}}\n")
        message(FATAL_ERROR "${vorelVersionHeader}: VOREL_VERSION_${part} is not ${PROJECT_VERSION_${part}}, as "
                            "the version ${PROJECT_VERSION} of the project requires")
    endif()
endforeach()
