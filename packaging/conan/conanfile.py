"""Conan 2: builds the sources in which this recipe lies.

    conan create packaging/conan
"""
import os
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import collect_libs, copy, load


class TessarnConan(ConanFile):
    name = "tessarn"
    description = "Numeric classes for measurement and geometry software, with the same bits on every machine"
    package_type = "library"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": False, "fPIC": True}
    # The owner has named no licence, so the recipe has no field for one.

    def _root(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        header = load(self, os.path.join(self._root(), "include", "tessarn", "version.h"))
        self.version = ".".join(re.findall(r"#define TESSARN_VERSION_\w+ (\d+)", header))

    def export_sources(self):
        for pattern in (
            "CMakeLists.txt",
            "*.cpp",
            "*.h",
            "*.inl",
            "*.cmake",
            "*.in",
            "*.map",
            "*.py",
            "*.natvis",
            "*.rc*",
        ):
            copy(
                self,
                pattern,
                src=self._root(),
                dst=self.export_sources_folder,
                excludes=("build*", "tests/*", "bench/*", "fuzz/*", "examples/*", "packaging/*", "docs/*"),
            )

    def config_options(self):
        if self.settings.os == "Windows":
            del self.options.fPIC

    def configure(self):
        if self.options.shared:
            self.options.rm_safe("fPIC")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)  # sets BUILD_SHARED_LIBS
        for option in ("TESSARN_TESTS", "TESSARN_EXAMPLES", "TESSARN_SELFCHECK"):
            toolchain.cache_variables[option] = False
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.libs = collect_libs(self)
        self.cpp_info.set_property("cmake_file_name", "tessarn")
        self.cpp_info.set_property("cmake_target_name", "tessarn::tessarn")
        self.cpp_info.set_property("pkg_config_name", "tessarn")
        if self.settings.os == "Windows" and not self.options.shared:
            self.cpp_info.defines = ["TESSARN_STATIC"]
