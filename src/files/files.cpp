// Host files: names, the path constraint, opening, and the FILE element.
#include "files/files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/making.h"
#include "spaces/messages.h"

namespace morvik {

char constraindirectories = 1;

namespace {

// Past the next "/" from here on, or at the end.
const char *pastslash(const char *path) {
  path += std::strcspn(path, "/");
  return *path == '/' ? path + 1 : path;
}

}  // namespace

// Kept: a component that begins with "." does not count for the depth, and the one after "./" or after an empty one is
// passed over unseen, so that "./../a" is allowed.
bool checkpath(const char *path) {
  if (*path == '/') return false;
  std::int64_t depth = 0;
  while (*path != '\0') {
    if (path[0] == '/') {
      path = pastslash(path + 1);
    } else if (path[0] != '.') {
      ++depth;
      path = pastslash(path);
    } else if (path[1] == '\0') {
      return true;
    } else if (path[1] != '.') {
      path = pastslash(path + 2);
    } else if (path[2] == '/') {
      if (--depth < 0) return false;
      path += 3;
    } else if (path[2] == '.') {
      path += 3;
    } else {
      path = path[2] == '\0' ? path + 2 : pastslash(path + 3);
    }
  }
  return true;
}

int namefault(const Point &name, int data, int structure) {
  if (!isspace(name) || (name.type & (HASASCII | COMPLEXED)) != HASASCII) return data;
  if (name.rank > 1) return structure;
  const Element *records = name.data_pointer;
  const bool characters =
      std::all_of(records, records + name.elements, [](const Element &element) { return element.tag == tags::ASCII; });
  return characters ? 0 : data;
}

char *filename(const Point &name) {
  auto *bytes = static_cast<char *>(newblock(std::size_t{name.elements} + 1));
  for (std::size_t i = 0; i < name.elements; ++i) bytes[i] = static_cast<char>(name.data_pointer[i].ascii);
  bytes[name.elements] = '\0';
  return bytes;
}

namespace {

char confinement[PATH_MAX];  // an absolute path without links; empty: files are not confined

// Does the path, without links and climbing, lead into the folder? A file that is to be made lies where its folder
// does; a link that leads nowhere would make one there.
bool staysinside(const char *name) {
  char real[PATH_MAX];
  if (!realpath(name, real)) {
    struct stat status;
    const char *slash = std::strrchr(name, '/');
    const std::size_t length = slash ? static_cast<std::size_t>(slash - name) + 1 : 0;
    if (lstat(name, &status) == 0 || length >= sizeof real) return false;
    char folder[PATH_MAX] = ".";  // zeros behind
    std::memcpy(folder, name, length);
    if (!realpath(folder, real)) return false;
  }
  const std::size_t length = std::strlen(confinement);
  const bool root = length == 1;
  return std::strncmp(real, confinement, length) == 0 && (root || real[length] == '/' || real[length] == 0);
}

}  // namespace

bool confinefiles() {
  return realpath(".", confinement) != nullptr;
}
bool areconfined() {
  return confinement[0] != 0;
}

bool isrefused(const char *name) {
  return (constraindirectories != 0 && !checkpath(name)) || (areconfined() && !staysinside(name));
}

std::FILE *openstream(const char *name, const char *mode) {
  char inheritless[8];
  std::snprintf(inheritless, sizeof inheritless, "%se", mode);
  std::FILE *stream;
  while (!(stream = std::fopen(name, inheritless)) && errno == EINTR) safepoint();
  struct stat status;
  if (!stream || fstat(fileno(stream), &status) != 0 || !S_ISDIR(status.st_mode)) return stream;
  std::fclose(stream);
  return nullptr;
}

void releasestream(Custody &c) {
  std::fclose(static_cast<std::FILE *>(c.held));
}

std::FILE *openfile(const Point *instruction, Point **stackpointer, const char *mode, char **nameblock) {
  if (const int fault = namefault(**stackpointer, messages::FILE_NAME_DATA, messages::FILE_NAME_STRUCTURE); fault != 0)
    exceptionjump(fault, stackpointer, instruction);
  char *name = filename(**stackpointer);
  Custody kept;
  takecustody(kept, releaseblock, name);
  if (isrefused(name)) exceptionjump(messages::DIRECTORY_REFUSED, stackpointer, instruction);
  std::FILE *stream = openstream(name, mode);
  if (!stream) exceptionjump(messages::CANNOT_OPEN, stackpointer, instruction);
  endcustody(kept);
  if (nameblock)
    *nameblock = name;
  else
    release(name);
  return stream;
}

namespace {

constexpr char UPDATE[] = "r+b";

// The FILE element that an action on the top of the stack means: the first one, out of as many enclosures. Kept: where
// there is none, REWIND reports the message of CLOSE too.
Element &firstfile(Point **stackpointer, const Point *instruction) {
  const Point *space = *stackpointer;
  for (;;) {
    if (!isspace(*space) || (space->type & HASFILE) == 0 || space->elements == 0)
      exceptionjump(messages::NOT_A_FILE, stackpointer, instruction);
    Element &first = space->data_pointer[0];
    if (first.tag == tags::HANDLE) return first;
    if (first.tag != tags::SUBARRAY) exceptionjump(messages::NOT_A_FILE, stackpointer, instruction);
    space = first.subarray;
  }
}

void closehandle(Element &file) {
  std::FILE *stream = handlestream(file);
  sethandlestream(file, nullptr);
  if (stream) std::fclose(stream);
}

}  // namespace

void closefile(Point **stackpointer, const Point *instruction) {
  closehandle(firstfile(stackpointer, instruction));
}

void rewindfile(Point **stackpointer, const Point *instruction) {
  if (std::FILE *stream = handlestream(firstfile(stackpointer, instruction))) std::rewind(stream);
}

void makefile(Point &file, std::FILE *stream, char *name, const Point &descriptor, bool small) {
  Element *element = newelements(1);
  Custody made;
  takecustody(made, releaseblock, element);
  makehandle(*element, name, stream, descriptor);
  endcustody(made);
  if (small) element->attributes |= attributes::PREFIX_R;  // Kept: the bit that numbers have for a prefix
  file = {};
  file.type = ISSCALAR | HASFILE;
  file.elements = 1;
  file.data_pointer = element;
}

bool reopenfile(Element &file) {
  closehandle(file);
  std::FILE *stream = areconfined() && !staysinside(file.name) ? nullptr : openstream(file.name, UPDATE);
  sethandlestream(file, stream);
  return stream != nullptr;
}

}  // namespace morvik
