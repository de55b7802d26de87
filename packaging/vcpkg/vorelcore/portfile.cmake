# The sources are the tree that contains this port. A port of the registry gets the sources with vcpkg_from_git or
# vcpkg_download_distfile.
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../.." ABSOLUTE)

# vcpkg sets BUILD_SHARED_LIBS from the triplet.
vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        -DVOREL_INSTALL_RUNTIME_DLLS=OFF
        -DVOREL_BUILD_TESTS=OFF
        -DVOREL_BUILD_TOOLS=OFF
        -DVOREL_BUILD_EXAMPLES=OFF
)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME vorelCore CONFIG_PATH lib/cmake/vorelCore)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE
    "${CURRENT_PACKAGES_DIR}/debug/include"
    "${CURRENT_PACKAGES_DIR}/debug/share"
    "${CURRENT_PACKAGES_DIR}/share/doc"
)
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${CURRENT_PACKAGES_DIR}/share/vorelCore/LICENSES/README.txt")
