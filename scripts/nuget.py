#!/usr/bin/env python3
"""Makes a NuGet package of an unpacked SDK, for Visual Studio's C++ projects.
  nuget.py SDK_FOLDER PACKAGE.nupkg VERSION
It holds the DLLs, the headers, the import library for Visual Studio's linker, the samples and the
documents; cmake/Pictavo.targets says how a project takes them."""
import sys
import zipfile
from pathlib import Path

SDK, PACKAGE, VERSION = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
TARGETS = Path(__file__).resolve().parent.parent / "cmake/Pictavo.targets"
HEADING = '<?xml version="1.0" encoding="utf-8"?>\n'

NUSPEC = HEADING + f"""\
<package xmlns="http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd">
  <metadata>
    <id>Pictavo</id>
    <version>{VERSION}</version>
    <authors>The Pictavo developers</authors>
    <description>Image processing for video-editing hosts on 64-bit Windows.</description>
    <readme>README.md</readme>
    <tags>native image video</tags>
  </metadata>
</package>
"""
RELATIONS = HEADING + """\
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Type="http://schemas.microsoft.com/packaging/2010/07/manifest" Target="/Pictavo.nuspec" Id="R1" />
</Relationships>
"""


def place(path):
    """Where a file of the SDK lies in the package; nothing for what is only for other build tools."""
    folder, name = path.parts[0], path.name
    if folder == "bin":
        return f"build/native/bin/x64/{name}" if path.suffix == ".dll" else None
    if folder == "lib":
        return f"build/native/lib/x64/{name}" if path.suffix == ".lib" else None
    if folder == "include":
        return f"build/native/{path.as_posix()}"
    return None if folder in ("frei0r", "SHA256SUMS") else path.as_posix()


def types(names):
    suffixes = sorted({Path(name).suffix[1:] for name in names} - {""} | {"rels", "nuspec", "targets"})
    bare = [name for name in names if not Path(name).suffix]
    return HEADING + '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">\n' + "".join(
        f'  <Default Extension="{suffix}" ContentType="application/octet" />\n' for suffix in suffixes) + "".join(
        f'  <Override PartName="/{name}" ContentType="application/octet" />\n' for name in bare) + "</Types>\n"


files = {place(path.relative_to(SDK)): path for path in sorted(SDK.rglob("*")) if path.is_file()}
files.pop(None, None)
with zipfile.ZipFile(PACKAGE, "w", zipfile.ZIP_DEFLATED) as package:
    package.writestr("[Content_Types].xml", types(files))
    package.writestr("_rels/.rels", RELATIONS)
    package.writestr("Pictavo.nuspec", NUSPEC)
    package.write(TARGETS, "build/native/Pictavo.targets")
    for name, path in files.items():
        package.write(path, name)
