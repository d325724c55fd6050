#include "records/records.h"

#include <cstdlib>

namespace tq_mom {
namespace {

using binding::ClassRecord;
using binding::kNone;
using binding::NamespaceRecord;

const char* no_base_names[1];
ClassRecord* no_bases[1];

ClassRecord class_records[kClassCount];
NamespaceRecord class_statics[kClassCount];

// A record owns nothing it points to.
void FreeRecord(void* record) { std::free(record); }

}  // namespace

ClassRecord* class_list[kClassCount + 1];

void SetUpClasses(binding::TypeDescriptor* descriptors) {
  int i = 0;
  auto add = [&](const RecordClass* rows, int count) {
    for (const RecordClass* row = rows; row != rows + count; ++row, ++i) {
      const char* name = ClassName(row->type);
      int type = static_cast<int>(row->type);
      const binding::Constant* constants = row->constants != nullptr ? row->constants : kNone<binding::Constant>;
      class_statics[i] = {name,      kNone<binding::Method>, kNone<binding::Attribute>,
                          constants, kNone<ClassRecord*>,    kNone<const NamespaceRecord*>};
      class_records[i] = {name,
                          name,
                          TypeSlot(row->type),
                          row->constructor,
                          FreeRecord,
                          kNone<binding::Method>,
                          row->fields,
                          &class_statics[i],
                          kNone<binding::Method>,
                          no_bases,
                          no_base_names};
      class_list[i] = &class_records[i];
      descriptors[type].class_record = &class_records[i];
    }
  };
  add(OptionRecords(), kOptionClassCount);
  add(ResultRecords(), kResultClassCount);
  add(MessageRecords(), kMessageClassCount);
  add(RuntimeRecords(), kRuntimeClassCount);
}

const char* StructureName(TypeId record) { return MangledName(record) + std::strlen("_p_"); }

const char* Qualifier(TypeId record) {
  // The union is declared inside the event record.
  return record == TypeId::_p_tq_thread_u ? "tq_thread::" : "";
}

int NewRecord(lua_State* L, TypeId record, std::size_t size) {
  if (lua_gettop(L) != 0) {
    const char* structure = StructureName(record);
    const binding::Piece name[] = {Qualifier(record), structure, "::", structure, nullptr};
    binding::RaiseCountError(L, name, 0);
  }
  // The handle comes first: making it may raise an error, which must find no record to lose.
  binding::Handle* handle =
      binding::PushEmptyClassHandle(L, Type(record), ClassName(record), binding::PushClassTableOfClosure(L));
  handle->pointer = std::calloc(1, size);
  if (handle->pointer == nullptr) {
    lua_pushnil(L);
    return 1;
  }
  handle->own = 1;
  return 1;
}

}  // namespace tq_mom
