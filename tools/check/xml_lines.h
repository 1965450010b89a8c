// Where the elements of an XML data file stand. The game's XML tree keeps no lines, so the file
// is scanned for its start tags, which come in the same order as a depth-first walk of the tree.
#pragma once

#include <stdint.h>

#include <map>
#include <string>

#include "assets/xml.h"

struct xml_file {
    std::string path;
    xml_document document;
    int loaded;                                // what the game's XML reader said
    std::map<const xml_node*, int32_t> lines; // the line of each element's start tag
};

// Reads the file with the game's XML reader and finds its elements' lines; a file the reader
// refuses is reported at the line where it stopped.
void xml_file_read(xml_file* file, const std::string& path);
void xml_file_release(xml_file* file);

// The line of an element's start tag, 0 when unknown.
int32_t xml_line(const xml_file* file, const xml_node* node);
