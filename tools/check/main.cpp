// gloamhold-check [DIR]: checks a data directory with the game's own loaders and prints one line
// per problem. Exit status: 0 clean, 1 problems found, 2 bad arguments.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "app/start_up.h"
#include "assets/item.h"
#include "assets/registry.h"
#include "checks.h"
#include "core/diagnostics.h"
#include "report.h"

namespace fs = std::filesystem;

namespace {

const char* const USAGE =
    "usage: gloamhold-check [DIR]\n"
    "Loads the data directory DIR (default: gloamhold_data) with the game's own loaders, in the game's\n"
    "start-up order, and prints one line per problem: \"<file>[:<line>]: <message>\".\n"
    "Exit status: 0 no problems, 1 problems found, 2 bad arguments.\n";

int bad_arguments(const char* message, const std::string& detail)
{
    fprintf(stderr, "gloamhold-check: %s%s\n%s", message, detail.c_str(), USAGE);
    return 2;
}

// The game opens its data as "gloamhold_data/..." from the working directory: work beside DIR,
// or, when DIR has another name, beside a link of that name in a folder of the checker's own.
bool work_beside(const fs::path& directory, fs::path* link_folder)
{
    std::error_code error;
    if (directory.filename() == DATA_ROOT) {
        if (directory.has_parent_path())
            fs::current_path(directory.parent_path(), error);
        return !error;
    }
    fs::path target = fs::absolute(directory, error);
    *link_folder = fs::temp_directory_path(error) / ("gloamhold-check-" + std::to_string(getpid()));
    fs::create_directories(*link_folder, error);
    if (!error)
        fs::create_directory_symlink(target, *link_folder / DATA_ROOT, error);
    if (!error)
        fs::current_path(*link_folder, error);
    return !error;
}

// The game's start-up, step by step with the game's own steps. The game stops at the first step
// that fails; the checker goes on, to find every problem, and gives the step where the game would
// stop (empty when it would start). That step always leaves a problem in the report.
std::string run_every_start_up_step()
{
    std::string first_failure;
    for (const start_up_step& step : start_up_steps) {
        int32_t reported = diagnostics_reported;
        bool ok = step.run() != 0;
        if (!ok && step.what == ITEMS_FILE)
            register_unloaded_item_keys();
        if (ok || !first_failure.empty())
            continue;
        if (diagnostics_reported == reported)
            report(step.what, 0, "the game's start-up fails here (the checker found no reason)");
        first_failure = step.what;
    }
    return first_failure;
}

} // namespace

int main(int argc, char** argv)
{
    std::string directory = DATA_ROOT;
    if (argc > 2)
        return bad_arguments("too many arguments", "");
    if (argc == 2) {
        if (strcmp(argv[1], "-h") == 0 || strcmp(argv[1], "--help") == 0) {
            fputs(USAGE, stdout);
            return 0;
        }
        if (argv[1][0] == '-')
            return bad_arguments("unknown option ", argv[1]);
        directory = argv[1];
    }
    while (directory.size() > 1 && directory.back() == '/')
        directory.pop_back();
    std::error_code error;
    if (!fs::is_directory(directory, error))
        return bad_arguments("not a directory: ", directory);

    report_show_data_root_as(directory);
    fs::path link_folder;
    if (!work_beside(directory, &link_folder)) {
        fprintf(stderr, "gloamhold-check: cannot reach %s as the game's gloamhold_data\n", directory.c_str());
        return 2;
    }
    report_to_standard_output();
    std::string stop = run_every_start_up_step();
    check_world(stop.empty());
    check_unnamed_files();
    check_dialogues();
    if (!link_folder.empty())
        fs::remove_all(link_folder, error);

    fflush(stdout);
    int32_t problems = problem_count();
    if (problems == 0)
        fprintf(stderr, "gloamhold-check: %s: no problems\n", directory.c_str());
    else
        fprintf(stderr, "gloamhold-check: %s: %d problem%s%s%s\n", directory.c_str(), static_cast<int>(problems),
                problems == 1 ? "" : "s", stop.empty() ? "" : "; the game stops at start-up at ",
                shown_path(stop).c_str());
    return problems == 0 ? 0 : 1;
}
