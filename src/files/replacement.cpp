// Files that are written whole or not at all.
#include "files/replacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "failure/custody.h"
#include "failure/signals.h"
#include "spaces/blocks.h"

namespace morvik {

namespace {

// Short, so that it fits wherever a name of any length does.
constexpr char TEMPLATE[] = ".morvik-XXXXXX";
constexpr int MOST_LINKS = 40, MOST_LOOKS = 100;
constexpr mode_t PERMISSIONS = 0777, ALL_MODES = 07777, NEW_FILE = 0666;

// The length of the folder's part of a path, the slash included.
std::size_t folderlength(const char *path) {
  const char *slash = std::strrchr(path, '/');
  return slash ? static_cast<std::size_t>(slash - path) + 1 : 0;
}

// The folder of `path` and a name in it. False where that is too long.
bool putbeside(char (&made)[PATH_MAX], const char *path, const char *name) {
  const std::size_t folder = folderlength(path), length = std::strlen(name);
  if (folder + length >= PATH_MAX) return false;
  std::memmove(made, path, folder);
  std::memcpy(made + folder, name, length + 1);
  return true;
}

// Where a name leads, through all links that its last component is; there may be nothing there yet.
bool followlinks(char (&path)[PATH_MAX], const char *name) {
  char link[PATH_MAX];
  if (!putbeside(path, "", name)) return false;
  for (int links = 0; links < MOST_LINKS; ++links) {
    const ssize_t length = readlink(path, link, sizeof link - 1);
    if (length < 0) return true;
    link[length] = '\0';
    if (!putbeside(path, link[0] == '/' ? "" : path, link)) return false;
  }
  return false;
}

int openold(const char *name) {
  int descriptor;
  while ((descriptor = open(name, O_WRONLY | O_CLOEXEC)) < 0 && errno == EINTR) safepoint();
  return descriptor;
}

// Does the name still lead to what is open?
bool leadsthere(Replacement &file) {
  struct stat found;
  if (!followlinks(file.target, file.name) || stat(file.target, &found) != 0) return false;
  return found.st_ino == file.old.st_ino && found.st_dev == file.old.st_dev;
}

// Opens what the name leads to and notes what that is. Another writer may put its file in place at any time: what is
// open then is a file that nobody finds any more, and is let go. The target is empty where the name always leads
// elsewhere, as in /proc. -1 where there is no file.
int openpresent(Replacement &file) {
  for (int looks = 0;; ++looks) {
    const int descriptor = openold(file.name);
    if (descriptor < 0) return -1;
    const bool known = fstat(descriptor, &file.old) == 0;
    if (known && leadsthere(file)) return descriptor;
    file.target[0] = '\0';
    if (known && (looks == MOST_LOOKS || !S_ISREG(file.old.st_mode))) return descriptor;
    close(descriptor);
    if (!known) return -1;
  }
}

// Opens the new file, private until it is whole. -1 where there can be none.
int opentemporary(Replacement &file) {
  const bool fits = putbeside(file.temporary, file.target, TEMPLATE);
  const int descriptor = fits ? mkostemp(file.temporary, O_CLOEXEC) : -1;
  if (descriptor < 0) file.temporary[0] = '\0';
  return descriptor;
}

int opennew(Replacement &file) {
  return followlinks(file.target, file.name) ? opentemporary(file) : -1;
}

// Is something mounted there, so that nothing can take its place? A host that cannot tell has none such.
bool ismounted(const char *path) {
#ifdef STATX_ATTR_MOUNT_ROOT
  struct statx found;
  return statx(AT_FDCWD, path, 0, 0, &found) == 0 && (found.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
#else
  static_cast<void>(path);
  return false;
#endif
}

// May another file take the place of what is open? Not where the name leads elsewhere, and where the folder lets nobody
// take it away.
bool isreplaceable(Replacement &file) {
  struct stat folder;
  if (file.target[0] == '\0' || !putbeside(file.temporary, file.target, ".")) return false;
  if (stat(file.temporary, &folder) != 0 || ismounted(file.target)) return false;
  const uid_t user = geteuid();
  const bool guarded = (folder.st_mode & S_ISVTX) != 0 && user != 0;
  return (!guarded || user == file.old.st_uid || user == folder.st_uid) && access(file.temporary, W_OK | X_OK) == 0;
}

// The new file for what is open, or that itself.
int openover(Replacement &file, int old) {
  const bool regular = S_ISREG(file.old.st_mode);
  if (regular && isreplaceable(file)) {
    close(old);
    return opentemporary(file);
  }
  file.temporary[0] = '\0';
  if (!regular || ftruncate(old, 0) == 0) return old;
  close(old);
  return -1;
}

mode_t modeofnew() {
  const mode_t masked = umask(0);
  umask(masked);
  return NEW_FILE & ~masked;
}

// The owner may be one that we cannot give a file to; the rights that go with an owner stay behind then.
void takeover(int descriptor, const struct stat &old) {
  if (old.st_mode == 0) {
    fchmod(descriptor, modeofnew());
    return;
  }
  const bool owned = fchown(descriptor, old.st_uid, old.st_gid) == 0;
  fchmod(descriptor, old.st_mode & (owned ? ALL_MODES : PERMISSIONS));
}

// Not every file system knows how to wait for the disk.
bool isondisk(int descriptor) {
  int failed;
  while ((failed = fsync(descriptor)) != 0 && errno == EINTR) {
  }
  return failed == 0 || errno == EINVAL || errno == ENOSYS;
}

bool flushed(const Replacement &file) {
  if (std::fflush(file.stream) != 0 || std::ferror(file.stream)) return false;
  if (file.temporary[0] == '\0') return true;
  takeover(fileno(file.stream), file.old);
  return isondisk(fileno(file.stream));
}

void discard(Replacement &file) {
  if (file.stream) std::fclose(file.stream);
  if (file.temporary[0] != '\0') unlink(file.temporary);
  freeblock(file.name);
}

void releasereplacement(Custody &c) {
  discard(*static_cast<Replacement *>(c.held));
}

}  // namespace

bool closewritten(std::FILE *stream) {
  const bool failed = std::ferror(stream) != 0;
  return std::fclose(stream) == 0 && !failed;
}

bool beginreplacement(Replacement &file, char *name) {
  file.stream = nullptr;
  file.name = name;
  file.temporary[0] = '\0';
  file.old.st_mode = 0;
  takecustody(file.custody, releasereplacement, &file);
  int descriptor = openpresent(file);
  if (descriptor >= 0)
    descriptor = openover(file, descriptor);
  else if (errno == ENOENT && name[0] != '\0')
    descriptor = opennew(file);
  if (descriptor >= 0) file.stream = fdopen(descriptor, "w");
  if (file.stream) return true;
  if (descriptor >= 0) close(descriptor);
  endcustody(file.custody);
  discard(file);
  return false;
}

bool endreplacement(Replacement &file) {
  bool whole = flushed(file);
  if (!whole) safepoint();
  endcustody(file.custody);
  whole = closewritten(file.stream) && whole;
  file.stream = nullptr;
  if (whole && file.temporary[0] != '\0') whole = std::rename(file.temporary, file.target) == 0;
  if (whole) file.temporary[0] = '\0';
  discard(file);
  return whole;
}

}  // namespace morvik
