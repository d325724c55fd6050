// The file calls of the code under test, noted and made to fail on demand. The test program is linked with a wrapper
// for each (--wrap); while a SystemCalls lives, the wrappers tell it.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace hostkit {

class SystemCalls {
 public:
  SystemCalls();
  ~SystemCalls();
  SystemCalls(const SystemCalls&) = delete;
  SystemCalls& operator=(const SystemCalls&) = delete;

  // The call number `after` (from 0) of that name fails with the error, and, for times > 1, those that follow.
  void Fail(const std::string& name, int error, int after = 0, int times = 1);
  // Every read and write takes at most that many bytes.
  void Limit(std::size_t bytes) { limit_ = bytes; }
  // Sets errno behind each call that cleans up (close, unlink) to something else.
  void SpoilErrno() { spoil_ = true; }

  // The calls so far: a name, and for open what was opened.
  std::vector<std::string> log;
  // What was opened without O_CLOEXEC.
  std::vector<std::string> inherited;

  // For the wrappers. Whether the call is to fail; errno is set then.
  bool Fails(const std::string& name, const std::string& what);
  std::size_t Limited(std::size_t size) const;
  void CleanedUp() const;
  static SystemCalls* Current();

 private:
  struct Fault {
    int error;
    int after;
    int times;
  };

  std::map<std::string, Fault> faults_;
  std::size_t limit_ = static_cast<std::size_t>(-1);
  bool spoil_ = false;
};

}  // namespace hostkit
