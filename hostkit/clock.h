// The time by which values expire.
#ifndef TQ_HOSTKIT_CLOCK_H
#define TQ_HOSTKIT_CLOCK_H

#include <chrono>
#include <cstdint>

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
  template <typename Time>
  static std::int64_t Milliseconds(Time time) noexcept {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  }
};

}  // namespace hostkit

#endif
