// Start-up with a copy of the shipped data from which a file is missing.
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "scenario.h"
#include "support/headless_program.h"

namespace {

namespace fs = std::filesystem;

// A copy of the shipped data in `folder`/gloamhold_data, without the sound named (none when
// empty). The scene and the item catalogue are copies of their own, so that opening them can be
// watched; everything else is a link to the original.
void copy_shipped_data_without_sound(const std::string& folder, const std::string& missing)
{
    fs::path shipped = fs::path(GLOAMHOLD_SOURCE_DIR) / "gloamhold_data";
    fs::path copy = fs::path(folder) / "gloamhold_data";
    fs::remove(copy); // the scenario's own link to the whole data
    fs::create_directories(copy / "sounds");
    for (const fs::directory_entry& entry : fs::directory_iterator(shipped)) {
        fs::path name = entry.path().filename();
        if (name == "scene.xml" || name == "items.xml")
            fs::copy_file(entry.path(), copy / name);
        else if (name != "sounds")
            fs::create_symlink(entry.path(), copy / name);
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(shipped / "sounds"))
        if (entry.path().filename() != missing)
            fs::create_symlink(entry.path(), copy / "sounds" / entry.path().filename());
}

// Notes whether anything opens a file while it is kept.
class open_watch {
public:
    explicit open_watch(const std::string& path)
        : queue(inotify_init1(IN_NONBLOCK)), watch(inotify_add_watch(queue, path.c_str(), IN_OPEN))
    {
    }
    ~open_watch() { close(queue); }
    open_watch(const open_watch&) = delete;
    open_watch& operator=(const open_watch&) = delete;

    bool watching() const { return queue >= 0 && watch >= 0; }

    bool opened() const
    {
        alignas(inotify_event) char events[4096];
        return read(queue, events, sizeof events) > 0;
    }

private:
    int queue;
    int watch;
};

using start_up = scenario;

} // namespace

TEST_F(start_up, a_missing_pl_climb01_wav_stops_the_game_before_the_scene_is_loaded)
{
    copy_shipped_data_without_sound(folder, "pl_climb01.wav");
    ASSERT_FALSE(fs::exists(file("gloamhold_data/sounds/pl_climb01.wav")));
    open_watch items(file("gloamhold_data/items.xml")), scene(file("gloamhold_data/scene.xml"));
    ASSERT_TRUE(items.watching() && scene.watching());
    headless_result run = run_headless({"-C", folder, "--ticks", "10"}, folder);
    EXPECT_EQ(run.exit_code, 3);
    EXPECT_NE(run.errors.find("start-up failed"), std::string::npos) << run.errors;
    EXPECT_FALSE(items.opened()) << "the item catalogue comes after the sounds";
    EXPECT_FALSE(scene.opened());
}

TEST_F(start_up, the_same_copy_with_every_sound_starts_and_reads_the_scene)
{
    copy_shipped_data_without_sound(folder, "");
    open_watch scene(file("gloamhold_data/scene.xml"));
    ASSERT_TRUE(scene.watching());
    headless_result run = run_headless({"-C", folder, "--ticks", "10"}, folder);
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(scene.opened());
}
