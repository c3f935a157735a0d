#!/usr/bin/env bash
# Unpacks the SDK's zip far from the source tree and uses it as a host's team would: each sample and
# a project of their own, built and run from a Wine prefix that has seen nothing before.
#   package_test.sh SOURCE_FOLDER
set -euo pipefail
source=$(cd "$1" && pwd)
work=$(mktemp -d)
export WINEPREFIX=$work/wine
finish() {
  WINEPREFIX=$work/wine wineserver -k 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT
wine() { "$source/scripts/wine.sh" "$@"; }
fail() { echo "FAILED: $*" >&2; exit 1; }

zip=$("$source/scripts/package.sh" "$work" | tail -n 1)
mkdir "$work/unpacked"
(cd "$work/unpacked" && cmake -E tar xf "$zip")
sdk=$(echo "$work"/unpacked/pictavo-*-win64)
version=$(basename "$sdk" | sed 's/pictavo-\(.*\)-win64/\1/')
rm -r "${zip%.zip}"  # nothing may look for the folder it was made in

echo "== The zip"
(cd "$sdk" && sha256sum --quiet -c SHA256SUMS)
listed=$(wc -l < "$sdk/SHA256SUMS") present=$(find "$sdk" -type f | wc -l)
[ "$((listed + 1))" -eq "$present" ] || fail "SHA256SUMS lists $listed of $present files"
for binary in "$sdk"/bin/*.dll "$sdk"/bin/*.exe; do
  [ -s "$binary.debug" ] || fail "$binary has no symbols beside it"
  x86_64-w64-mingw32-objdump -h "$binary" | grep -q gnu_debuglink || fail "$binary names no symbols"
  x86_64-w64-mingw32-objdump -h "$binary" | grep -q debug_info && fail "$binary has its symbols inside"
done
"$source/tests/docs/links_test.py" "$sdk"
# The readme shows the first sample; it must be the file that is compiled below.
sed -n '/^```cpp$/,/^```$/p' "$sdk/README.md" | sed '1d;$d' | diff - "$sdk/samples/first_host/first_host.cpp" ||
  fail "the readme shows another program than samples/first_host"

build() {  # FOLDER NAME [CMAKE ARGUMENTS]
  echo "== $2"
  cmake -G Ninja -S "$1" -B "$work/build/$2" --toolchain "$source/cmake/mingw-w64.cmake" \
    -DCMAKE_PREFIX_PATH="$sdk" "${@:3}" >"$work/log" &&
    cmake --build "$work/build/$2" ${target:+--target $target} >"$work/log" || { cat "$work/log"; fail "$2 does not build"; }
}
beside() {  # runs a built program beside the DLLs
  cp "$work/build/$1" "$sdk/bin/"
  (cd "$work" && wine "$sdk/bin/$(basename "$1")" "${@:2}") || fail "$1 exits with $?"
}

cp -r "$source/tests/package/consumer" "$work/consumer"
build "$work/consumer" consumer "-DEXPECTED_VERSION=$version" -DCMAKE_EXE_LINKER_FLAGS=-static
beside consumer/linked.exe
ls "$work/build/consumer" | grep -c '\.dll$' | grep -qx 4 || fail "the DLLs are not beside the built program"
loaded=$(beside consumer/loaded.exe "Z:$sdk/bin/Pictavo.dll" | tr -d '\r')
[[ $loaded == *", version $version" ]] || fail "the loader: $loaded"

build "$sdk/samples/first_host" first_host
head -c $((1280 * 720 * 4)) /dev/zero | tr '\0' '\377' | tee "$work/frame.bgra" > "$work/title.bgra"
beside first_host/first_host.exe
cmp "$work/small.bgra" <(head -c $((640 * 360 * 4)) "$work/frame.bgra") || fail "white over white"
build "$sdk/samples/c" c
[ "$(beside c/c_host.exe | tr -d '\r' | tail -n 1)" = "result 0: add gives 228 178 138" ] || fail "the C sample's sum"
build "$sdk/samples/recipes" recipes
for program in recipes bands examples; do
  beside recipes/$program.exe
done
build "$sdk/samples/host" host
info=$(beside host/pictavo-host.exe info | tr -d '\r')
grep "^Built" <<<"$info"
missing=$(awk '/not found/ {print $1}' <<<"$info")
[ "$missing" = VKT_3DRender.dll ] || fail "the program finds no $missing"

target=frei0r_gauss build "$sdk/samples/frei0r" frei0r "-DPICTAVO_FREI0R_INCLUDE=/usr/include"
[ "$(ls "$sdk/frei0r" | wc -l)" -ge 21 ] || fail "frei0r effects are missing"

echo "== The NuGet package"
mkdir "$work/nuget"
(cd "$work/nuget" && cmake -E tar xf "$work/pictavo.$version.nupkg")
python3 - "$work/nuget" <<'PYTHON' || fail "the NuGet package"
import re, sys
from pathlib import Path
from xml.etree import ElementTree

root = Path(sys.argv[1])
for file in ("Pictavo.nuspec", "[Content_Types].xml", "_rels/.rels", "build/native/Pictavo.targets"):
    ElementTree.parse(root / file)
text = (root / "build/native/Pictavo.targets").read_text()
named = {path.replace("\\", "/") for path in re.findall(r"\$\(MSBuildThisFileDirectory\)([^;%<\"]+)", text)}
missing = [path for path in named if not (root / "build/native" / path).exists()]
present = {path.relative_to(root / "build/native").as_posix() for path in root.glob("build/native/bin/x64/*")}
print(f"{len(named)} paths named, missing: {missing}, DLLs not named: {present - named}")
sys.exit(1 if missing or present - named or len(named) < 7 else 0)
PYTHON

echo "== pkg-config"
export PKG_CONFIG_LIBDIR=$sdk/lib/pkgconfig
[ "$(pkg-config --modversion pictavo)" = "$version" ] || fail "pkg-config's version"
x86_64-w64-mingw32-g++-posix -std=c++17 -static "$work/consumer/linked.cpp" -o "$work/build/pkg.exe" \
  $(pkg-config --cflags --libs pictavo)
beside pkg.exe

echo "== A host of the other ABI, with each import library"
resources=$(clang -print-resource-dir)
for source_file in abi_host.cpp=c++17 abi_c.c=c11; do
  clang --target=x86_64-pc-windows-msvc -std=${source_file#*=} -O1 -ffreestanding -fno-exceptions -nostdinc \
    -isystem "$resources/include" -I"$sdk/include" -c "$source/tests/abi/${source_file%=*}" \
    -o "$work/${source_file%=*}.obj"
done
kernel32=$(x86_64-w64-mingw32-g++-posix -print-file-name=libkernel32.a)
for library in Pictavo.lib libPictavo.dll.a; do
  lld-link /nologo /nodefaultlib /entry:Main /subsystem:console "/out:$work/build/abi.exe" \
    "$work/abi_host.cpp.obj" "$work/abi_c.c.obj" "$sdk/lib/$library" "$kernel32"
  beside abi.exe
done
echo "The SDK works"
