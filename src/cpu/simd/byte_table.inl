// A table of 256 bytes over V, for each instruction set from SSE4.1 on.

/// Looks up all bytes of a vector at once, sixteen entries a shuffle.
class ByteTable {
 public:
  explicit ByteTable(const u8 (&table)[256]) {
    for (size_t i = 0; i < 16; ++i) {
      entries_[i] = LoadLanes([&](i64) { return table + 16 * i; });
    }
  }

  V operator[](V bytes) const {
    // A shuffle looks at a byte's low four bits, and gives 0 where the highest is set; a selection
    // looks at the highest alone. Bits that cross from a byte to its neighbour stay below it.
    const V upper = bytes ^ V::All32(0x80808080);
    const V bit4 = ShiftLeft16(bytes, 3), bit5 = ShiftLeft16(bytes, 2),
            bit6 = ShiftLeft16(bytes, 1);
    const auto entry = [&](size_t i) {
      return ShuffleBytes(entries_[i], bytes) | ShuffleBytes(entries_[i + 8], upper);
    };
    const auto two = [&](size_t i) { return Select(bit4, entry(i + 1), entry(i)); };
    const auto four = [&](size_t i) { return Select(bit5, two(i + 2), two(i)); };
    return Select(bit6, four(4), four(0));
  }

 private:
  V entries_[16];
};
