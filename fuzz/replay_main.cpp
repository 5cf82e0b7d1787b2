// A main for fuzz targets built without libFuzzer: runs the target once on
// each file named on the command line (directories are walked), so the
// targets build with any compiler, replay their corpus in the test suite and
// run under valgrind.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int run_file(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return 1;
  }
  const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  int failures = 0;
  std::size_t runs = 0;
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path root(argv[i]);
    if (std::filesystem::is_directory(root)) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) continue;
        failures += run_file(entry.path());
        ++runs;
      }
    } else {
      failures += run_file(root);
      ++runs;
    }
  }
  std::printf("replayed %zu inputs\n", runs);
  return failures == 0 && runs > 0 ? 0 : 1;
}
