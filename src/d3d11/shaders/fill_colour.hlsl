// Fills a picture from a place to its right and lower edges.
RWTexture2D<unorm float4> txDst : register(u0);
cbuffer CSParam : register(b0) {
  int nDstSx, nDstSy;
  float fColorR, fColorG, fColorB, fColorA;
  int nDummy1, nDummy2;
};

[numthreads(32, 32, 1)]
void FillColour(uint3 id : SV_DispatchThreadID) {
  txDst[int2(nDstSx, nDstSy) + int2(id.xy)] = float4(fColorR, fColorG, fColorB, fColorA);
}
