#include "assets/xml.h"

#include <stdarg.h>
#include <string.h>

#include "core/diagnostics.h"
#include "core/file_reader.h"
#include "core/heap.h"
#include "core/text.h"
#include "platform/platform.h"

enum { XML_READ_BUFFER = 1024 };

namespace {

// A growable array under construction: the entries live in the caller's pointer and count.
template <typename T> struct xml_array {
    T** block;
    int32_t* count;
    int32_t capacity;
};

template <typename T> xml_array<T> xml_array_over(T** block, int32_t* count)
{
    *block = nullptr;
    *count = 0;
    return xml_array<T>{block, count, 0};
}

// A new zeroed entry at the end, growing the block by four entries when it is full.
template <typename T> T* xml_array_append(xml_array<T>* array)
{
    int32_t grown = array->capacity == 0 ? 1 : array->capacity + XML_ARRAY_GROWTH;
    if (!heap_grow(array->block, &array->capacity, *array->count + 1, grown))
        return nullptr;
    T* entry = *array->block + *array->count;
    memset(entry, 0, sizeof(T));
    *array->count += 1;
    return entry;
}

// A complete array is shrunk to exactly its count.
template <typename T> int xml_array_finish(xml_array<T>* array)
{
    if (*array->count == 0 || *array->count == array->capacity)
        return 1;
    void* block = platform_heap_realloc(*array->block, static_cast<size_t>(*array->count) * sizeof(T));
    if (!block)
        return 0;
    *array->block = static_cast<T*>(block);
    array->capacity = *array->count;
    return 1;
}

struct xml_parser {
    file_reader reader;
    const char* path;  // for reports
    int32_t line;      // 1-based line of the character last read (a line feed ends its line)
    bool line_ended;   // that character was a line feed: the next one starts a line
    int32_t depth;     // elements open, the one whose content is being read included
};

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_blank(char c)
{
    return c == ' ' || c == '\t';
}

bool is_name_start(char c)
{
    return is_letter(c) || c == '_' || c == ':';
}

bool is_element_name_char(char c)
{
    return is_letter(c) || is_digit(c) || c == '_' || c == ':' || c == '-' || c == '.';
}

// Unlike element names, ":" may not follow the first character of an attribute name.
bool is_attribute_name_char(char c)
{
    return is_letter(c) || is_digit(c) || c == '_' || c == '-' || c == '.';
}

// Reports the rule the file breaks at the line being read. Returns 0.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
int fail(xml_parser* parser, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    report_v(parser->path, parser->line, format, arguments);
    va_end(arguments);
    return 0;
}

int next_char(xml_parser* parser, char* c)
{
    if (!reader_read(&parser->reader, c, 1, 1))
        return 0;
    if (parser->line_ended)
        ++parser->line;
    parser->line_ended = *c == '\n';
    return 1;
}

int skip_past(xml_parser* parser, char wanted)
{
    char c;
    do {
        if (!next_char(parser, &c))
            return 0;
    } while (c != wanted);
    return 1;
}

// Appends c to a bounded buffer; 0 when the buffer would hold more than capacity - 2 characters.
int append_bounded(char* buffer, int32_t* length, int32_t capacity, char c)
{
    if (*length >= capacity - 2)
        return 0;
    buffer[(*length)++] = c;
    buffer[*length] = 0;
    return 1;
}

// The name starts with `first`; leaves in *c the character that ended it.
template <typename NameChar>
int read_name(xml_parser* parser, char first, char* name, NameChar is_name_char, char* c)
{
    int32_t length = 0;
    if (!is_name_start(first))
        return fail(parser, "expected a name (a letter, \"_\" or \":\" first), found \"%c\"", first);
    append_bounded(name, &length, XML_NAME_CAPACITY, first);
    for (;;) {
        if (!next_char(parser, c))
            return 0;
        if (!is_name_char(*c))
            return 1;
        if (!append_bounded(name, &length, XML_NAME_CAPACITY, *c))
            return fail(parser, "the name \"%s...\" is longer than %d characters", name, XML_NAME_CAPACITY - 2);
    }
}

// Entered on the blank after an element's name; leaves the "/" or ">" that ended the list in *c.
int read_attributes(xml_parser* parser, xml_node* node, char* c)
{
    xml_array<xml_attribute> attributes = xml_array_over(&node->attributes, &node->attribute_count);
    for (;;) {
        while (is_blank(*c))
            if (!next_char(parser, c))
                return 0;
        if (*c == '/' || *c == '>')
            return xml_array_finish(&attributes);
        xml_attribute* attribute = xml_array_append(&attributes);
        if (!attribute || !read_name(parser, *c, attribute->name, is_attribute_name_char, c))
            return 0;
        // Whatever stands between the name and "=", and between "=" and the opening quote, is ignored.
        while (*c != '=')
            if (!next_char(parser, c))
                return 0;
        if (!skip_past(parser, '"'))
            return 0;
        int32_t length = 0;
        for (;;) {
            if (!next_char(parser, c))
                return 0;
            if (*c == '"')
                break;
            if (!append_bounded(attribute->value, &length, XML_VALUE_CAPACITY, *c))
                return fail(parser, "the value of %s is longer than %d characters", attribute->name,
                            XML_VALUE_CAPACITY - 2);
        }
        if (!next_char(parser, c))
            return 0;
    }
}

int read_element(xml_parser* parser, xml_node* node, char first);

int read_content(xml_parser* parser, xml_node* node)
{
    xml_array<xml_node> children = xml_array_over(&node->children, &node->child_count);
    int32_t text_length = 0;
    char c;
    for (;;) {
        if (!next_char(parser, &c))
            return 0;
        if (c == '<') {
            if (!next_char(parser, &c))
                return 0;
            if (c == '!') {
                if (!skip_past(parser, '>'))
                    return 0;
                continue;
            }
            if (c == '/')
                break;
            if (parser->depth >= XML_DEPTH_LIMIT)
                return fail(parser, "expected at most %d elements nested inside each other, found a deeper one",
                            XML_DEPTH_LIMIT);
            xml_node* child = xml_array_append(&children);
            ++parser->depth;
            int read = child && read_element(parser, child, c);
            --parser->depth;
            if (!read)
                return 0;
            continue;
        }
        bool white = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        if (text_length == 0 && white)
            continue; // leading white space is trimmed; the rest is kept as it stands
        if (!append_bounded(node->text, &text_length, XML_TEXT_CAPACITY, c))
            return fail(parser, "the text of <%s> is longer than %d characters", node->name, XML_TEXT_CAPACITY - 2);
    }
    // The end tag may close with any prefix of the name ("</r>" and "</>" close <room>), but
    // every character it has must match, and a blank before ">" does not.
    for (int32_t i = 0;; ++i) {
        if (!next_char(parser, &c))
            return 0;
        if (c == '>')
            break;
        if (node->name[i] == 0 || c != node->name[i])
            return fail(parser, "the end tag does not close <%s>: it must spell the name, or its beginning, up to \">\"",
                        node->name);
    }
    return xml_array_finish(&children);
}

int read_element(xml_parser* parser, xml_node* node, char first)
{
    char c;
    node->line = parser->line;
    if (!read_name(parser, first, node->name, is_element_name_char, &c))
        return 0;
    if (is_blank(c) && !read_attributes(parser, node, &c))
        return 0;
    if (c == '/') {
        if (!next_char(parser, &c))
            return 0;
        return c == '>' || fail(parser, "expected \">\" after \"/\" in <%s>, found \"%c\"", node->name, c);
    }
    if (c != '>')
        return fail(parser, "expected a blank, \"/>\" or \">\" after the name <%s>, found \"%c\"", node->name, c);
    return read_content(parser, node);
}

int read_document(xml_parser* parser, xml_document* document)
{
    xml_array<xml_node> nodes = xml_array_over(&document->nodes, &document->node_count);
    char c;
    for (;;) {
        do {
            if (!next_char(parser, &c))
                return xml_array_finish(&nodes); // the end of the file between elements ends the document
        } while (c != '<');
        if (!next_char(parser, &c))
            return 0;
        if (c == '?' || c == '!') {
            // Declarations, processing instructions and comments; a ">" inside a comment ends it early.
            if (!skip_past(parser, '>'))
                return 0;
            continue;
        }
        if (c == '/')
            return fail(parser, "an end tag with no element open");
        xml_node* node = xml_array_append(&nodes);
        if (!node || !read_element(parser, node, c))
            return 0;
    }
}

int free_subtree(xml_node* node)
{
    for (int32_t i = 0; i < node->child_count; ++i)
        if (!free_subtree(&node->children[i]))
            return 0;
    return platform_heap_free(node->children) && platform_heap_free(node->attributes);
}

} // namespace

int32_t xml_error_line;

int xml_load_file(xml_document* document, const char* filename)
{
    document->node_count = 0;
    document->nodes = nullptr;
    xml_error_line = 0;
    xml_parser parser;
    parser.path = filename;
    parser.line = 1;
    parser.line_ended = false;
    parser.depth = 1; // a top-level element is open while its content is read
    if (!reader_open_file(&parser.reader, filename, XML_READ_BUFFER))
        return 0;
    int32_t reported = diagnostics_reported;
    int ok = read_document(&parser, document);
    reader_close_file(&parser.reader);
    if (!ok) {
        // The rules not reported where they break: the end of the file inside a tag, an element or a
        // comment, and a heap that refused to grow.
        if (diagnostics_reported == reported)
            fail(&parser, "the game's XML reader stops here: the file ends inside a tag, an element or a comment");
        xml_error_line = parser.line;
        xml_free_document(document); // nobody reads a half-built tree; give its blocks back
    }
    return ok;
}

int xml_free_document(xml_document* document)
{
    for (int32_t i = 0; i < document->node_count; ++i)
        if (!free_subtree(&document->nodes[i]))
            return 0;
    int ok = platform_heap_free(document->nodes);
    document->nodes = nullptr;
    document->node_count = 0;
    return ok;
}

int xml_name_is(const char* name, const char* wanted)
{
    return text_equal_ignoring_case(name, wanted);
}

const char* xml_attribute_value(const xml_node* node, const char* name)
{
    for (int32_t i = 0; i < node->attribute_count; ++i)
        if (xml_name_is(node->attributes[i].name, name))
            return node->attributes[i].value;
    return nullptr;
}
