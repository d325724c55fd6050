// The members of a sorted set in the order of their scores, those of one score by their bytes.
#pragma once

#include <cstddef>
#include <ext/pb_ds/assoc_container.hpp>
#include <ext/pb_ds/tree_policy.hpp>
#include <functional>
#include <string>

namespace hostkit {

struct Ranked {
  double score;
  const std::string* member;

  friend bool operator<(const Ranked& a, const Ranked& b) {
    return a.score != b.score ? a.score < b.score : *a.member < *b.member;
  }
};

// Also finds the element at a position and the position of an element in logarithmic time.
using Ranking = __gnu_pbds::tree<Ranked, __gnu_pbds::null_type, std::less<>, __gnu_pbds::rb_tree_tag,
                                 __gnu_pbds::tree_order_statistics_node_update>;

}  // namespace hostkit
