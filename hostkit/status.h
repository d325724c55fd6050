// How a call of an engine ended.
#pragma once

#include <string>
#include <utility>

namespace hostkit {

enum class StatusCode {
  kOk,
  kWrongKind,       // the key or the value is of a kind that the call does not work on
  kOutOfMemory,     // here or in the store
  kUnavailable,     // the store cannot be reached, or does not let us in
  kReadOnly,        // the store does not take writes from here
  kOutcomeUnknown,  // the request may have been carried out: its answer was lost
  kNotSupported,    // this engine cannot do it
  kFailed           // for a reason without a code of its own
};

class [[nodiscard]] Status {
 public:
  Status() = default;
  // text says why, for people: one line without a full stop. It never holds a password.
  Status(StatusCode code, std::string text) : code_(code), text_(std::move(text)) {}

  bool ok() const { return code_ == StatusCode::kOk; }
  StatusCode code() const { return code_; }
  const std::string& text() const& { return text_; }
  std::string text() && { return std::move(text_); }

 private:
  StatusCode code_ = StatusCode::kOk;
  std::string text_;
};

}  // namespace hostkit
