#!/usr/bin/env python3
"""Stages the NuGet package from the archive for Windows, as `nuget pack` would: check.py ARCHIVE STAGE

Each pattern of tessarn.nuspec must match files of the archive, and each file that the targets name must be staged.
"""
import fnmatch
import pathlib
import re
import sys
import xml.etree.ElementTree as xml
import zipfile

HERE = pathlib.Path(__file__).resolve().parent
NAMESPACE = "{http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd}"


def main():
    archive, stage = zipfile.ZipFile(sys.argv[1]), pathlib.Path(sys.argv[2])
    version = re.fullmatch(r"tessarn-(.*)-windows-x64\.zip", pathlib.Path(sys.argv[1]).name).group(1)
    inside = f"../../build/package/tessarn-{version}-windows-x64/"  # where the archive is unpacked
    names = {inside + n.split("/", 1)[1]: n for n in archive.namelist() if not n.endswith("/")}
    root = xml.parse(HERE / "tessarn.nuspec").getroot()
    for field in ("id", "version", "authors", "description"):
        assert root.findtext(f"{NAMESPACE}metadata/{NAMESPACE}{field}"), f"the field {field} is missing"
    for file in root.iter(f"{NAMESPACE}file"):
        pattern = file.get("src").replace("\\", "/").replace("$version$", version)
        target = stage / file.get("target").replace("\\", "/")
        found = [n for n in names if fnmatch.fnmatch(n, pattern)]
        if (HERE / pattern).is_file():
            put(target / pattern, (HERE / pattern).read_bytes())
        elif not found:
            sys.exit(f"the archive has nothing for {file.get('src')}")
        fixed = pattern.split("**")[0] if "**" in pattern else pattern.rsplit("/", 1)[0] + "/"
        for name in found:
            put(target / name[len(fixed) :], archive.read(names[name]))
    targets = stage / "build" / "native" / "tessarn.targets"
    text = targets.read_text()
    xml.fromstring(text.encode())
    named = set(re.findall(r"\$\(MSBuildThisFileDirectory\)([\w\\.]+)", text))
    assert len(named) >= 3
    for name in named:
        if not (targets.parent / name.replace("\\", "/")).exists():
            sys.exit(f"the targets name {name}, which the package has not")
    assert (targets.parent / "include" / "tessarn" / "tessarn.h").exists(), "no headers"
    print(f"{sum(p.is_file() for p in stage.rglob('*'))} files in the package for NuGet")


def put(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


if __name__ == "__main__":
    main()
