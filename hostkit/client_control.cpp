// The kit's own controls.
#include <tq_kit/control.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "hostkit/callbacks.h"
#include "hostkit/order.h"

namespace {

using hostkit::Access;
using hostkit::Bring;
using hostkit::Command;
using hostkit::Cursor;
using hostkit::Element;
using hostkit::Engine;
using hostkit::Kind;
using hostkit::Request;
using hostkit::Status;

// Opens a database of a connected runtime.
int OpenDatabase(tq_global_t* g, int db, Command* command) {
  if (const int status = command->OpenRuntime(g); status != TQ_MOM_OK) return status;
  if (!hostkit::ValidDatabase(db)) return command->client->Refuse(TQ_MOM_INPUT_ERR, "there is no such database");
  command->request.db = db;
  return TQ_MOM_OK;
}

// Opens a key, or a pattern, that is given by its text.
int OpenText(tq_global_t* g, int db, const char* text, Command* command) {
  if (const int status = OpenDatabase(g, db, command); status != TQ_MOM_OK) return status;
  if (text == nullptr || !hostkit::ValidName(text)) {
    return command->client->Refuse(TQ_MOM_INPUT_ERR, "the key text is null, empty or longer than 511 bytes");
  }
  command->request.name = text;
  return TQ_MOM_OK;
}

// Runs a method of the engine that is about the runtime as a whole.
template <typename Body> int RunControl(tq_global_t* g, Body body) {
  Command command;
  command.client = hostkit::ClientOf(g);
  if (command.client == nullptr) return TQ_MOM_INPUT_ERR;
  return command.Run([&] { return command.client->Finish(body(command.client->engine.get())); });
}

// One element of a key, as it is handed out.
struct Part {
  std::string bytes;
  hostkit::FieldTag tag = 0;
  std::int64_t remaining = TQ_KIT_NEVER;
  double score = 0;
};

Status ReadHash(Engine* engine, const Request& request, std::vector<Part>* parts) {
  hostkit::HashContents hash;
  if (Status status = engine->HashGetAll(request, &hash); !status.ok()) return status;
  std::vector<hostkit::FieldRemaining> expiring;
  Status status = engine->HashRemaining(request, &expiring);
  std::unordered_map<hostkit::FieldTag, std::int64_t> remaining;
  for (const auto& [tag, milliseconds] : expiring) remaining[tag] = milliseconds;
  hostkit::SortByNumber(&hash.fields, [](const hostkit::Field& field) { return field.tag; });
  for (hostkit::Field& field : hash.fields) {
    const auto found = remaining.find(field.tag);
    parts->push_back({std::move(field.bytes), field.tag, found != remaining.end() ? found->second : TQ_KIT_NEVER});
  }
  return status;
}

// Reads all of a key, of which nothing is left when it went meanwhile.
Status ReadKey(Engine* engine, const Request& request, hostkit::KeyState* state, std::vector<Part>* parts) {
  if (Status status = engine->Inspect(request, state); !status.ok()) return status;
  std::vector<std::string> elements;
  std::vector<hostkit::ScoredMember> members;
  std::optional<std::string> text;
  Status status;
  switch (state->kind) {
    case Kind::kNone: break;
    case Kind::kString:
      status = engine->Get(request, &text);
      if (text) elements.push_back(std::move(*text));
      break;
    case Kind::kHash: return ReadHash(engine, request, parts);
    case Kind::kList: status = engine->ListRange(request, 0, -1, &elements); break;
    case Kind::kSet:
      status = engine->SetMembers(request, &elements);
      hostkit::SortByBytes(&elements);
      break;
    case Kind::kSortedSet: status = engine->SortedRange(request, 0, -1, &members); break;
  }
  for (std::string& element : elements) parts->push_back({.bytes = std::move(element)});
  for (auto& [member, score] : members) parts->push_back({.bytes = std::move(member), .score = score});
  return status;
}

struct VisitFrame : hostkit::CallbackFrame {
  std::unique_ptr<Cursor> cursor;
  std::vector<Element> batch;
  std::size_t next_key = 0;
  std::string name;
  std::vector<Part> parts;
  std::size_t next_part = 0;
  tq_kit_element_t element = {};
  std::int64_t visited = 0;
};

// Takes the next element into the frame. Returns 1, 0 when there is none left, or a status code.
int NextPart(const Command& command, VisitFrame* frame) noexcept {
  return command.Run([&] {
    tq_mom_client_s& client = *command.client;
    while (frame->next_part == frame->parts.size()) {
      if (frame->next_key == frame->batch.size()) {
        frame->batch.clear();
        frame->next_key = 0;
        Status status = frame->cursor->Next(std::numeric_limits<std::size_t>::max(), &frame->batch);
        if (!status.ok() || frame->batch.empty()) return client.Finish(std::move(status));
      }
      frame->name = std::move(frame->batch[frame->next_key++].name);
      frame->parts.clear();
      frame->next_part = 0;
      hostkit::KeyState state;
      Status status = ReadKey(client.engine.get(), {command.request.db, frame->name}, &state, &frame->parts);
      // A key that another process has just put another kind into counts as gone.
      if (status.code() == hostkit::StatusCode::kWrongKind)
        frame->parts.clear();
      else if (!status.ok())
        return client.Finish(std::move(status));
      frame->element = {};
      frame->element.key = frame->name.c_str();
      frame->element.kind = static_cast<tq_kit_kind_t>(state.kind);
      frame->element.remaining = state.remaining.value_or(TQ_KIT_NEVER);
      frame->element.count = frame->parts.size();
    }
    const Part& part = frame->parts[frame->next_part];
    frame->element.position = frame->next_part++;
    frame->element.bytes = part.bytes.c_str();
    frame->element.length = part.bytes.size();
    frame->element.tag = part.tag;
    frame->element.field_remaining = part.remaining;
    frame->element.score = part.score;
    return 1;
  });
}

std::uint32_t Milliseconds(std::int64_t time) {
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(time, 0, std::numeric_limits<std::uint32_t>::max()));
}

Status StoreElement(Engine* engine, const Request& request, const tq_kit_element_t& element) {
  const std::string_view bytes(static_cast<const char*>(element.bytes), element.length);
  std::int64_t count = 0;
  bool flag = false;
  Status status;
  switch (static_cast<Kind>(element.kind)) {
    case Kind::kNone:  // has been refused
    case Kind::kString: status = engine->Set(request, bytes, std::nullopt); break;
    case Kind::kHash: {
      const hostkit::FieldView field{element.tag, bytes};
      status = engine->HashSet(request, {&field, 1});
      if (!status.ok() || element.field_remaining < 0) break;
      status = engine->HashExpire(request, {&element.tag, 1}, Milliseconds(element.field_remaining), &count);
      break;
    }
    case Kind::kList: status = engine->ListPush(request, hostkit::End::kTail, bytes, &count); break;
    case Kind::kSet: status = engine->SetAdd(request, bytes, &flag); break;
    case Kind::kSortedSet: {
      const hostkit::ScoredView member{bytes, element.score};
      status = engine->SortedAdd(request, {&member, 1}, &count);
      break;
    }
  }
  if (!status.ok() || element.remaining < 0) return status;
  return engine->Expire(request, Milliseconds(element.remaining), &flag);
}

}  // namespace

const char* tq_kit_last_error(tq_global_t* g) {
  const tq_mom_client_s* client = hostkit::ClientOf(g);
  return client != nullptr ? client->last_error.c_str() : nullptr;
}

int tq_kit_freeze(tq_global_t* g) {
  return RunControl(g, [](Engine* engine) { return engine->FreezeClock(); });
}

int tq_kit_advance(tq_global_t* g, int64_t milliseconds) {
  tq_mom_client_s* client = hostkit::ClientOf(g);
  if (client != nullptr && milliseconds < 0) return client->Refuse(TQ_MOM_INPUT_ERR, "the time is negative");
  return RunControl(g, [&](Engine* engine) { return engine->AdvanceClock(milliseconds); });
}

int tq_kit_thaw(tq_global_t* g) {
  return RunControl(g, [](Engine* engine) { return engine->ThawClock(); });
}

int tq_kit_read_only(tq_global_t* g, int db, int on) {
  tq_mom_client_s* client = hostkit::ClientOf(g);
  if (client == nullptr) return TQ_MOM_INPUT_ERR;
  if (!hostkit::ValidDatabase(db)) return client->Refuse(TQ_MOM_INPUT_ERR, "there is no such database");
  client->read_only[static_cast<std::size_t>(db)] = on != 0;
  return client->Finish({});
}

int tq_kit_inspect(tq_global_t* g, int db, const char* key, tq_kit_kind_t* kind, int64_t* remaining) {
  Command command;
  if (const int status = OpenText(g, db, key, &command); status != TQ_MOM_OK) return status;
  return command.Run([&] {
    hostkit::KeyState state;
    Status status = command.Call(&Engine::Inspect, &state);
    if (status.ok() && kind != nullptr) *kind = static_cast<tq_kit_kind_t>(state.kind);
    if (status.ok() && remaining != nullptr) *remaining = state.remaining.value_or(TQ_KIT_NEVER);
    return command.client->Finish(std::move(status));
  });
}

int tq_kit_visit(tq_global_t* g, int db, const char* pattern, tq_kit_visitor visitor, void* context) {
  Command command;
  if (const int status = OpenText(g, db, pattern, &command); status != TQ_MOM_OK) return status;
  if (visitor == nullptr) return command.client->Refuse(TQ_MOM_INPUT_ERR, "there is no visitor");
  VisitFrame* frame = nullptr;
  int status = hostkit::EnterFrame(command, __builtin_frame_address(0), &frame, [&](VisitFrame* made) {
    return command.Call(&Engine::Scan, Bring::kNames, &made->cursor);
  });
  if (status != TQ_MOM_OK) return status;
  while ((status = NextPart(command, frame)) > 0) {
    ++frame->visited;
    if (visitor(g, &frame->element, context) != 0) break;
  }
  const std::int64_t visited = frame->visited;
  command.client->Leave(frame);
  return status < 0 ? status : command.Result({}, visited);
}

int tq_kit_store(tq_global_t* g, int db, const tq_kit_element_t* element) {
  Command command;
  if (const int status = OpenText(g, db, element != nullptr ? element->key : nullptr, &command); status != TQ_MOM_OK) {
    return status;
  }
  if (element == nullptr || element->kind < TQ_KIT_STRING || element->kind > TQ_KIT_SORTED_SET ||
      (element->bytes == nullptr && element->length != 0) || std::isnan(element->score)) {
    return command.client->Refuse(TQ_MOM_INPUT_ERR, "the element has no kind, no bytes, or a score that is no number");
  }
  if (const int status = command.Enter(Access::kWrite); status != TQ_MOM_OK) return status;
  return command.Run(
      [&] { return command.client->Finish(StoreElement(command.client->engine.get(), command.request, *element)); });
}

int tq_kit_clear(tq_global_t* g, int db) {
  Command command;
  if (const int status = OpenText(g, db, "*", &command); status != TQ_MOM_OK) return status;
  if (const int status = command.Enter(Access::kWrite); status != TQ_MOM_OK) return status;
  return command.Run([&] {
    Engine& engine = *command.client->engine;
    std::unique_ptr<Cursor> cursor;
    Status status = engine.Scan(command.request, Bring::kNames, &cursor);
    std::int64_t count = 0;
    std::vector<Element> batch;
    while (status.ok()) {
      batch.clear();
      status = cursor->Next(std::numeric_limits<std::size_t>::max(), &batch);
      if (batch.empty()) break;
      for (const Element& element : batch) {
        bool deleted = false;
        if (status.ok()) status = engine.Delete({db, element.name}, &deleted);
        count += deleted ? 1 : 0;
      }
    }
    return command.Result(std::move(status), count);
  });
}
