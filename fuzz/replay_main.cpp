// Feeds every file of the folders on the command line to a fuzz target, and the empty input.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

static void feed(const std::string& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

int main(int argc, char** argv) {
    feed("");
    for (int i = 1; i < argc; ++i) {
        for (const auto& file : std::filesystem::directory_iterator(argv[i])) {
            std::printf("%s\n", file.path().c_str());
            std::fflush(stdout);
            std::ifstream stream(file.path(), std::ios::binary);
            feed({std::istreambuf_iterator<char>(stream), {}});
        }
    }
}
