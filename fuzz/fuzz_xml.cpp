#include "assets/xml.h"
#include "fuzz_input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    xml_document document;
    if (xml_load_file(&document, fuzz_input_file(data, size)))
        xml_free_document(&document);
    return 0;
}
