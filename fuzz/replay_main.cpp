// Replays fuzz inputs without fuzzing: every file of the given folders (and every file given)
// goes once through the target, in name order, so that a sanitizer build keeps catching what
// fuzzing once found.
#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fs = std::filesystem;

int main(int argc, char** argv)
{
    std::vector<fs::path> inputs;
    // Absolute: the targets that load through gloamhold_data/ move into a scratch folder.
    for (int i = 1; i < argc; ++i) {
        fs::path given = fs::absolute(argv[i]);
        if (fs::is_directory(given)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(given))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
        } else {
            inputs.push_back(given);
        }
    }
    std::sort(inputs.begin(), inputs.end());
    if (inputs.empty()) {
        fprintf(stderr, "no inputs to replay\n");
        return 1;
    }
    for (const fs::path& input : inputs) {
        std::ifstream file(input, std::ios::binary);
        std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    printf("replayed %zu inputs\n", inputs.size());
    return 0;
}
