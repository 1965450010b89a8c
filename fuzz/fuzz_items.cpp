#include "assets/item.h"
#include "fuzz_data_folder.h"

// items.xml into a fresh world whose models and sounds are small stand-ins.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz_fresh_world();
    load_items(fuzz_write_data("items.xml", data, size));
    return 0;
}
