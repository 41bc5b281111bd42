// Libraries: where they are.
#include "runner/libraries.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>

#include "runner/scriptfile.h"

namespace morvik {

namespace {

constexpr char NAME_BYTES[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
constexpr char BLANKS[] = " \t\r\n";
constexpr char ENDS_OF_NAME[] = " \t\r\n\"";
constexpr char NEEDS[] = "NEEDS";
constexpr const char *BESIDE_BINARY[] = {"/../share/morvik/lib", "/../lib"};

bool appendbytes(List<char> &path, const char *bytes, std::size_t length) {
  if (!path.reserve(length + 1)) return false;
  std::memcpy(path.end(), bytes, length);
  path.count += length;
  *path.end() = 0;
  return true;
}

// Is there FOLDER/NAME.morvik? An empty folder is the present one.
bool isin(List<char> &path, const char *folder, std::size_t length, const char *name) {
  path.count = 0;
  if (length == 0) folder = ".", length = 1;
  if (!appendbytes(path, folder, length) || !appendbytes(path, "/", 1) || !appendbytes(path, name, std::strlen(name)) ||
      !appendbytes(path, ".morvik", sizeof ".morvik" - 1))
    return false;
  struct stat status;
  return stat(path.records, &status) == 0 && S_ISREG(status.st_mode);
}

bool isalong(List<char> &path, const char *folders, const char *name) {
  if (!folders || *folders == 0) return false;
  for (;;) {
    const std::size_t length = std::strcspn(folders, ":");
    if (isin(path, folders, length, name)) return true;
    if (folders[length] == 0) return false;
    folders += length + 1;
  }
}

bool isbeside(List<char> &path, const char *name) {
  char binary[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", binary, sizeof binary - 1);
  if (length <= 0) return false;
  binary[length] = 0;
  char *const slash = std::strrchr(binary, '/');
  if (!slash) return false;
  for (const char *place : BESIDE_BINARY) {
    if (static_cast<std::size_t>(slash - binary) + std::strlen(place) + 1 > sizeof binary) return false;
    std::strcpy(slash, place);
    if (isin(path, binary, std::strlen(binary), name)) return true;
  }
  return false;
}

}  // namespace

bool findlibrary(List<char> &path, const char *name) {
  if (*name == 0 || name[std::strspn(name, NAME_BYTES)] != 0)
    return refusefile(name, "this is no name of a library: letters, digits, - and _");
  if (!path.reserve(PATH_MAX)) return refusefile(name, NO_STORAGE);
  if (isalong(path, std::getenv("MORVIK_PATH"), name) || isbeside(path, name)) return true;
  return refusefile(name, "there is no such library in MORVIK_PATH, ../share/morvik/lib or ../lib");
}

const char *findneeds(const char *text) {
  for (;;) {
    text += std::strspn(text, BLANKS);
    if (*text != '"') return nullptr;
    ++text;
    text += std::strspn(text, BLANKS);
    const std::size_t length = std::strcspn(text, ENDS_OF_NAME);
    if (length == sizeof NEEDS - 1 && std::strncmp(text, NEEDS, length) == 0) return text + length;
    text += std::strcspn(text, "\"");
    if (*text == '"') ++text;
  }
}

std::size_t findneed(const char *&names) {
  names += std::strspn(names, BLANKS);
  return std::strcspn(names, ENDS_OF_NAME);
}

}  // namespace morvik
