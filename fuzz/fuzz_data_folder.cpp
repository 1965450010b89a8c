#include "fuzz_data_folder.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "assets/start_up.h"
#include "assets/texture.h"
#include "support/asset_reset.h"

namespace fs = std::filesystem;

namespace {

std::string scratch;

// One triangle with a subset and a wooden collider: enough for every use the world makes of a model.
const char STAND_IN_MODEL[] = "POINTS 3\nTRIANGLES 1\nTEXCOORDS 0\nWEIGHTS 0\nSUBSETS 1\nCOLLIDERS 1\nOCCLUDERS 0\n"
                              "0 0 0\n1 0 0\n0 1 0\n0 1 2\nnone 0 1\nCOLLISION_TRIANGLES 1\n0 1 2\nwood 0 1\n";

// Four 8-bit mono samples at 8 kHz.
std::string stand_in_sound()
{
    const unsigned char header[] = {'R', 'I', 'F', 'F', 40, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ',
                                    16, 0, 0, 0, 1, 0, 1, 0, 0x40, 0x1F, 0, 0, 0x40, 0x1F, 0, 0, 1, 0, 8, 0,
                                    'd', 'a', 't', 'a', 4, 0, 0, 0, 0x80, 0xC0, 0x80, 0x40};
    return std::string(reinterpret_cast<const char*>(header), sizeof header);
}

void write(const fs::path& path, const std::string& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

void remove_scratch()
{
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
}

} // namespace

void fuzz_enter_data_folder()
{
    if (!scratch.empty())
        return;
    scratch = (fs::temp_directory_path() / ("gloamhold_fuzz_data_" + std::to_string(getpid()))).string();
    fs::path shipped = fs::path(GLOAMHOLD_SOURCE_DIR) / "gloamhold_data";
    fs::path data = fs::path(scratch) / "gloamhold_data";
    fs::create_directories(data);
    for (const char* folder : {"animations", "dialogues"})
        fs::copy(shipped / folder, data / folder, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    fs::copy_file(shipped / "keep.bsp", data / "keep.bsp", fs::copy_options::overwrite_existing);
    for (const fs::directory_entry& entry : fs::directory_iterator(shipped / "models"))
        write(data / "models" / entry.path().filename(), STAND_IN_MODEL);
    for (const fs::directory_entry& entry : fs::directory_iterator(shipped / "sounds"))
        write(data / "sounds" / entry.path().filename(), stand_in_sound());
    fs::current_path(scratch);
    atexit(remove_scratch);
}

const char* fuzz_write_data(const char* relative, const uint8_t* data, size_t size)
{
    static std::string path;
    fuzz_enter_data_folder();
    path = std::string("gloamhold_data/") + relative;
    write(path, std::string(reinterpret_cast<const char*>(data), size));
    return path.c_str();
}

void fuzz_fresh_world()
{
    reset_assets();
    reserve_empty_model_and_animation();
    reserve_empty_item();
    make_fallback_texture();
}
