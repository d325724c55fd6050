// Members of records as Lua values.
#ifndef TQ_RECORDS_MEMBERS_H
#define TQ_RECORDS_MEMBERS_H

#include "records/fields.h"

namespace tq_mom {

// A field as its accessors see it.
struct FieldRow {
  std::uint16_t name;  // among the names of all fields
  TypeId record;
  FieldKind kind;
  Parameter parameter;
  TypeId type;
  std::uint16_t offset;
  std::uint16_t detail;  // as Field has it
};

// Pushes the member's value.
void PushMember(lua_State* L, char* member, const FieldRow& field);

// Converts the value at the index and stores it unless the member is null (the record was nil). False when the value
// cannot be converted; nothing is stored then.
bool StoreMember(lua_State* L, char* member, const FieldRow& field, int index);

}  // namespace tq_mom

#endif
