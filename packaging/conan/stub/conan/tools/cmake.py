import os
import subprocess


def cmake_layout(recipe):
    pass


class CMakeToolchain:
    def __init__(self, recipe):
        self.cache_variables = {"BUILD_SHARED_LIBS": recipe.options.shared}
        recipe.toolchain = self

    def generate(self):
        pass


class CMakeDeps(CMakeToolchain):
    def __init__(self, recipe):
        pass


class CMake:
    def __init__(self, recipe):
        self.recipe = recipe

    def configure(self):
        variables = dict(self.recipe.toolchain.cache_variables, CMAKE_BUILD_TYPE="Release")
        options = [f"-D{k}={'ON' if v is True else 'OFF' if v is False else v}" for k, v in variables.items()]
        self.run("-S", self.recipe.source_folder, "-B", self.recipe.build_folder, "-G", "Ninja", *options)

    def build(self):
        self.run("--build", self.recipe.build_folder)

    def install(self):
        self.run("--install", self.recipe.build_folder, "--prefix", self.recipe.package_folder)

    def run(self, *arguments):
        subprocess.run(["cmake", *arguments], check=True, stdout=subprocess.DEVNULL, env=os.environ)
