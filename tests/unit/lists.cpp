// The lists in files: reading, writing, and what differs.
#include "unit/lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace lists {

bool update = false;

namespace {

std::string pathof(const std::string &name) {
  return MORVIK_LISTS "/" + name + ".list";
}

Lines readlist(const std::string &name) {
  Lines lines;
  std::ifstream file(pathof(name));
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

void writelist(const std::string &name, const Lines &lines) {
  std::ofstream file(pathof(name));
  for (const std::string &line : lines) file << line << '\n';
}

// The lines that are in one list and not in the other, each behind a sign.
std::string alonein(Lines lines, Lines others, const char *sign) {
  std::sort(lines.begin(), lines.end());
  std::sort(others.begin(), others.end());
  Lines alone;
  std::set_difference(lines.begin(), lines.end(), others.begin(), others.end(), std::back_inserter(alone));
  std::string text;
  for (const std::string &line : alone) text += sign + line + "\n";
  return text;
}

}  // namespace

void expectlist(const std::string &name, const Lines &found) {
  if (update) writelist(name, found);
  const Lines expected = readlist(name);
  EXPECT_TRUE(found == expected) << pathof(name) << " says otherwise:\n"
                                 << alonein(expected, found, "- ") << alonein(found, expected, "+ ")
                                 << "Where it should change: unit_tests --update, and read the difference.";
}

std::string escaped(const std::string &text) {
  std::string out;
  for (const char c : text) {
    char hexadecimal[8];
    std::snprintf(hexadecimal, sizeof hexadecimal, "\\x%02X", static_cast<unsigned char>(c));
    if (c == '\n')
      out += "\\n";
    else
      out += c < ' ' || c > '~' || c == '\\' ? std::string(hexadecimal) : std::string(1, c);
  }
  return out;
}

}  // namespace lists
