// Runs a fuzz target over the files of a folder, and over many more inputs: each of them with pieces replaced by
// others'.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

constexpr int kMixed = 4000;

void Run(const std::string &input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(input.data()), input.size());
}

} // namespace

int main(int argc, char **argv)
{
    std::map<std::string, std::string> files; // in an order that does not depend on the file system
    for (int i = 1; i < argc; ++i) {
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            files[entry.path()] = {std::istreambuf_iterator<char>(file), {}};
        }
    }
    std::vector<std::string> inputs;
    for (const auto &[name, input] : files) {
        Run(input);
        inputs.push_back(input);
    }
    std::mt19937 random(4711);
    for (int round = 0; round < kMixed && !inputs.empty(); ++round) {
        std::string input = inputs[random() % inputs.size()];
        for (auto edits = 1 + random() % 12; edits > 0; --edits) {
            const std::string &other = inputs[random() % inputs.size()];
            input.replace(random() % (input.size() + 1), random() % 6, other, random() % (other.size() + 1),
                          random() % 12);
        }
        Run(input);
    }
    std::printf("%zu inputs\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
