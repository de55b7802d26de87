# The compiler's runtime DLLs, which every program of this project needs beside it.
#
# They are shared on purpose: exceptions that cross the boundary of vorelCore.dll and the count of exceptions in flight
# work only when program and DLL use one and the same libstdc++.

set(VOREL_RUNTIME_DLLS "")
foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(
        COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
        OUTPUT_VARIABLE path
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    # The compiler echoes the bare name of a file that it does not find.
    if(NOT IS_ABSOLUTE "${path}")
        message(FATAL_ERROR "${CMAKE_CXX_COMPILER} has no ${name}")
    endif()
    file(REAL_PATH "${path}" path)
    list(APPEND VOREL_RUNTIME_DLLS "${path}")
    configure_file("${path}" "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}" COPYONLY)
endforeach()

# The name that find_package gives them, for a project that has this one as a part of itself.
if(NOT PROJECT_IS_TOP_LEVEL)
    set(vorelCore_RUNTIME_DLLS "${VOREL_RUNTIME_DLLS}" PARENT_SCOPE)
endif()
