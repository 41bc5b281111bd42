// Long lists that a test compares with a file that one can read: unit/lists/NAME.list, an item a line.
// `unit_tests --update` writes the files anew.
#pragma once

#include <string>
#include <vector>

namespace lists {

using Lines = std::vector<std::string>;

extern bool update;

// Fails where the file says otherwise, and shows what differs.
void expectlist(const std::string &name, const Lines &found);

// Bytes that do not show, and the backslash, as \xNN; a line feed as \n.
std::string escaped(const std::string &text);

}  // namespace lists
