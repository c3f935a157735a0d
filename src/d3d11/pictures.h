// The pictures of a call, and regions of them.
#ifndef PICTAVO_D3D11_PICTURES_H_
#define PICTAVO_D3D11_PICTURES_H_

#include <d3d11.h>

#include <algorithm>

#include "d3d11/d3d11_base.h"
#include "d3d11/shader_blocks.h"

namespace pictavo::d3d11 {

inline constexpr i32 kLargestTexture = D3D11_REQ_TEXTURE2D_U_OR_V_DIMENSION;
inline constexpr u32 kInAndOut = D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_UNORDERED_ACCESS;

struct Pictures {
  Picture dst, src;
};

/// What the textures of a call must have been made for: D3D11_BIND flags, of which one will do; any
/// texture without.
struct BindFlags {
  u32 dst = 0, src = 0;
};

/// Checks a call and finds its textures, without a source where the operation has none. @return the
/// code to refuse the call with, or PICTAVO_S_OK
u32 OpenTextures(const D3DCall& call, bool hasSource, const BindFlags& flags, Pictures* pictures);

/// The same with views of them, for shaders.
u32 OpenPictures(const D3DCall& call, bool hasSource, Pictures* pictures);

/// As above, with one of the operation's parameter records, which must not be null.
template <typename Param>
u32 OpenPictures(const D3DCall& call, const Param* param, Pictures* pictures,
                 bool hasSource = true) {
  return param == nullptr ? PICTAVO_E_POINTER : OpenPictures(call, hasSource, pictures);
}

/// Makes a picture's view to read it, and to write it.
u32 CreateInput(ID3D11Device* device, Picture* picture);
u32 CreateOutput(ID3D11Device* device, Picture* picture);

D3D11_TEXTURE2D_DESC DescOf(const Picture& picture);

bool BothColourOrBothPlanes(const Pictures& pictures);
bool AnyPlane(const Pictures& pictures);

/// The size that both pictures have in common.
i32 CommonWidth(const Pictures& pictures);
i32 CommonHeight(const Pictures& pictures);

/// What remains of a region along one axis.
struct Stretch {
  i64 dst, src, length;

  /// With a margin to either side, as far as the whole of it has one.
  Stretch WithMargin(i64 margin, const Stretch& whole) const {
    const i64 before = std::min(margin, dst - whole.dst);
    const i64 after = std::min(margin, whole.dst + whole.length - dst - length);
    return {dst - before, src - before, before + length + after};
  }

  /// Inside a destination of a size …
  Stretch InDestination(i64 size) const {
    const i64 begin = std::max<i64>(0, -dst);
    return {dst + begin, src + begin, std::min(length, size - dst) - begin};
  }
  /// … and inside a source.
  Stretch InSource(i64 size) const {
    const i64 begin = std::max<i64>(0, -src);
    return {dst + begin, src + begin, std::min(length, size - src) - begin};
  }
};

struct Region {
  Stretch x, y;

  Region(const Stretch& columns, const Stretch& rows) : x(columns), y(rows) {}
  explicit Region(const D3DRegion& r) : x{r.dstX, r.srcX, r.width}, y{r.dstY, r.srcY, r.height} {}

  Region& InDestination(const Picture& dst) {
    x = x.InDestination(dst.width);
    y = y.InDestination(dst.height);
    return *this;
  }
  Region& InSource(const Picture& src) {
    x = x.InSource(src.width);
    y = y.InSource(src.height);
    return *this;
  }

  bool Empty() const { return x.length <= 0 || y.length <= 0; }
};

/// The region for a shader, with the pictures' formats.
RegionCopyBlock BlockOf(const Region& region, const Pictures& pictures);

}  // namespace pictavo::d3d11

#endif  // PICTAVO_D3D11_PICTURES_H_
