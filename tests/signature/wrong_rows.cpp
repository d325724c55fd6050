// Rows that must not compile, each with what the compiler has to say. CASE chooses one; 0 has right ones only.
#include "commands/command.h"
#include "records/records.h"

extern "C" {
int tq_mom_right_sync(tq_global_t* g, int db, void* key, int a, int b, int* out);
int tq_mom_fields_sync(tq_global_t* g, int db, void* key, int32_t* fields, int count);
int tq_mom_bare_sync(tq_global_t* g, int db, void* key, int32_t* fields);
int tq_mom_early_sync(tq_global_t* g, int* out, void* key);
int tq_mom_long_sync(tq_global_t* g, int a, int b, int c, int d, int e, int f);
int tq_mom_late_sync(tq_global_t* g, int32_t* fields, int count, tq_mom_set_op_t* op);
double tq_mom_real_sync(tq_global_t* g);
}

struct Unknown {
  float real;
  double* numbers;
  int count;
  unsigned int number;
};

using namespace tq_mom;  // NOLINT(google-build-using-namespace)

template <class Command> constexpr CommandRow kRow = Command::Row(0, 0);

#define ROW(...) template const CommandRow kRow<TQ_COMMAND(__VA_ARGS__)>;

#if CASE == 0  // right
ROW(right, tq_mom_right_sync, int(Store, int, Key, int, int, Out))
ROW(fields, tq_mom_fields_sync, int(Store, int, Key, Integers))
#elif CASE == 1   // another number of parameters than its command's signature has
ROW(right, tq_mom_right_sync, int(Store, int, Key, int, Out))
#elif CASE == 2   // another number of parameters than its command's signature has
ROW(bare, tq_mom_bare_sync, int(Store, int, Key, Integers))
#elif CASE == 3   // with a parameter of another type than its command's signature has
ROW(fields, tq_mom_fields_sync, int(Store, int, Key, Scores))
#elif CASE == 4   // with another result than its command's signature has
ROW(fields, tq_mom_fields_sync, tq_obj*(Store, int, Key, Integers))
#elif CASE == 5   // This is no word of a command's signature
ROW(right, tq_mom_right_sync, int(Store, int, Key, int, int, int*))
#elif CASE == 6   // This is no word of a command's signature
ROW(bare, tq_mom_bare_sync, int(Store, int, Key, int32_t*))
#elif CASE == 7   // Out is the last word of a signature
ROW(early, tq_mom_early_sync, int(Store, Out, Key))
#elif CASE == 8   // A command has at most kMaxParameters arguments
ROW(long, tq_mom_long_sync, int(Store, int, int, int, int, int, int))
#elif CASE == 9   // arrays come after all handles of records
ROW(late, tq_mom_late_sync, int(Store, Integers, tq_mom_set_op_t*))
#elif CASE == 10  // A command returns an int or a pointer to a record
ROW(real, tq_mom_real_sync, double(Store))
#elif CASE == 11  // A command's signature is a function type
ROW(fields, tq_mom_fields_sync, int)
#elif CASE == 12  // A command lset has a client function tq_mom_lset_sync
ROW(field, tq_mom_real_sync, int(Store))
#elif CASE == 13  // This type is not in the list of signature/types.h
ROW(late, tq_mom_late_sync, int(Store, Integers, Unknown*))
#elif CASE == 14  // No field has a member of this type
constexpr RecordClass kClass = [] {
  using Record = Unknown;
  return RecordClass(kVoid, sizeof(Record), TQ_FIELD(real));
}();
#elif CASE == 15  // an array TQ_ARRAY
constexpr RecordClass kClass = [] {
  using Record = Unknown;
  return RecordClass(kVoid, sizeof(Record), TQ_FIELD(numbers));
}();
#elif CASE == 16  // The member that counts an array's elements is a size_t
constexpr RecordClass kClass = [] {
  using Record = Unknown;
  return RecordClass(kVoid, sizeof(Record), TQ_ARRAY(numbers, count));
}();
#elif CASE == 17  // An array field is a pointer to its elements
constexpr RecordClass kClass = [] {
  using Record = Unknown;
  return RecordClass(kVoid, sizeof(Record), TQ_ARRAY(number, count));
}();
#elif CASE == 18  // TQ_INT64 is for an int64_t
constexpr RecordClass kClass = [] {
  using Record = Unknown;
  return RecordClass(kVoid, sizeof(Record), TQ_INT64(number));
}();
#elif CASE == 19  // This type is not in the list of signature/types.h
constexpr RecordClass kClass = TQ_CLASS(Unknown, TQ_FIELD(count));
#endif
