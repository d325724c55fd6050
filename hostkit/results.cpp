#include "hostkit/results.h"

#include <tq_kit/live.h>

namespace hostkit {

LiveSet<ResultTag>& LiveResults() {
  static LiveSet<ResultTag> results;
  return results;
}

}  // namespace hostkit

size_t tq_kit_live_results(void) { return hostkit::LiveResults().size(); }
