// The text of a script, read whole, before anything of it runs: a script may remove or change its own file.
#include "runner/scriptfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/list.h"

namespace morvik {

namespace {

constexpr std::size_t LARGEST_SCRIPT = std::size_t{256} << 20;
constexpr char TOO_LARGE[] = "larger than a script may be (256 MiB)";
constexpr std::size_t CHUNK = 65536;

// All bytes of a descriptor, or those up to one after which it is no text. Returns what hindered it, null for nothing.
const char *readall(int descriptor, List<char> &bytes) {
  for (;;) {
    if (bytes.count > LARGEST_SCRIPT) return TOO_LARGE;
    if (!bytes.reserve(CHUNK)) return NO_STORAGE;
    const ssize_t got = read(descriptor, bytes.end(), CHUNK);
    if (got < 0 && errno != EINTR) return std::strerror(errno);
    if (got < 0) continue;
    const auto taken = static_cast<std::size_t>(got);
    const bool ends = taken == 0 || std::memchr(bytes.end(), 0, taken);
    bytes.count += taken;
    if (ends) return nullptr;
  }
}

// What a look at the file says against it, null for nothing: a large one is not read first.
const char *faultoffile(int descriptor) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) return std::strerror(errno);
  if (S_ISDIR(status.st_mode)) return "is a folder";
  const bool large = S_ISREG(status.st_mode) && status.st_size > static_cast<off_t>(LARGEST_SCRIPT);
  return large ? TOO_LARGE : nullptr;
}

const char *readfile(const char *path, List<char> &bytes) {
  if (std::strcmp(path, "-") == 0) return readall(STDIN_FILENO, bytes);
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return std::strerror(errno);
  const char *fault = faultoffile(descriptor);
  if (!fault) fault = readall(descriptor, bytes);
  close(descriptor);
  return fault;
}

// Lines that end as on other systems end as here.
void dropreturns(List<char> &bytes) {
  char *to = bytes.records;
  for (const char *from = bytes.begin(); from < bytes.end(); ++from)
    if (*from != '\r' || from + 1 == bytes.end() || from[1] != '\n') *to++ = *from;
  bytes.count = static_cast<std::size_t>(to - bytes.records);
}

// What comes before the first text: a byte order mark, and a line that tells the system who reads the file.
std::size_t preamble(const char *bytes) {
  constexpr char MARK[] = "\xEF\xBB\xBF";
  std::size_t passed = std::strncmp(bytes, MARK, sizeof MARK - 1) == 0 ? sizeof MARK - 1 : 0;
  if (std::strncmp(bytes + passed, "#!", 2) == 0) passed += std::strcspn(bytes + passed, "\n");
  return passed;
}

std::size_t linesbefore(const List<char> &bytes, const char *place) {
  std::size_t lines = 1;
  for (const char *byte = bytes.begin(); byte < place; ++byte) lines += *byte == '\n' ? 1 : 0;
  return lines;
}

// The end of the file ends no word; that of a line does.
bool endlastline(List<char> &bytes) {
  if (!bytes.reserve(2)) return false;
  if (bytes.count > 0 && bytes.last() != '\n') bytes.records[bytes.count++] = '\n';
  *bytes.end() = 0;
  return true;
}

bool istextual(const char *path, const List<char> &bytes) {
  const auto *nul = static_cast<const char *>(std::memchr(bytes.begin(), 0, bytes.count));
  if (!nul) return true;
  std::fprintf(stderr, "%s:%zu: a byte 0 stands here: this is no text\n", path, linesbefore(bytes, nul));
  return false;
}

}  // namespace

bool refusefile(const char *what, const char *why) {
  std::fprintf(stderr, "%s: %s: %s\n", program_invocation_short_name, what, why);
  return false;
}

bool readscript(Source &source, const char *path) {
  List<char> bytes;
  const char *fault = readfile(path, bytes);
  if (!fault) dropreturns(bytes);
  if (!fault && !endlastline(bytes)) fault = NO_STORAGE;
  const char *const name = std::strcmp(path, "-") == 0 ? "standard input" : path;
  bool whole = !fault && istextual(name, bytes);
  if (whole) {
    whole = opensource(source, name, bytes.records, bytes.count);
    if (!whole) fault = NO_STORAGE;
  }
  if (fault) refusefile(path, fault);
  if (!whole)
    bytes.clear();
  else
    source.read += preamble(source.bytes);
  return whole;
}

void dropscript(Source &source) {
  std::free(const_cast<char *>(source.bytes));
  closesource(source);
}

}  // namespace morvik
