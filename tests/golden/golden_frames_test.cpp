// Golden frames: fixed placements in the shipped level (tests/golden/frames.txt), each drawn by the
// real gloamhold-headless and compared pixel for pixel with its committed image. One test per frame
// with the default number of render threads (one per processor), and one per frame for each of 1,
// 2, 3 and 4 threads: the frame must come out the same however many threads draw it.
//
// A frame that differs is kept in the build tree and the failure says where, so that it can be
// looked at. With GLOAMHOLD_REGENERATE_GOLDENS=1 in the environment (tests/golden/regenerate) every
// frame that differs, or has no image yet, is written over the committed one instead.
#include <gtest/gtest.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/headless_program.h"
#include "support/png_image.h"

namespace {

namespace fs = std::filesystem;

const char* const GOLDEN_FOLDER = GLOAMHOLD_SOURCE_DIR "/tests/golden";

struct golden_frame {
    std::string name;
    std::string placement;         // X,Y,Z,YAW,PITCH as --place takes it
    int tick = 0;                  // the frame drawn right after this update
    std::vector<std::string> keys; // pressed at update 0, let go at update 1
    std::string script;            // further timed input: a file under tests/golden/scripts, or empty
};

std::vector<std::string> split_keys(const std::string& list)
{
    std::vector<std::string> keys;
    if (list == "-")
        return keys;
    std::stringstream words(list);
    std::string key;
    while (std::getline(words, key, ','))
        keys.push_back(key);
    return keys;
}

// One frame a line: name, placement, tick, keys and maybe a script; '#' starts a comment line.
std::vector<golden_frame> read_golden_frames(const std::string& path, std::string* error)
{
    std::vector<golden_frame> frames;
    std::ifstream in(path);
    if (!in) {
        *error = path + ": cannot be read";
        return frames;
    }
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        std::stringstream words(line);
        golden_frame frame;
        std::string keys, extra;
        if (!(words >> frame.name) || frame.name[0] == '#')
            continue;
        if (!(words >> frame.placement >> frame.tick >> keys) || ((words >> frame.script) && (words >> extra))) {
            *error = path + ":" + std::to_string(number) +
                     ": expected a name, a placement, a tick, keys and maybe a script";
            return {};
        }
        frame.keys = split_keys(keys);
        frames.push_back(frame);
    }
    return frames;
}

std::string hex_colour(const rgb_image& image, size_t pixel)
{
    char text[8];
    snprintf(text, sizeof text, "#%02x%02x%02x", image.pixels[3 * pixel], image.pixels[3 * pixel + 1],
             image.pixels[3 * pixel + 2]);
    return text;
}

// Empty when the two images are the same size and every pixel is the same; else what differs.
std::string difference(const rgb_image& expected, const rgb_image& drawn)
{
    if (expected.width != drawn.width || expected.height != drawn.height)
        return "the size differs: " + std::to_string(drawn.width) + "x" + std::to_string(drawn.height) +
               " drawn, " + std::to_string(expected.width) + "x" + std::to_string(expected.height) + " expected";
    size_t count = 0, first = 0;
    for (size_t pixel = 0; pixel < drawn.pixels.size() / 3; ++pixel) {
        if (memcmp(&drawn.pixels[3 * pixel], &expected.pixels[3 * pixel], 3) == 0)
            continue;
        if (count++ == 0)
            first = pixel;
    }
    if (count == 0)
        return "";
    return std::to_string(count) + " pixels differ, the first at (" + std::to_string(first % drawn.width) + ", " +
           std::to_string(first / drawn.width) + "): " + hex_colour(drawn, first) + " drawn, " +
           hex_colour(expected, first) + " expected";
}

// A working folder of the frame's own under the test's working directory: the golden settings, a
// link to the shipped data, the input script; the drawn frame is left there.
class golden_frame_test : public testing::Test {
public:
    // threads: the RENDER_THREADS written into the frame's settings, or 0 to leave the default.
    golden_frame_test(golden_frame frame, int threads) : frame_(std::move(frame)), threads_(threads) {}

    void TestBody() override
    {
        std::string folder_name = frame_.name;
        if (threads_ > 0)
            folder_name += "_with_" + std::to_string(threads_) + "_threads";
        fs::path folder = fs::absolute(fs::path("golden_frames") / folder_name);
        fs::remove_all(folder);
        fs::create_directories(folder);
        fs::copy_file(fs::path(GOLDEN_FOLDER) / "settings.ini", folder / "settings.ini");
        if (threads_ > 0)
            std::ofstream(folder / "settings.ini", std::ios::app) << "RENDER_THREADS=" << threads_ << "\n";
        link_shipped_data(folder.string());
        std::ofstream(folder / "script.txt") << script();

        std::string drawn_path = (folder / "frame.png").string();
        headless_result run = run_headless({"-C", folder.string(), "--place", frame_.placement, "--script",
                                            (folder / "script.txt").string(), "--shot",
                                            std::to_string(frame_.tick) + ":" + drawn_path},
                                           folder.string());
        ASSERT_EQ(run.exit_code, 0) << "gloamhold-headless failed in " << folder << "\n" << run.output << run.errors;

        rgb_image drawn = read_png(drawn_path);
        ASSERT_FALSE(drawn.pixels.empty()) << drawn_path << " cannot be read";
        std::string golden_path = std::string(GOLDEN_FOLDER) + "/" + frame_.name + ".png";
        rgb_image expected = read_png(golden_path);
        std::string differs = expected.pixels.empty() ? "there is no readable image yet" : difference(expected, drawn);
        if (differs.empty())
            return;
        const char* regenerate = getenv("GLOAMHOLD_REGENERATE_GOLDENS");
        // Only the frames drawn with the default threads are written: the others must then match them.
        if (regenerate && std::string(regenerate) == "1" && threads_ == 0) {
            fs::copy_file(drawn_path, golden_path, fs::copy_options::overwrite_existing);
            printf("%s: %s; written over %s: look at it before committing it\n", frame_.name.c_str(),
                   differs.c_str(), golden_path.c_str());
            return;
        }
        ADD_FAILURE() << frame_.name << ": " << differs << ".\n  golden: " << golden_path
                      << "\n  drawn:  " << drawn_path
                      << "\n  When the change is meant, tests/golden/regenerate writes the drawn frames over the goldens.";
    }

private:
    std::string script() const
    {
        std::string text;
        for (const std::string& key : frame_.keys)
            text += "0 down " + key + "\n";
        for (const std::string& key : frame_.keys)
            text += "1 up " + key + "\n";
        if (!frame_.script.empty())
            text += read_all(std::string(GOLDEN_FOLDER) + "/scripts/" + frame_.script);
        return text;
    }

    golden_frame frame_;
    int threads_;
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    std::string error;
    std::vector<golden_frame> frames = read_golden_frames(std::string(GOLDEN_FOLDER) + "/frames.txt", &error);
    if (!error.empty()) {
        fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    for (const golden_frame& frame : frames)
        testing::RegisterTest("golden_frame", frame.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [frame]() -> testing::Test* { return new golden_frame_test(frame, 0); });
    static const char* const thread_suites[] = {"golden_frame_drawn_by_1_thread", "golden_frame_drawn_by_2_threads",
                                                "golden_frame_drawn_by_3_threads", "golden_frame_drawn_by_4_threads"};
    for (int threads = 1; threads <= 4; ++threads)
        for (const golden_frame& frame : frames)
            testing::RegisterTest(thread_suites[threads - 1], frame.name.c_str(), nullptr, nullptr, __FILE__,
                                  __LINE__, [frame, threads]() -> testing::Test* {
                                      return new golden_frame_test(frame, threads);
                                  });
    return RUN_ALL_TESTS();
}
