#include "layouts.h"

#include <tq_description.h>
#include <tq_mom/tq_mom.h>

#define TQ_FIELD(field) \
  FieldLayout { #field, offsetof(Record, field), sizeof(Record::field) }

#define TQ_RECORD(type, ...)                                   \
  [] {                                                         \
    using Record = type;                                       \
    return RecordLayout{#type, sizeof(Record), {__VA_ARGS__}}; \
  }(),

namespace recorder {

const std::vector<RecordLayout>& Layouts() {
  static const std::vector<RecordLayout> layouts = {TQ_RECORDS(TQ_RECORD, TQ_FIELD)};
  return layouts;
}

}  // namespace recorder
