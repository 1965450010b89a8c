#include <string.h>

#include "core/file_reader.h"
#include "core/numbers.h"
#include "core/text.h"
#include "fuzz_input_file.h"

// Every content line of the input goes through the number parsers, the splitter and the count
// header rule, with limits taken from the line itself.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    platform_file file = platform_file_open(fuzz_input_file(data, size));
    if (!file)
        return 0;
    file_reader reader;
    if (reader_open(&reader, file, 16)) {
        char line[200];
        while (read_content_line(&reader, line, sizeof line)) {
            int32_t limit = static_cast<int32_t>(strlen(line) % 12) - 1;
            int32_t integer;
            float decimal;
            parse_int(line, limit, &integer);
            parse_float(line, limit, &decimal);
            char left[10], right[10];
            split_at(line, sizeof line, '=', left, sizeof left, right, sizeof right);
        }
        int32_t count;
        read_count_line(&reader, line, sizeof line, "POINTS ", &count);
        reader_close(&reader);
    }
    platform_file_close(file);
    return 0;
}
