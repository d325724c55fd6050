#include "hostkit/order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace hostkit {
namespace {

// Few elements are compared, many are put into buckets.
TEST(Order, EqualElementsStayTogether) {
  for (const std::size_t count : {10U, 1000U}) {
    std::vector<std::string> texts;
    std::vector<std::uint32_t> numbers;
    for (std::size_t index = 0; index < count; ++index) {
      texts.push_back(std::string(index % 5, 'a') + static_cast<char>('a' + index % 3));
      numbers.push_back(static_cast<std::uint32_t>(index % 7) * 0x01010101U);
    }
    SortByBytes(&texts);
    EXPECT_TRUE(std::is_sorted(texts.begin(), texts.end()));
    SortByNumber(&numbers, std::identity());
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    EXPECT_EQ(texts.size(), count);
    EXPECT_EQ(numbers.size(), count);
  }
}

TEST(Order, BytesCountAsNumbersAboveZero) {
  std::vector<std::string> texts = {"\xff", "a", std::string("\0", 1), "", "\x80"};
  SortByBytes(&texts);
  EXPECT_EQ(texts, (std::vector<std::string>{"", std::string("\0", 1), "a", "\x80", "\xff"}));
}

}  // namespace
}  // namespace hostkit
