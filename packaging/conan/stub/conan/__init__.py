"""Stand-ins for the classes and functions of Conan 2 that the recipes call, as Conan's manual describes them; run.py uses
them where there is no Conan. They know a release build on Linux."""
from types import SimpleNamespace


class Values(SimpleNamespace):
    def rm_safe(self, name):
        self.__dict__.pop(name, None)


class Information(SimpleNamespace):
    def set_property(self, name, value):
        self.properties[name] = value


class ConanFile:
    def __init__(self, recipe_folder, shared):
        self.recipe_folder = str(recipe_folder)
        self.settings = Values(os="Linux", compiler="gcc", build_type="Release", arch="x86_64")
        self.options = Values(**dict(getattr(self, "default_options", {}), shared=shared))
        self.cpp_info = Information(properties={})
        self.cpp = SimpleNamespace(build=SimpleNamespace(bindir="."))
