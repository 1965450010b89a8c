// Files that a test writes for the code under test to read, in a folder of its own, and files read
// back whole.
#pragma once

#include <string>

// A fresh, empty folder for the running test (under the working directory, so the same relative
// paths work natively and under Wine); tests that need a current directory change into it.
std::string test_folder();

// Writes `bytes` exactly (no line-ending translation) to `path`; returns the path.
std::string write_file(const std::string& path, const std::string& bytes);

// The whole file, as bytes; empty when it cannot be read.
std::string read_all(const std::string& path);
