#include "xml_lines.h"

#include <fstream>
#include <iterator>
#include <vector>

#include "report.h"

namespace {

// The lines of the start tags, in file order, by the game reader's own rules: "<!" and "<?" run to
// the next ">", "</" is an end tag, anything else after "<" opens an element.
std::vector<int32_t> start_tag_lines(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<int32_t> lines;
    int32_t line = 1;
    bool in_tag = false;
    bool in_start_tag = false; // where a ">" inside a quoted value does not end the tag
    bool in_quotes = false;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\n')
            ++line;
        if (in_tag) {
            if (in_start_tag && c == '"')
                in_quotes = !in_quotes;
            else if (c == '>' && !in_quotes)
                in_tag = false;
            continue;
        }
        if (c != '<' || i + 1 >= text.size())
            continue;
        char next = text[i + 1];
        in_start_tag = next != '!' && next != '?' && next != '/';
        if (in_start_tag)
            lines.push_back(line);
        in_tag = true;
        in_quotes = false;
    }
    return lines;
}

void walk_in_order(const xml_node* node, std::vector<const xml_node*>* order)
{
    order->push_back(node);
    for (int32_t i = 0; i < node->child_count; ++i)
        walk_in_order(&node->children[i], order);
}

} // namespace

void xml_file_read(xml_file* file, const std::string& path)
{
    file->path = path;
    file->document = {};
    file->lines.clear();
    file->loaded = xml_load_file(&file->document, path.c_str());
    if (!file->loaded) {
        if (xml_error_line == 0)
            report_problem(path, 0, "cannot be opened");
        else
            report_problem(path, xml_error_line,
                           "the game's XML reader stops here (it takes start tags with double-quoted values, names "
                           "of up to 62 characters, values of up to 126, end tags that match)");
        return;
    }
    std::vector<const xml_node*> order;
    for (int32_t i = 0; i < file->document.node_count; ++i)
        walk_in_order(&file->document.nodes[i], &order);
    std::vector<int32_t> lines = start_tag_lines(path);
    if (lines.size() != order.size())
        return; // the scan disagrees with the reader: better no lines than wrong ones
    for (size_t i = 0; i < order.size(); ++i)
        file->lines[order[i]] = lines[i];
}

void xml_file_release(xml_file* file)
{
    xml_free_document(&file->document);
    file->lines.clear();
}

int32_t xml_line(const xml_file* file, const xml_node* node)
{
    auto found = file->lines.find(node);
    return found == file->lines.end() ? 0 : found->second;
}
