// Fills a plane from a place to its right and lower edges.
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  int nDstSx, nDstSy;
  float fColorA;
  int nDummy1;
};

[numthreads(32, 32, 1)]
void FillPlane(uint3 id : SV_DispatchThreadID) {
  txDst[int2(nDstSx, nDstSy) + int2(id.xy)] = float4(fColorA, 0.0, 0.0, 0.0);
}
