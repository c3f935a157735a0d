#!/usr/bin/env bash
# Installs what building, testing and the demo need and this Debian machine lacks. The only place
# that names packages.
set -euo pipefail

case $PWD in
  *[\'\"]*) echo "setup.sh: the resource compiler takes no path with a quote: $PWD" >&2; exit 1 ;;
esac

packages=(
  cmake ninja-build g++                  # build
  g++-mingw-w64-x86-64-posix             # … for Windows
  wine wine64                            # run Windows programs
  clang lld llvm libclang-rt-14-dev      # sanitizers, a host for the other ABI, import libraries
  clang-format pkg-config
  googletest libgtest-dev libbenchmark-dev  # tests and benchmarks
  qemu-user valgrind                     # modelled old processors, and one that knows what was written
  doxygen                                # the API reference
  frei0r-plugins-dev ffmpeg melt         # the sample plug-ins, and programs that load them
  gstreamer1.0-plugins-bad gstreamer1.0-tools
  ocl-icd-libopencl1 pocl-opencl-icd     # an OpenCL runtime, which Wine hands on
  xvfb xauth libgl1 libgl1-mesa-dri      # Direct3D under Wine, on software
)

# What the benchmark compares with: scripts/setup.sh peers
[ "${1-}" != peers ] || packages+=(
  libopencv-dev libyuv-dev libpixman-1-dev libswscale-dev libavfilter-dev libgegl-dev
  libzimg-dev
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  as_root=
  if [ "$(id -u)" -ne 0 ]; then
    as_root=sudo
    command -v sudo >/dev/null || { echo "setup.sh: only root can install them, and there is no sudo" >&2; exit 1; }
  fi
  $as_root apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
