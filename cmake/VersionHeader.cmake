# The version stands in project() and, as macros, in include/vorel/Version.h, which is a plain file so that whoever has
# the folder of headers has the whole of them. Nothing is built while the two differ.

set(vorelVersionHeader "${PROJECT_SOURCE_DIR}/include/vorel/Version.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${vorelVersionHeader}")
file(READ "${vorelVersionHeader}" vorelVersionText)
foreach(part IN ITEMS MAJOR MINOR PATCH)
    if(NOT vorelVersionText MATCHES "#define VOREL_VERSION_${part} ${PROJECT_VERSION_${part}}\n")
        message(FATAL_ERROR "${vorelVersionHeader}: VOREL_VERSION_${part} is not ${PROJECT_VERSION_${part}}, as "
                            "the version ${PROJECT_VERSION} of the project asks for")
    endif()
endforeach()
