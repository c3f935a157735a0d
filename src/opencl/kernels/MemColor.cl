// Fills rows with one word: a 32-bit pixel, or four equal bytes of a plane. Work-items: words in a
// row or more, rows.
__kernel void MemsetColor_ALL(__global uint* words, int wordsInRow, uint word) {
  const int x = (int)get_global_id(0);
  if (x >= wordsInRow) return;
  words[get_global_id(1) * (size_t)wordsInRow + x] = word;
}
