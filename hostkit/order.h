// Orders that results come in.
#ifndef TQ_HOSTKIT_ORDER_H
#define TQ_HOSTKIT_ORDER_H

#include <algorithm>
#include <string>
#include <vector>

namespace hostkit {

inline void SortByBytes(std::vector<std::string>* texts) { std::sort(texts->begin(), texts->end()); }

template <typename Element, typename Number>
void SortByNumber(std::vector<Element>* elements, Number number) {
  std::sort(elements->begin(), elements->end(),
            [&](const Element& a, const Element& b) { return number(a) < number(b); });
}

}  // namespace hostkit

#endif
