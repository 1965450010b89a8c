// The real gloamhold-headless program, started as a process of its own, for whole-run tests.
// Needs GLOAMHOLD_HEADLESS_PROGRAM (the executable) and GLOAMHOLD_SOURCE_DIR (where the shipped
// gloamhold_data/ is committed) defined by the build.
#pragma once

#include <string>
#include <vector>

#include "support/temp_files.h" // read_all, for what the program wrote

struct headless_result {
    int exit_code;      // the program's exit status; -1 when it did not exit normally
    std::string output; // what it wrote to stdout
    std::string errors; // what it wrote to stderr
};

// The game starts from the shipped data wherever it runs: gives `folder` a link to it (once).
void link_shipped_data(const std::string& folder);

// Runs the program with these arguments from the current working directory; its stdout and
// stderr pass through files in `folder`.
headless_result run_headless(const std::vector<std::string>& arguments, const std::string& folder);
