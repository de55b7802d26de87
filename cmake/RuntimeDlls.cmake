# The compiler's runtime DLLs, which every program of this project needs in its folder.
#
# Programs and vorelCore.dll share these DLLs by design. A program can catch exceptions from vorelCore.dll only if both
# use the same libstdc++. std::uncaught_exceptions then counts the exceptions of both, too.

# Microsoft's runtime is a part of Windows or has its own installer, so its DLLs are not copied.
if(MSVC)
    set(VOREL_RUNTIME_DLL_NAMES "")
    set(VOREL_RUNTIME_DLLS "")
    return()
endif()

set(VOREL_RUNTIME_DLL_NAMES libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
set(VOREL_RUNTIME_DLLS "")
set(vorelTargetOption "")
if(CMAKE_CXX_COMPILER_TARGET)
    set(vorelTargetOption "--target=${CMAKE_CXX_COMPILER_TARGET}")
endif()
foreach(name IN LISTS VOREL_RUNTIME_DLL_NAMES)
    execute_process(
        COMMAND ${CMAKE_CXX_COMPILER} ${vorelTargetOption} -print-file-name=${name}
        OUTPUT_VARIABLE path
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    # If the compiler does not find the file, the compiler prints only the name. In MSYS2 the file is in the compiler's
    # folder.
    if(NOT IS_ABSOLUTE "${path}")
        cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH path)
        cmake_path(APPEND path "${name}")
    endif()
    if(NOT EXISTS "${path}")
        message(FATAL_ERROR "${name}, a runtime DLL of ${CMAKE_CXX_COMPILER}, is missing")
    endif()
    file(REAL_PATH "${path}" path)
    list(APPEND VOREL_RUNTIME_DLLS "${path}")
    configure_file("${path}" "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}" COPYONLY)
endforeach()

# find_package sets this variable, too. Here it is set for a project that includes vorelCore with add_subdirectory or
# FetchContent.
if(NOT PROJECT_IS_TOP_LEVEL)
    set(vorelCore_RUNTIME_DLLS "${VOREL_RUNTIME_DLLS}" PARENT_SCOPE)
endif()
