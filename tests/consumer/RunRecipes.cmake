# Checks the recipes in packaging/ without the package managers. The recipes for vcpkg and MSYS2 must have the version
# of the project. Each recipe must use at least three options, and only options that the project has.
#
#   SOURCE: the folder of the library's sources

file(READ "${SOURCE}/CMakeLists.txt" lists)
file(READ "${SOURCE}/cmake/Package.cmake" package)
string(REGEX MATCH "project\\(vorelCore[ \n]+VERSION ([0-9.]+)" unused "${lists}")
set(version "${CMAKE_MATCH_1}")

file(READ "${SOURCE}/packaging/vcpkg/vorelcore/vcpkg.json" manifest)
string(JSON found GET "${manifest}" version)
if(NOT found STREQUAL version)
    message(SEND_ERROR "vcpkg.json has the version ${found}, the project ${version}")
endif()
file(STRINGS "${SOURCE}/packaging/msys2/PKGBUILD" found REGEX "^pkgver=")
if(NOT found STREQUAL "pkgver=${version}")
    message(SEND_ERROR "PKGBUILD has '${found}', the project ${version}")
endif()

set(options "")
foreach(recipe IN ITEMS msys2/PKGBUILD vcpkg/vorelcore/portfile.cmake conan/conanfile.py)
    file(READ "${SOURCE}/packaging/${recipe}" text)
    string(REPLACE "VOREL_BUILD_{part}" "VOREL_BUILD_TESTS VOREL_BUILD_TOOLS VOREL_BUILD_EXAMPLES" text "${text}")
    string(REGEX MATCHALL "VOREL_(BUILD|INSTALL)[A-Z_]*" used "${text}")
    list(APPEND options ${used})
    list(LENGTH used count)
    if(count LESS 3)
        message(SEND_ERROR "${recipe} must use at least three options of the project, but uses only these: ${used}")
    endif()
endforeach()
list(REMOVE_DUPLICATES options)
foreach(option IN LISTS options)
    if(NOT "${lists}${package}" MATCHES "option\\(${option} ")
        message(SEND_ERROR "a recipe uses ${option}, which is not an option of the project")
    endif()
endforeach()
list(LENGTH options count)
message(STATUS "checked the version ${version} and ${count} options: ${options}")
