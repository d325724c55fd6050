#include "watch/call.h"

#include <tq_mom/constants.h>

#include <cstring>

#include "watch/internal.h"

namespace tq_watch {
namespace {

template <class T> T Read(const void* record, unsigned char offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}

// An array's first elements, and how many there are when that is not all.
template <class Length, class Add> void AddArray(const void* array, Length length, Text* text, Add add) {
  constexpr Length kShown = 8;
  if (array == nullptr) length = 0;
  text->Add("{");
  for (Length i = 0; i < length && i < kShown; ++i) {
    if (i > 0) text->Add(", ");
    add(i);
  }
  if (length > kShown) text->Format(", ... (%lld)", static_cast<long long>(length));
  text->Add("}");
}

template <class T> T Element(const void* array, auto i) { return static_cast<const T*>(array)[i]; }

void AddNumber(double number, Text* text) { text->Format("%.14g", number); }

void AddMember(const void* record, const Member& member, Text* text) {
  const auto array = [&] { return Read<const void*>(record, member.offset); };
  const auto length = [&] { return ArrayLength(record, member); };
  switch (member.type) {
    case Member::kEnd: return;
    case Member::kInt: return text->Format("%d", Read<int>(record, member.offset));
    case Member::kInt64: return text->Format("%lld", static_cast<long long>(Read<std::int64_t>(record, member.offset)));
    case Member::kDouble: return AddNumber(Read<double>(record, member.offset), text);
    case Member::kObject: return AddObject(array(), text);
    case Member::kObjects:
      return AddArray(array(), length(), text, [&](auto i) { AddObject(Element<const void*>(array(), i), text); });
    case Member::kScores:
      return AddArray(array(), length(), text, [&](auto i) { AddNumber(Element<double>(array(), i), text); });
    case Member::kTags:
      return AddArray(array(), length(), text, [&](auto i) { text->Format("%zu", Element<std::size_t>(array(), i)); });
    case Member::kFields:
      return AddArray(array(), Read<std::int32_t>(record, member.length_offset), text,
                      [&](auto i) { text->Format("%d", Element<std::int32_t>(array(), i)); });
  }
}

void AddMembers(const void* record, const Member* members, Text* text) {
  for (const Member* member = members; member->type != Member::kEnd; ++member) {
    text->Format("%s%s=", member == members ? "" : ", ", member->name);
    AddMember(record, *member, text);
  }
}

void AddArgument(const Function& function, const Value* arguments, int parameter, Text* text) {
  const Value& value = arguments[parameter];
  switch (function.parameters[parameter]) {
    case Kind::kRuntime: return text->Add(value.pointer != nullptr ? "g" : "nil");
    case Kind::kOption:
      if (value.pointer == nullptr) return text->Add("nil");
      text->Add("{");
      AddMembers(value.pointer, function.option->members, text);
      return text->Add("}");
    case Kind::kReleased:
      if (value.pointer == nullptr) return text->Add("nil");
      if (function.owned->size > 0) return text->Add(function.owned->name);
      return AddObject(value.pointer, text);
    case Kind::kObject: return AddObject(value.pointer, text);
    case Kind::kDatabase:
    case Kind::kInteger: return text->Format("%lld", static_cast<long long>(value.integer));
    case Kind::kUnsigned: return text->Format("%llu", static_cast<unsigned long long>(value.unsigned_integer));
    case Kind::kNumber: return AddNumber(value.number, text);
    case Kind::kTimeout:
      return AddNumber(static_cast<double>(value.timeout.tv_sec) + static_cast<double>(value.timeout.tv_usec) / 1e6,
                       text);
    case Kind::kText: {
      const auto* bytes = static_cast<const char*>(value.pointer);
      return bytes != nullptr ? text->AddQuoted(bytes, std::strlen(bytes)) : text->Add("nil");
    }
    case Kind::kIntegers:
      return AddArray(value.pointer, LengthOf(function, arguments, parameter), text,
                      [&](auto i) { text->Format("%d", Element<std::int32_t>(value.pointer, i)); });
    case Kind::kScores:
      return AddArray(value.pointer, LengthOf(function, arguments, parameter), text,
                      [&](auto i) { AddNumber(Element<double>(value.pointer, i), text); });
    case Kind::kMembers:
      return AddArray(value.pointer, LengthOf(function, arguments, parameter), text,
                      [&](auto i) { AddObject(Element<const void*>(value.pointer, i), text); });
    case Kind::kCallback: return text->Add(value.pointer != nullptr ? "function" : "nil");
    case Kind::kLength:
    case Kind::kOut:
    case Kind::kContext: return;
  }
}

bool HasText(Kind kind) { return kind != Kind::kLength && kind != Kind::kOut && kind != Kind::kContext; }

bool IsNumber(Kind kind) {
  return kind == Kind::kDatabase || kind == Kind::kInteger || kind == Kind::kUnsigned || kind == Kind::kNumber ||
         kind == Kind::kTimeout;
}

bool HasOut(const Function& function) { return function.parameters[function.parameter_count - 1] == Kind::kOut; }

const char* StatusName(std::int64_t status) {
  switch (status) {
#define TQ_WATCH_STATUS(name) \
  case name: return #name;
    TQ_WATCH_STATUS(TQ_MOM_ERR)
    TQ_WATCH_STATUS(TQ_MOM_INPUT_ERR)
    TQ_WATCH_STATUS(TQ_MOM_MALLOC_ERR)
    TQ_WATCH_STATUS(TQ_MOM_NO_READY)
    TQ_WATCH_STATUS(TQ_MOM_GLOBAL_DB_NO_WRITE)
#undef TQ_WATCH_STATUS
    default: return nullptr;
  }
}

void AddStatus(std::int64_t status, Text* text) {
  text->Format("%lld", static_cast<long long>(status));
  if (const char* name = StatusName(status)) text->Format(" (%s)", name);
}

void AddPointer(const Call& call, Text* text) {
  const OwnedType* type = call.function->owned;
  const void* pointer = call.result.pointer;
  if (pointer == nullptr) {
    text->Add("nil");
  } else if (type == nullptr || (type->size == 0 && call.function->parameters[0] != Kind::kRuntime)) {
    text->Add(type != nullptr ? "g" : "a record of the library's");
  } else if (type->size == 0) {
    AddObject(pointer, text);
  } else {
    text->Format("%s{", type->name);
    int error_code = Read<int>(pointer, type->error_code);
    if (error_code != TQ_MOM_OK) {
      text->Add("error_code=");
      AddStatus(error_code, text);
    } else {
      AddMembers(pointer, type->members, text);
    }
    text->Add("}");
  }
}

}  // namespace

std::int64_t LengthOf(const Function& function, const Value* arguments, int array) {
  int length = array;
  while (function.parameters[length] != Kind::kLength) ++length;
  return arguments[length].integer;
}

std::size_t ArrayLength(const void* record, const Member& member) {
  return Read<std::size_t>(record, member.length_offset);
}

void AddArguments(const Function& function, const Value* arguments, Text* text) {
  for (int i = 0; i < function.parameter_count; ++i) {
    if (!HasText(function.parameters[i])) continue;
    AddArgument(function, arguments, i, text);
    text->Add("", 1);  // each text with its NUL
  }
}

const void* KeyObject(const Function& function, const Value* arguments) {
  for (int i = 0; i < function.parameter_count; ++i) {
    if (function.parameters[i] == Kind::kObject) return arguments[i].pointer;
    if (function.parameters[i] == Kind::kMembers) {
      const auto* members = static_cast<void* const*>(arguments[i].pointer);
      return members != nullptr && LengthOf(function, arguments, i) > 0 ? members[0] : nullptr;
    }
  }
  return nullptr;
}

const char* tq_watch_argument(const Call* call, int parameter) {
  if (!HasText(call->function->parameters[parameter])) return nullptr;
  const char* text = call->texts;
  for (int i = 0; i < parameter; ++i) {
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): a call has a text for each parameter that takes one
    if (HasText(call->function->parameters[i])) text += std::strlen(text) + 1;
  }
  return text;
}

void AddResult(const Call& call, Text* text) {
  if (call.left) return text->Add("left by an error");
  if (call.function->result == ResultKind::kStatus) {
    AddStatus(call.result.integer, text);
  } else {
    AddPointer(call, text);
  }
  if (HasOut(*call.function)) {
    text->Add(", ");
    AddStatus(call.out, text);
  }
}

void AddInvocation(const Call& call, Text* text) {
  text->Format("%s(", call.function->name);
  const char* separator = "";
  for (int i = 0; i < call.function->parameter_count; ++i) {
    const char* argument = tq_watch_argument(&call, i);
    if (argument == nullptr) continue;
    text->Add(separator);
    text->Add(argument);
    separator = ", ";
  }
  text->Add(")");
}

void AddLine(const Call& call, Text* text) {
  if (call.position.source != nullptr) text->Format("%s:%d: ", call.position.source, call.position.line);
  AddInvocation(call, text);
  text->Add(" = ");
  AddResult(call, text);
  text->Format(" [%lld us]%s", static_cast<long long>(call.microseconds), call.faulted ? " fault" : "");
}

void AddJson(const Call& call, Text* text) {
  const Function& function = *call.function;
  text->Format("{\"call\":\"%s\"", function.name);
  if (call.database >= 0) text->Format(",\"db\":%d", call.database);
  if (call.key != nullptr) {
    text->Add(",\"key\":");
    text->AddJsonString(call.key, call.key_length);
  }
  text->Add(",\"arguments\":[");
  const char* separator = "";
  for (int i = 0; i < function.parameter_count; ++i) {
    const char* argument = tq_watch_argument(&call, i);
    if (argument == nullptr || function.parameters[i] == Kind::kRuntime || function.parameters[i] == Kind::kDatabase) {
      continue;
    }
    text->Add(separator);
    // JSON has no infinite numbers.
    if (IsNumber(function.parameters[i]) && std::strpbrk(argument, "in") == nullptr) {
      text->Add(argument);
    } else {
      text->AddJsonString(argument, std::strlen(argument));
    }
    separator = ",";
  }
  text->Add("],\"result\":");
  if (call.left || (function.result == ResultKind::kPointer && call.result.pointer == nullptr)) {
    text->Add("null");
  } else if (function.result == ResultKind::kStatus) {
    text->Format("%lld", static_cast<long long>(call.result.integer));
  } else {
    Text result;
    AddPointer(call, &result);
    text->AddJsonString(result.c_str(), result.length());
  }
  if (HasOut(function) && !call.left) text->Format(",\"out\":%d", call.out);
  text->Format(",\"failed\":%s,\"fault\":%s,\"microseconds\":%lld,\"time\":%.6f", call.failed ? "true" : "false",
               call.faulted ? "true" : "false", static_cast<long long>(call.microseconds), call.time);
  if (call.position.source != nullptr) {
    text->Add(",\"file\":");
    text->AddJsonString(call.position.source, std::strlen(call.position.source));
    text->Format(",\"line\":%d", call.position.line);
  }
  text->Add("}");
}

}  // namespace tq_watch
