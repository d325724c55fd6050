// Every command that takes a key.
#pragma once

#include <gtest/gtest.h>
#include <tq_mom/tq_mom.h>

#include <cstdint>
#include <vector>

namespace hostkit {

// The arguments that only some commands have; right as they stand.
struct OwnArguments {
  static constexpr int32_t kTags[] = {1};

  const int32_t* tags = kTags;
  int tag_count = 1;
  int milliseconds = 1000;
  double bound = 1;  // a score, too
  bool pivot = true;
  unsigned int where = 0;
};

struct CommandResult {
  const char* call;
  int status;
};

// Runs all of them one after the other. With right arguments each succeeds when the key object has the value "1" and
// the field 1.
std::vector<CommandResult> RunAll(tq_global_t* g, int db, tq_obj* key, const OwnArguments& own = {});

// The status of a result record, which it releases.
template <typename Record> int StatusOf(Record* result, int (*release)(Record*)) {
  if (result == nullptr) return TQ_MOM_MALLOC_ERR;
  const int status = result->error_code;
  EXPECT_EQ(release(result), TQ_MOM_OK);
  return status;
}

}  // namespace hostkit
