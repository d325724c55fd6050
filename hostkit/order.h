// The orders that results come in, made in linear time: the stores that hand their elements out are hash tables.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace hostkit {

// Sorts by what digit(element, place) gives for the places 0, 1, ...: 0 for an element that has no more, else 1 to 256.
// Each element is put into the bucket of its digit, and each bucket sorted by the next place.
// Throws std::bad_alloc.
template <typename Element, typename Digit> void SortByDigits(std::vector<Element>* elements, Digit digit) {
  struct Range {
    std::size_t first;
    std::size_t count;
    std::size_t place;
  };
  constexpr std::size_t kFew = 64;  // faster compared than put into buckets
  std::vector<Element> sorted(elements->size());
  std::vector<Range> ranges = {{0, elements->size(), 0}};
  while (!ranges.empty()) {
    const Range range = ranges.back();
    ranges.pop_back();
    const auto begin = elements->begin() + static_cast<std::ptrdiff_t>(range.first);
    const auto end = begin + static_cast<std::ptrdiff_t>(range.count);
    if (range.count <= kFew) {
      std::sort(begin, end, [&](const Element& a, const Element& b) {
        for (std::size_t place = range.place;; ++place) {
          const unsigned int one = digit(a, place);
          const unsigned int other = digit(b, place);
          if (one != other || one == 0) return one < other;
        }
      });
      continue;
    }
    std::array<std::size_t, 258> starts = {};
    for (auto element = begin; element != end; ++element) ++starts[digit(*element, range.place) + 1];
    for (std::size_t bucket = 1; bucket < starts.size(); ++bucket) {
      const std::size_t count = starts[bucket];
      starts[bucket] += starts[bucket - 1];
      if (bucket > 1 && count > 1) ranges.push_back({range.first + starts[bucket - 1], count, range.place + 1});
    }
    for (auto element = begin; element != end; ++element) {
      sorted[range.first + starts[digit(*element, range.place)]++] = std::move(*element);
    }
    std::move(sorted.begin() + (begin - elements->begin()), sorted.begin() + (end - elements->begin()), begin);
  }
}

inline void SortByBytes(std::vector<std::string>* texts) {
  SortByDigits(texts, [](const std::string& text, std::size_t place) {
    return place < text.size() ? 1U + static_cast<unsigned char>(text[place]) : 0U;
  });
}

// number(element) gives a std::uint32_t.
template <typename Element, typename Number> void SortByNumber(std::vector<Element>* elements, Number number) {
  SortByDigits(elements, [&](const Element& element, std::size_t place) {
    return place < 4 ? 1U + (number(element) >> (24 - 8 * place) & 0xff) : 0U;
  });
}

}  // namespace hostkit
