"""The recipe for Conan 2. It exports the sources of the tree that contains the recipe. A recipe for a public index
would instead download the sources of a release in `source()`."""

import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir

required_conan_version = ">=2.0"


class VorelCoreRecipe(ConanFile):
    name = "vorelcore"
    description = "Strings, containers, exceptions, one error log and synchronisation for Windows programs"
    topics = ("windows", "strings", "exceptions", "logging", "synchronisation")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False]}
    default_options = {"shared": True}

    @property
    def _tree(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        lists = load(self, os.path.join(self._tree, "CMakeLists.txt"))
        self.version = re.search(r"project\(vorelCore\s+VERSION ([0-9.]+)", lists).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "*.md", "LICENSES/*", "cmake/*", "debuggers/*", "docs/*", "examples/*",
                        "include/*", "src/*"):
            copy(self, pattern, src=self._tree, dst=self.export_sources_folder)

    def validate(self):
        if self.settings.os != "Windows" or self.settings.arch != "x86_64":
            raise ConanInvalidConfiguration("vorelCore is a library for 64-bit Windows (x86-64)")
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)  # sets BUILD_SHARED_LIBS
        toolchain.cache_variables["VOREL_INSTALL_RUNTIME_DLLS"] = False
        for part in ("TESTS", "TOOLS", "EXAMPLES"):
            toolchain.cache_variables[f"VOREL_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "*", src=os.path.join(self.source_folder, "LICENSES"),
             dst=os.path.join(self.package_folder, "licenses"), excludes="*.in")
        # Conan writes its own files for find_package and pkg-config.
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))
        rmdir(self, os.path.join(self.package_folder, "share"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "vorelCore")
        self.cpp_info.set_property("cmake_target_name", "vorel::vorelCore")
        self.cpp_info.set_property("pkg_config_name", "vorelCore")
        if self.options.shared:
            self.cpp_info.libs = ["vorelCore"]
        else:
            self.cpp_info.libs = ["vorelCoreStatic"]
            self.cpp_info.defines = ["VOREL_STATIC"]
            self.cpp_info.system_libs = ["advapi32"]
