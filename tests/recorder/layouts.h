// Where the fields of the client library's records lie, as the compiler sees them.
#ifndef TESTS_RECORDER_LAYOUTS_H_
#define TESTS_RECORDER_LAYOUTS_H_

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

#endif  // TESTS_RECORDER_LAYOUTS_H_
