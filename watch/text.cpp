#include "watch/text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace tq_watch {

void Text::Add(const char* bytes, std::size_t length) {
  if (!whole_) return;
  if (length_ + length >= capacity_) {
    std::size_t capacity = (length_ + length + 1) * 2;
    auto* grown = static_cast<char*>(std::realloc(bytes_, capacity));
    if (grown == nullptr) {
      whole_ = false;
      return;
    }
    bytes_ = grown;
    capacity_ = capacity;
  }
  std::memcpy(bytes_ + length_, bytes, length);
  length_ += length;
  bytes_[length_] = '\0';
}

void Text::Add(const char* text) { Add(text, std::strlen(text)); }

void Text::Format(const char* format, ...) {
  char buffer[256];  // pieces are numbers and names
  va_list arguments;
  va_start(arguments, format);
  int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  if (length > 0)
    Add(buffer,
        static_cast<std::size_t>(length) < sizeof buffer ? static_cast<std::size_t>(length) : sizeof buffer - 1);
}

void Text::AddQuoted(const char* bytes, std::size_t length) {
  constexpr std::size_t kShown = 64;
  Add("\"");
  for (std::size_t i = 0; i < length && i < kShown; ++i) {
    auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte == '"' || byte == '\\') Add("\\");
    if (byte < ' ' || byte == 0x7f) {
      Format("\\x%02x", byte);
    } else {
      Add(bytes + i, 1);
    }
  }
  Add("\"");
  if (length > kShown) Format("... (%zu bytes)", length);
}

void Text::AddJsonString(const char* bytes, std::size_t length) {
  Add("\"");
  for (std::size_t i = 0; i < length; ++i) {
    auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte < ' ' || byte > '~') {
      Format("\\u%04x", byte);
    } else {
      if (byte == '"' || byte == '\\') Add("\\");
      Add(bytes + i, 1);
    }
  }
  Add("\"");
}

}  // namespace tq_watch
