#include "assets/model.h"
#include "fuzz_data_folder.h"

// Whatever a model file claims, loading it stays inside its blocks, and a refused one frees them all.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    model record;
    if (model_load_file(&record, fuzz_write_data("models/fuzz.mdl", data, size)))
        model_free(&record);
    return 0;
}
