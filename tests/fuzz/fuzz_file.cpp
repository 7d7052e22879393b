// Arbitrary bytes as a model file: open, walk, check, save elsewhere, reopen.
#include <cstdio>

#include "fuzz_support.h"

using namespace tessmeta::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = ScratchFile("input.zmf");
    RemoveModelFile(path);
    std::FILE* f = std::fopen(path.c_str(), "wb");
    Require(f != nullptr, "cannot write the input file");
    if (size) std::fwrite(data, 1, size, f);
    std::fclose(f);
    OpenWalkSaveReopen(path);
    return 0;
}
