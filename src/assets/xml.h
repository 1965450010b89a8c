// A small, strict reader for the XML that the game's own data files use (items.xml, scene.xml):
// no entities, no character references, no CDATA, double-quoted values only, and a start tag on
// one line. The data files are written to fit these limits.
#pragma once

#include <stdint.h>

enum {
    XML_NAME_CAPACITY = 64,    // names of at most 62 characters are accepted
    XML_TEXT_CAPACITY = 512,   // at most 510 characters of text
    XML_VALUE_CAPACITY = 128,  // attribute values of at most 126 characters
    XML_ARRAY_GROWTH = 4,      // arrays start at one entry and grow by four
    XML_DEPTH_LIMIT = 256,     // elements nested deeper fail the file: each level is a call deeper
};

struct xml_attribute {
    char name[XML_NAME_CAPACITY];
    char value[XML_VALUE_CAPACITY];
};

struct xml_node {
    int32_t child_count;
    xml_node* children;          // heap block in document order, or null
    int32_t attribute_count;
    xml_attribute* attributes;   // heap block in document order, or null
    char name[XML_NAME_CAPACITY];
    char text[XML_TEXT_CAPACITY]; // the element's own text pieces, joined, leading white space trimmed
    int32_t line;                 // the line (from 1) of its start tag, for reports
};

struct xml_document {
    int32_t node_count;
    xml_node* nodes; // the top-level elements
};

// 1 when the whole file parsed; 0 when it cannot be opened or breaks a rule (the document is then
// empty). A broken rule is reported at its line; a file that cannot be opened is not (whoever
// named it says it is missing).
int xml_load_file(xml_document* document, const char* filename);
// After xml_load_file gave 0: the line (from 1) on which the rule was broken, or 0 when the file
// could not be opened.
extern int32_t xml_error_line;

// Releases every block of the tree; 1, or 0 as soon as the heap refuses a release.
int xml_free_document(xml_document* document);

// Element and attribute names compare without regard to case: <Room> and <room> are one element.
int xml_name_is(const char* name, const char* wanted);

// The value of the first attribute called `name` (any case), or null.
const char* xml_attribute_value(const xml_node* node, const char* name);
