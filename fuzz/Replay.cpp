// Runs a target over inputs kept in files: REPLAY FILE_OR_FOLDER. The name on the last line is that of the input that a
// crash came from.
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsIn(const fs::path& given) {
    if (fs::is_regular_file(given)) return {given};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(given)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const fs::path& path) {
    puts(path.c_str());
    fflush(stdout);
    const size_t size = fs::file_size(path);
    const std::unique_ptr<uint8_t[]> input(new uint8_t[size]);  // to the byte, for the sanitizers
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(input.get()), static_cast<std::streamsize>(size));
    if (!file) return false;
    LLVMFuzzerTestOneInput(input.get(), size);
    return true;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FILE_OR_FOLDER\n", argv[0]);
        return 2;
    }
    const std::vector<fs::path> inputs = inputsIn(argv[1]);
    for (const fs::path& input : inputs) {
        if (replay(input)) continue;
        fprintf(stderr, "cannot read %s\n", input.c_str());
        return 1;
    }
    printf("%zu inputs\n", inputs.size());
    if (!inputs.empty()) return 0;
    fprintf(stderr, "no inputs in %s\n", argv[1]);
    return 1;
} catch (const std::exception& error) {
    fprintf(stderr, "%s\n", error.what());
    return 1;
}
