#include "system_calls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace hostkit {
namespace {

SystemCalls* current = nullptr;

}  // namespace

SystemCalls::SystemCalls() { current = this; }
SystemCalls::~SystemCalls() { current = nullptr; }
SystemCalls* SystemCalls::Current() { return current; }

void SystemCalls::Fail(const std::string& name, int error, int after, int times) {
  faults_[name] = {error, after, times};
}

bool SystemCalls::Fails(const std::string& name, const std::string& what) {
  log.push_back(what.empty() ? name : name + " " + what);
  const auto found = faults_.find(name);
  if (found == faults_.end()) return false;
  Fault& fault = found->second;
  if (fault.after-- > 0 || fault.times-- <= 0) return false;
  errno = fault.error;
  return true;
}

std::size_t SystemCalls::Limited(std::size_t size) const { return std::min(size, limit_); }

void SystemCalls::CleanedUp() const {
  if (spoil_) errno = ENOTTY;
}

}  // namespace hostkit

using hostkit::SystemCalls;

// The names that the code's calls have in its object files, where file offsets have 64 bits.
extern "C" {
int __real_open64(const char* path, int flags, ...);
int __real_mkostemp64(char* path, int flags);
int __real_stat64(const char* path, struct stat* known);
int __real_fchmod(int descriptor, mode_t mode);
ssize_t __real_write(int descriptor, const void* bytes, size_t size);
ssize_t __real_read(int descriptor, void* bytes, size_t size);
int __real_fsync(int descriptor);
int __real_close(int descriptor);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);

int __wrap_open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : mode_t{0};
  va_end(arguments);
  SystemCalls* calls = SystemCalls::Current();
  if (calls != nullptr) {
    if (calls->Fails("open", (flags & O_DIRECTORY) != 0 ? "directory" : "file")) return -1;
    if ((flags & O_CLOEXEC) == 0) calls->inherited.emplace_back(path);
  }
  return __real_open64(path, flags, mode);
}

int __wrap_mkostemp64(char* path, int flags) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls != nullptr) {
    if (calls->Fails("mkostemp", "")) return -1;
    if ((flags & O_CLOEXEC) == 0) calls->inherited.emplace_back(path);
  }
  return __real_mkostemp64(path, flags);
}

int __wrap_stat64(const char* path, struct stat* known) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls != nullptr && calls->Fails("stat", "")) return -1;
  return __real_stat64(path, known);
}

int __wrap_fchmod(int descriptor, mode_t mode) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls != nullptr && calls->Fails("fchmod", "")) return -1;
  return __real_fchmod(descriptor, mode);
}

ssize_t __wrap_write(int descriptor, const void* bytes, size_t size) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls == nullptr) return __real_write(descriptor, bytes, size);
  return calls->Fails("write", "") ? -1 : __real_write(descriptor, bytes, calls->Limited(size));
}

ssize_t __wrap_read(int descriptor, void* bytes, size_t size) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls == nullptr) return __real_read(descriptor, bytes, size);
  return calls->Fails("read", "") ? -1 : __real_read(descriptor, bytes, calls->Limited(size));
}

int __wrap_fsync(int descriptor) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls == nullptr) return __real_fsync(descriptor);
  struct stat known = {};
  fstat(descriptor, &known);
  return calls->Fails("fsync", S_ISDIR(known.st_mode) ? "directory" : "file") ? -1 : __real_fsync(descriptor);
}

// A close that fails has closed.
int __wrap_close(int descriptor) {
  SystemCalls* calls = SystemCalls::Current();
  const bool fails = calls != nullptr && calls->Fails("close", "");
  const int error = errno;
  const int status = __real_close(descriptor);
  if (calls != nullptr) calls->CleanedUp();
  if (!fails) return status;
  errno = error;
  return -1;
}

int __wrap_rename(const char* from, const char* to) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls != nullptr && calls->Fails("rename", "")) return -1;
  return __real_rename(from, to);
}

int __wrap_unlink(const char* path) {
  SystemCalls* calls = SystemCalls::Current();
  if (calls != nullptr && calls->Fails("unlink", "")) return -1;
  const int status = __real_unlink(path);
  if (calls != nullptr) calls->CleanedUp();
  return status;
}
}
