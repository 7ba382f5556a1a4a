// Runs a target over the inputs kept in a folder. The last line names the input that a crash came from.
#include <stdint.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : ".")) {
        puts(entry.path().c_str());
        fflush(stdout);
        std::ifstream file(entry.path(), std::ios::binary);
        std::vector<char> input(std::istreambuf_iterator<char>(file), {});
        input.shrink_to_fit();  // to the byte, for the sanitizers
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
        ++inputs;
    }
    printf("%d inputs\n", inputs);
    return inputs == 0 ? 1 : 0;
}
