# Writes the compiled shaders into a header.
#   cmake -DFOLDER=... -DHEADER=... -P embed_bytecode.cmake
file(GLOB files ${FOLDER}/*.dxbc)
set(names "")
set(table "")
set(arrays "")
foreach(file IN LISTS files)
  get_filename_component(name ${file} NAME_WE)
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(REGEX REPLACE "([^\n]{95})" "\\1\n" bytes "${bytes}")
  string(APPEND names "  k${name},\n")
  string(APPEND table "    {k${name}Bytes, sizeof(k${name}Bytes)},\n")
  string(APPEND arrays "alignas(4) inline constexpr unsigned char k${name}Bytes[] = {\n${bytes}};\n")
endforeach()
list(LENGTH files count)
file(WRITE ${HEADER} "// Made from ${FOLDER}.
#ifndef PICTAVO_D3D11_SHADER_BYTECODE_H_
#define PICTAVO_D3D11_SHADER_BYTECODE_H_
#include <cstddef>
namespace pictavo::d3d11 {
enum class Shader : std::size_t {
${names}};
inline constexpr std::size_t kShaderCount = ${count};
struct Bytecode {
  const unsigned char* data;
  std::size_t size;
};
${arrays}inline constexpr Bytecode kBytecode[kShaderCount] = {
${table}};
}  // namespace pictavo::d3d11
#endif
")
