// The sum of histogram.cpp over V, included once for each instruction set.

inline i64 VectorSum(const u8* bytes, i64 count) {
  V sums = V::Zero();
  for (; count >= kVectorBytes; count -= kVectorBytes, bytes += kVectorBytes)
    sums = Add64(sums, SumEights(V::Load(bytes)));
  i64 lanes[kVectorBytes / 8];
  sums.Store(reinterpret_cast<u8*>(lanes));
  return std::accumulate(std::begin(lanes), std::end(lanes), Sum(bytes, count));
}
