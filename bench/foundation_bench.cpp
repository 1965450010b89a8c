// How fast the text scanning under every loader runs: number parsing, line reading, XML.
#include <benchmark/benchmark.h>

#include <stdio.h>

#include <string>

#include "assets/xml.h"
#include "core/file_reader.h"
#include "core/numbers.h"

static void parse_float_vertex_component(benchmark::State& state)
{
    float value;
    for (auto _ : state) {
        parse_float("-12.345678", -1, &value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(parse_float_vertex_component);

static void parse_int_index(benchmark::State& state)
{
    int32_t value;
    for (auto _ : state) {
        parse_int("123456", -1, &value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(parse_int_index);

static std::string write_bench_file(const char* name, const std::string& bytes)
{
    FILE* file = fopen(name, "wb");
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
    return name;
}

// A model-sized text file: 10,000 lines of three numbers.
static void read_lines_of_a_model_file(benchmark::State& state)
{
    std::string text;
    for (int i = 0; i < 10000; ++i)
        text += "1.25 -3.5 " + std::to_string(i) + ".125\r\n";
    std::string path = write_bench_file("bench_lines.txt", text);
    char line[200];
    for (auto _ : state) {
        platform_file file = platform_file_open(path.c_str());
        file_reader reader;
        reader_open(&reader, file, 4096);
        int lines = 0;
        while (read_content_line(&reader, line, sizeof line))
            ++lines;
        reader_close(&reader);
        platform_file_close(file);
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(read_lines_of_a_model_file)->Unit(benchmark::kMicrosecond);

// A scene-sized XML file: 500 objects in 50 rooms.
static void load_scene_sized_xml(benchmark::State& state)
{
    std::string text = "<?xml version=\"1.0\"?>\r\n<scene sky=\"night\">\r\n";
    for (int room = 0; room < 50; ++room) {
        text += "  <room name=\"room" + std::to_string(room) + "\" model=\"room.mdl\">\r\n";
        for (int object = 0; object < 10; ++object)
            text += "    <static model=\"crate.mdl\" position=\"1.5 0 -2.25\" yaw=\"90\"/>\r\n";
        text += "  </room>\r\n";
    }
    text += "</scene>\r\n";
    std::string path = write_bench_file("bench_scene.xml", text);
    for (auto _ : state) {
        xml_document document;
        xml_load_file(&document, path.c_str());
        xml_free_document(&document);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(load_scene_sized_xml)->Unit(benchmark::kMicrosecond);
