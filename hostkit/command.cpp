#include "hostkit/command.h"

#include <algorithm>
#include <climits>

namespace hostkit {

int Command::OpenRuntime(tq_global_t* g) {
  client = ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  return client->connected ? TQ_MOM_OK : client->Refuse(TQ_MOM_NO_READY, "not connected");
}

int Command::OpenKey(const Target& target) {
  if (const int status = OpenRuntime(target.g); status != TQ_MOM_OK) return status;
  if (!ValidDatabase(target.db)) return client->Refuse(TQ_MOM_INPUT_ERR, "there is no such database");
  object = LiveObject(target.key);
  if (object == nullptr) return client->Refuse(TQ_MOM_INPUT_ERR, "the key is no value object, or was released");
  if (!ValidName(object->key)) {
    return client->Refuse(TQ_MOM_INPUT_ERR, "the key text is empty, longer than 511 bytes, or has a NUL");
  }
  request = {target.db, object->key, target.limit};
  return TQ_MOM_OK;
}

int Command::Enter(Access access) {
  if (access == Access::kRead) return TQ_MOM_OK;
  if (client->read_only[static_cast<std::size_t>(request.db)]) {
    return client->Refuse(TQ_MOM_GLOBAL_DB_NO_WRITE, "the database is read-only");
  }
  ++client->writes;
  return TQ_MOM_OK;
}

int Command::Result(Status status, std::int64_t number) const noexcept {
  if (!status.ok()) return client->Finish(std::move(status));
  client->Finish({});
  return static_cast<int>(std::min<std::int64_t>(number, INT_MAX));
}

const char* ListedFields::Why(const tq_obj& object) const {
  if (tags_.empty()) return "there are no fields";
  const bool complete =
      std::all_of(tags_.begin(), tags_.end(), [&](FieldTag tag) { return object.Field(tag) != nullptr; });
  return complete ? nullptr : "the key object lacks a listed field";
}

std::vector<FieldView> ListedFields::Of(const tq_obj& object) const {
  std::vector<FieldView> fields;
  fields.reserve(tags_.size());
  for (const FieldTag tag : tags_) fields.push_back({tag, *object.Field(tag)});
  return fields;
}

}  // namespace hostkit
