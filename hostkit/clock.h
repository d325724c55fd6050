// The time by which values expire.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace hostkit {

class Clock {
 public:
  virtual ~Clock() = default;
  // Milliseconds from any start; never goes back.
  virtual std::int64_t Steady() const noexcept = 0;
  // Milliseconds of calendar time, which alone has a meaning in another process.
  virtual std::int64_t Calendar() const noexcept = 0;
};

class SystemClock : public Clock {
 public:
  std::int64_t Steady() const noexcept override { return Milliseconds(std::chrono::steady_clock::now()); }
  std::int64_t Calendar() const noexcept override { return Milliseconds(std::chrono::system_clock::now()); }

 private:
  template <typename Time> static std::int64_t Milliseconds(Time time) noexcept {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  }
};

// Another clock's time, which can be stopped, moved on while stopped, and let go on from there. The calendar stays
// the other clock's.
class AdjustableClock : public Clock {
 public:
  // The other clock must outlive this one.
  explicit AdjustableClock(const Clock& base) : base_(base) {}

  std::int64_t Steady() const noexcept override { return stopped_ ? *stopped_ : base_.Steady() + ahead_; }
  std::int64_t Calendar() const noexcept override { return base_.Calendar(); }

  void Stop() noexcept { stopped_ = Steady(); }
  // False if the clock is not stopped, or if the time would be out of range.
  bool Advance(std::int64_t milliseconds) noexcept {
    if (!stopped_ || milliseconds > kLatest - *stopped_) return false;
    *stopped_ += milliseconds;
    return true;
  }
  void Go() noexcept {
    if (stopped_) ahead_ = *stopped_ - base_.Steady();
    stopped_.reset();
  }

 private:
  // Leaves room for every time to live.
  static constexpr std::int64_t kLatest = std::int64_t{1} << 62;

  const Clock& base_;
  std::int64_t ahead_ = 0;
  std::optional<std::int64_t> stopped_;
};

}  // namespace hostkit
