// A text that grows. When memory runs out it stays as it is and takes nothing more.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace tq_watch {

class Text {
 public:
  Text() = default;
  ~Text() { std::free(bytes_); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;

  void Add(const char* bytes, std::size_t length);
  void Add(const char* text);
  [[gnu::format(printf, 2, 3)]] void Format(const char* format, ...);
  // In quotes: what cannot be printed as \xNN; cut after a while, with the length.
  void AddQuoted(const char* bytes, std::size_t length);
  // As a JSON string, whole; a byte above 127 as the character of that number.
  void AddJsonString(const char* bytes, std::size_t length);

  void Clear() {
    length_ = 0;
    whole_ = true;
  }

  // All that was added is there.
  bool whole() const { return whole_; }

  const char* c_str() const { return length_ > 0 ? bytes_ : ""; }
  std::size_t length() const { return length_; }

 private:
  char* bytes_ = nullptr;
  std::size_t length_ = 0;
  std::size_t capacity_ = 0;
  bool whole_ = true;
};

}  // namespace tq_watch
