// The long way of a call.
#include <pthread.h>
#include <time.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "watch/internal.h"

namespace tq_watch {

namespace {

// A call on its way. A script's callback may leave it by an error, past every destructor, so it is kept here: a call
// that ends drops its own frame, and one that was left is noticed by a later call.
struct Frame {
  Frame* outer;
  const void* stack;  // where the call's own stack frame is
  Text texts;
  Text key;
  Call call;
};

Frame* innermost;

bool switches[3];

bool Is(Switch what) { return switches[static_cast<int>(what)]; }

bool telling;  // to a script's function, whose own calls are not told of
pthread_t thread;
PositionSource position_source;
void* position_context;

// The names of script files.
struct Source {
  Source* next;
  char* name;
};

Source* sources;

const char* Intern(const char* name) {
  for (const Source* source = sources; source != nullptr; source = source->next) {
    if (std::strcmp(source->name, name) == 0) return source->name;
  }
  auto* source = static_cast<Source*>(std::malloc(sizeof(Source)));
  char* copy = strdup(name);
  if (source == nullptr || copy == nullptr) {
    std::free(source);
    std::free(copy);
    return nullptr;
  }
  *source = {sources, copy};
  sources = source;
  return copy;
}

double Calendar() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

void Sleep(int milliseconds) {
  timespec rest = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
  while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

int* OutOf(const Function& function, const Value* arguments) {
  int last = function.parameter_count - 1;
  return function.parameters[last] == Kind::kOut ? static_cast<int*>(arguments[last].pointer) : nullptr;
}

bool HasFailed(const Call& call) {
  const Function& function = *call.function;
  if (function.result == ResultKind::kStatus) return call.result.integer < 0;
  if (function.parameters[function.parameter_count - 1] == Kind::kOut) return call.out < 0;
  if (call.result.pointer == nullptr) return true;
  if (function.owned == nullptr || function.owned->size == 0) return false;
  int error_code;
  std::memcpy(&error_code, static_cast<const char*>(call.result.pointer) + function.owned->error_code,
              sizeof error_code);
  return error_code != 0;
}

void Drop(Frame* frame) {
  innermost = frame->outer;
  frame->~Frame();
  std::free(frame);
}

void TellOf(const Call& call) {
  if (telling) return;
  telling = true;
  if (Is(Switch::kCounts)) Count(call);
  Tell(call);
  telling = false;
}

// Ends the innermost call, which was left.
void DropLeft() {
  Call& call = innermost->call;
  call.left = true;
  call.failed = true;
  CloseMessages(call);
  TellOf(call);
  Drop(innermost);
}

// Null without the memory for it.
Frame* Enter(const Function& function, const Value* arguments, const void* stack) {
  while (innermost != nullptr && innermost->stack <= stack) DropLeft();  // the stack grows downwards
  void* memory = std::calloc(1, sizeof(Frame));
  if (memory == nullptr) return nullptr;
  auto* frame = new (memory) Frame{innermost, stack, {}, {}, {}};
  innermost = frame;
  Call& call = frame->call;
  call.function = &function;
  // A copy: whoever is told of a call that was left is told later.
  std::memcpy(call.arguments, arguments, static_cast<std::size_t>(function.parameter_count) * sizeof(Value));
  call.position = Here();
  call.database = -1;
  if (function.parameter_count > 1 && function.parameters[1] == Kind::kDatabase) {
    call.database = static_cast<int>(arguments[1].integer);
  }
  if (const char* key = KeyOf(KeyObject(function, arguments), &call.key_length)) {
    frame->key.Add(key, call.key_length);
    call.key = frame->key.c_str();
  }
  AddArguments(function, arguments, &frame->texts);
  call.texts = frame->texts.c_str();
  call.time = Calendar();
  if (frame->key.whole() && frame->texts.whole()) return frame;
  Drop(frame);
  return nullptr;
}

// Puts a fault's answer in the place of the client function's, if that was called.
void Fail(const FaultPlan& plan, const Function& function, const Value* arguments, Value* result) {
  if (int* out = OutOf(function, arguments)) *out = plan.status;
  if (function.result == ResultKind::kStatus) {
    result->integer = plan.status;
    return;
  }
  if (result->pointer != nullptr && function.owned != nullptr) ReleaseOriginal(*function.owned, result->pointer);
  result->pointer = nullptr;
  if (function.owned != nullptr && function.owned->size > 0 && !plan.null) {
    result->pointer = MakeRecord(*function.owned, plan.status);
  }
}

// Puts the guard between the client library and the script's callback, if there is one.
void GuardCallback(const Call& call, Value* arguments, ScanGuard* scan) {
  for (int i = 0; i < call.function->parameter_count; ++i) {
    if (call.function->parameters[i] != Kind::kCallback || arguments[i].pointer == nullptr) continue;
    *scan = {reinterpret_cast<tq_mom_scan_cb>(arguments[i].pointer), arguments[i + 1].pointer, &call};
    arguments[i].pointer = reinterpret_cast<void*>(GuardMessage);
    arguments[i + 1].pointer = scan;
  }
}

// Whether the call releases what is not the client library's, but a fault's or the guard's; it is then released.
bool ReleaseOwn(const Function& function, const Value* arguments, const Position& position, Value* result) {
  if (function.role != Role::kRelease) return false;
  void* released = arguments[0].pointer;
  int status;
  if (!GuardRelease(function, released, position, Is(Switch::kGuard), &status) &&
      !ReleaseRecord(*function.owned, released, &status)) {
    return false;
  }
  result->integer = status;
  return true;
}

// Takes note of what the call has released.
void NoteRelease(const Function& function, void* released, const Position& position, const Value& result) {
  if (function.role != Role::kRelease || result.integer < 0 || released == nullptr) return;
  if (Is(Switch::kGuard) && function.parameters[0] == Kind::kRuntime) GuardRuntime(released, position);
  RemoveOwned(released);
}

[[noreturn]] void DieWithout(const Function& function) {
  Print("%s was called, which the client library has not", function.client_name);
  std::abort();
}

}  // namespace

void Print(const char* format, ...) {
  std::fputs("libtq_mom_watch: ", stderr);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  std::fputc('\n', stderr);
}

Position Here() {
  char source[256];
  int line;
  if (position_source == nullptr || !position_source(position_context, source, sizeof source, &line)) return {};
  return {Intern(source), line};
}

void ReleaseOriginal(const OwnedType& type, void* pointer) {
  int status;
  if (ReleaseRecord(type, pointer, &status)) return;
  for (int row = 0; row < kRowCount; ++row) {
    if (functions[row].role != Role::kRelease || functions[row].owned != &type) continue;
    if (client_functions[row] != nullptr) reinterpret_cast<int (*)(void*)>(client_functions[row])(pointer);
  }
}

void UpdateWatching() {
  watching = Tracing() || AnyFault() || AnyCopy();
  for (bool on : switches) watching = watching || on;
  for (ClientFunction function : client_functions) watching = watching || function == nullptr;
}

void Watch(Row row, Value* arguments, Value* result, Invoke invoke, const void* caller) {
  const Function& function = functions[row];
  ClientFunction client = client_functions[row];
  if (client == nullptr) DieWithout(function);
  if (pthread_equal(thread, pthread_self()) == 0 || IsInside(caller)) return invoke(client, arguments, result);
  bool guards = Is(Switch::kGuard);
  if (guards) CheckArguments(function, arguments);
  Frame* frame = Enter(function, arguments, __builtin_frame_address(0));
  if (frame == nullptr) {
    Print("no memory to watch %s", function.name);
    void* const argument = arguments[0].pointer;
    if (!ReleaseOwn(function, arguments, {}, result)) invoke(client, arguments, result);
    return NoteRelease(function, argument, {}, *result);
  }
  Call& call = frame->call;

  FaultPlan plan = {};
  if (!telling) call.faulted = FaultFor(call, &plan);
  bool releases = function.role == Role::kRelease;
  void* const argument = arguments[0].pointer;
  ScanGuard scan;
  if (guards) GuardCallback(call, arguments, &scan);
  std::int64_t start = tq_watch_now();
  if (plan.delay > 0 && !plan.after_call) Sleep(plan.delay);
  // What is released cannot be had back.
  bool calls = (!plan.fails || plan.after_call || releases) && !ReleaseOwn(function, arguments, call.position, result);
  if (calls) invoke(client, arguments, result);
  if (plan.delay > 0 && plan.after_call) Sleep(plan.delay);
  NoteRelease(function, argument, call.position, *result);
  if (plan.fails) Fail(plan, function, arguments, result);

  if (!releases && function.owned != nullptr && result->pointer != nullptr) {
    if (guards) result->pointer = GuardResult(call, result->pointer);
    if (guards || Is(Switch::kOwned)) AddOwned(call, result->pointer);
  }
  call.microseconds = tq_watch_now() - start;
  call.result = *result;
  if (const int* out = OutOf(function, arguments)) call.out = *out;
  call.failed = HasFailed(call);
  while (innermost != frame) DropLeft();
  TellOf(call);
  Drop(frame);
}

void tq_watch_take_control(PositionSource source, void* context) {
  thread = pthread_self();
  position_source = source;
  position_context = context;
}

const Function* tq_watch_function(int row) { return row < kRowCount ? &functions[row] : nullptr; }

void tq_watch_set(Switch what, bool on) {
  switches[static_cast<int>(what)] = on;
  if (what == Switch::kOwned && !on) ForgetOwned();
  if (what == Switch::kGuard && !on) ForgetReleased();
  UpdateWatching();
}

void tq_watch_reset() {
  RemoveFaults();
  ForgetCounts();
}

}  // namespace tq_watch
