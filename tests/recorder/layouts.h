// Where the fields of the client library's records lie, as the compiler sees them.
#pragma once

#include <cstddef>
#include <vector>

namespace recorder {

struct FieldLayout {
  const char* name;
  size_t offset;
  size_t size;
};

struct RecordLayout {
  const char* name;
  size_t size;
  std::vector<FieldLayout> fields;
};

const std::vector<RecordLayout>& Layouts();

}  // namespace recorder
