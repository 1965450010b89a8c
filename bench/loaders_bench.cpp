// How long the loaders take over typical assets: a 1,000-triangle model (texture coordinates, one
// subset, a collider) and a 256 x 256 PNG decoded into texels, with and without dithering.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "assets/model.h"
#include "assets/texture.h"
#include "core/settings.h"
#include "support/media_files.h"

namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

// A 20 x 25 grid of quads: 546 points and 1,000 triangles.
std::string grid_model()
{
    const int columns = 20, rows = 25, points = (columns + 1) * (rows + 1), triangles = 2 * columns * rows;
    std::string text = "POINTS " + std::to_string(points) + "\nTRIANGLES " + std::to_string(triangles) +
                       "\nTEXCOORDS " + std::to_string(points) + "\nWEIGHTS 0\nSUBSETS 1\nCOLLIDERS 1\nOCCLUDERS 0\n";
    for (int y = 0; y <= rows; ++y)
        for (int x = 0; x <= columns; ++x)
            text += std::to_string(x * 0.25) + " " + std::to_string((x * y % 7) * 0.01) + " " +
                    std::to_string(y * 0.25) + "\n";
    std::string faces;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x) {
            int a = y * (columns + 1) + x, b = a + 1, c = a + columns + 1, d = c + 1;
            faces += std::to_string(a) + " " + std::to_string(c) + " " + std::to_string(b) + "\n";
            faces += std::to_string(b) + " " + std::to_string(c) + " " + std::to_string(d) + "\n";
        }
    text += faces;
    for (int y = 0; y <= rows; ++y)
        for (int x = 0; x <= columns; ++x)
            text += std::to_string(x / 20.0) + " " + std::to_string(y / 25.0) + "\n";
    text += faces; // texture coordinates indexed like the points
    text += "stone.png 0 " + std::to_string(triangles) + "\n";
    text += "COLLISION_TRIANGLES " + std::to_string(triangles) + "\n" + faces;
    text += "stone 0 " + std::to_string(triangles) + "\n";
    return text;
}

// The data folder of the benchmarks, made once; the loaders' relative paths land in it.
void enter_bench_data()
{
    static bool made = false;
    if (made)
        return;
    fs::path folder = fs::temp_directory_path() / "gloamhold_bench_loaders";
    write(folder / "gloamhold_data/models/grid.mdl", grid_model());
    write(folder / "gloamhold_data/textures/stone.png",
          encode_bgra_png(256, 256, test_pattern_bgra(256, 256)));
    fs::current_path(folder);
    made = true;
}

void load_model_of_1000_triangles(benchmark::State& state)
{
    enter_bench_data();
    for (auto _ : state) {
        model m;
        if (!model_load_file(&m, "gloamhold_data/models/grid.mdl")) {
            state.SkipWithError("the model did not load");
            break;
        }
        benchmark::DoNotOptimize(m.bounds_max);
        model_free(&m);
    }
}
BENCHMARK(load_model_of_1000_triangles)->Unit(benchmark::kMicrosecond);

void decode_png_of_256_by_256(benchmark::State& state)
{
    enter_bench_data();
    TEXTURE_DITHERING = static_cast<int32_t>(state.range(0));
    for (auto _ : state) {
        texture t = {};
        if (!texture_load_file(&t, "gloamhold_data/textures/stone.png")) {
            state.SkipWithError("the texture did not load");
            break;
        }
        benchmark::DoNotOptimize(t.texels[0]);
        texture_free(&t);
    }
    TEXTURE_DITHERING = 0;
}
BENCHMARK(decode_png_of_256_by_256)->Arg(0)->Arg(1)->ArgName("dithering")->Unit(benchmark::kMicrosecond);

} // namespace
