// Differential fuzzing: an operation, its arguments and its pixels from the input, run at every
// level in guarded memory. The sanitizers see the rest.
#include <cstdio>
#include <cstdlib>

#include "../kernels/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pictavo::test;
  Input input({data, size});
  const auto operations = Operations();
  const size_t index = input.Byte() % operations.size();
  const std::string wrong = Disagreement(DrawCase(operations[index], &input));
  if (!wrong.empty()) std::fprintf(stderr, "%s\n", wrong.c_str()), std::abort();
  return 0;
}
