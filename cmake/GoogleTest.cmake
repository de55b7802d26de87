# Provides the targets GTest::gtest, GTest::gmock and GTest::gtest_main. GoogleTest is built from Debian's sources, in a
# folder next to the build folders of the presets. It is built once for each compiler, and all presets with the same
# compiler share the result. If Debian's sources are missing, an installed GoogleTest is used. If GoogleTest is not
# installed either, it is downloaded.

set(VOREL_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
if(NOT EXISTS "${VOREL_GOOGLETEST_SOURCE}/CMakeLists.txt")
    find_package(GTest CONFIG)
    if(NOT GTest_FOUND)
        include(FetchContent)
        set(gtest_force_shared_crt ON CACHE BOOL "") # the same runtime as all other targets
        FetchContent_Declare(googletest
            GIT_REPOSITORY https://github.com/google/googletest.git
            GIT_TAG f8d7d77c06936315286eb55f8de22cd23c188571) # 1.14.0
        FetchContent_MakeAvailable(googletest)
        foreach(name IN ITEMS gtest gmock gtest_main)
            if(NOT TARGET GTest::${name})
                add_library(GTest::${name} ALIAS ${name})
            endif()
        endforeach()
    endif()
    return()
endif()

include(ExternalProject)
cmake_path(GET PROJECT_BINARY_DIR PARENT_PATH buildFolder)
set(VOREL_GOOGLETEST_BUILD "${buildFolder}/googletest-${CMAKE_CXX_COMPILER_ID}-${CMAKE_CXX_COMPILER_VERSION}"
    CACHE PATH "Build folder of GoogleTest")

set(googletestLibraries "")
foreach(name IN ITEMS gtest gmock gtest_main)
    list(APPEND googletestLibraries "${VOREL_GOOGLETEST_BUILD}/lib/lib${name}.a")
endforeach()

ExternalProject_Add(googletest
    PREFIX "${VOREL_GOOGLETEST_BUILD}"
    SOURCE_DIR "${VOREL_GOOGLETEST_SOURCE}"
    BINARY_DIR "${VOREL_GOOGLETEST_BUILD}"
    CMAKE_ARGS
        "-DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}"
        "-DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}"
        "-DCMAKE_CXX_STANDARD=20"
        "-DCMAKE_CXX_FLAGS_INIT=-w"
    INSTALL_COMMAND ""
    BUILD_BYPRODUCTS ${googletestLibraries}
    EXCLUDE_FROM_ALL ON)

function(vorel_googletest_target name)
    add_library(GTest::${name} STATIC IMPORTED GLOBAL)
    add_dependencies(GTest::${name} googletest)
    set_target_properties(GTest::${name} PROPERTIES IMPORTED_LOCATION "${VOREL_GOOGLETEST_BUILD}/lib/lib${name}.a")
    target_link_libraries(GTest::${name} INTERFACE ${ARGN})
endfunction()

vorel_googletest_target(gtest)
target_include_directories(GTest::gtest SYSTEM INTERFACE "${VOREL_GOOGLETEST_SOURCE}/googletest/include")
target_compile_definitions(GTest::gtest INTERFACE GTEST_HAS_PTHREAD=0)
vorel_googletest_target(gmock GTest::gtest)
target_include_directories(GTest::gmock SYSTEM INTERFACE "${VOREL_GOOGLETEST_SOURCE}/googlemock/include")
vorel_googletest_target(gtest_main GTest::gtest)
