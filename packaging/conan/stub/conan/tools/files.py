import fnmatch
import glob
import os
import pathlib
import shutil


def load(recipe, path):
    return pathlib.Path(path).read_text()


def copy(recipe, pattern, src, dst, excludes=()):
    """Copies what matches in all folders below src; a pattern without a folder matches names, as in Conan."""
    for folder, folders, files in os.walk(src):
        below = os.path.relpath(folder, src)
        folders[:] = [f for f in folders if not excluded(os.path.join(below, f, ""), excludes) and f != ".git"]
        for name in files:
            relative = os.path.normpath(os.path.join(below, name))
            if fnmatch.fnmatch(name, pattern) and not excluded(relative, excludes):
                target = os.path.join(dst, relative)
                os.makedirs(os.path.dirname(target), exist_ok=True)
                shutil.copy2(os.path.join(folder, name), target)


def excluded(path, patterns):
    return any(fnmatch.fnmatch(os.path.normpath(path) + end, p) for p in patterns for end in ("", "/"))


def collect_libs(recipe):
    names = glob.glob(os.path.join(recipe.package_folder, "lib*", "**", "lib*.a"), recursive=True)
    names += glob.glob(os.path.join(recipe.package_folder, "lib*", "**", "lib*.so"), recursive=True)
    return sorted({os.path.basename(n)[3:].rsplit(".", 1)[0] for n in names})
