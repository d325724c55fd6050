// One side of `scripts/bench store`: tq_store_bench kit|bare OPERATION COUNT
//
// Runs an operation that often on the server of TQ_MOM_STORE, through the client functions of the host kit (kit) or
// with hiredis alone, which sends the same commands and throws the answers away (bare). Prints nanoseconds for each and
// the server's reads of commands for each, which are the round trips.
#include <hiredis/hiredis.h>
#include <tq_kit/value_object.h>
#include <tq_mom/tq_mom.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/server_reply.h"
#include "hostkit/server_scripts.h"
#include "hostkit/server_url.h"

namespace {

using hostkit::ReplyPtr;

constexpr int kElements = 100;
constexpr int kScanned = 100000;
constexpr std::string_view kPage = "1000";  // as many keys as the kit asks for at a time

[[noreturn]] void Die(const char* what) {
  std::fprintf(stderr, "tq_store_bench: %s\n", what);
  std::exit(1);
}

void Must(bool good, const char* what) {
  if (!good) Die(what);
}

class Bare {
 public:
  Bare() {
    hostkit::ServerOptions options;
    std::string error;
    const char* name = std::getenv("TQ_MOM_STORE");
    Must(name != nullptr && hostkit::ParseServerUrl(name, &options, &error), "TQ_MOM_STORE names no server");
    context_ = redisConnect(options.nodes.front().host.c_str(), options.nodes.front().port);
    Must(context_ != nullptr && context_->err == 0, "no connection");
  }

  ReplyPtr Run(const std::vector<std::string_view>& words) {
    std::array<const char*, 32> data;
    std::array<std::size_t, 32> sizes;
    for (std::size_t index = 0; index < words.size(); ++index) {
      data[index] = words[index].data();
      sizes[index] = words[index].size();
    }
    ReplyPtr reply(static_cast<redisReply*>(
        redisCommandArgv(context_, static_cast<int>(words.size()), data.data(), sizes.data())));
    Must(reply != nullptr && reply->type != REDIS_REPLY_ERROR, "a command failed");
    return reply;
  }

  long long RoundTrips() {
    const ReplyPtr info = Run({"INFO", "stats"});
    return std::atoll(std::string(hostkit::InfoValue(hostkit::TextOf(*info), "total_reads_processed")).c_str());
  }

 private:
  redisContext* context_;
};

// What both sides work on: ten fields, ten members.
struct Workload {
  Workload() {
    for (std::int32_t number = 0; number < 10; ++number) {
      tags[static_cast<std::size_t>(number)] = number;
      scores[static_cast<std::size_t>(number)] = number + 0.5;
      texts.push_back(std::to_string(number));
      score_texts.push_back(std::to_string(number) + ".5");
    }
  }
  std::array<std::int32_t, 10> tags;
  std::array<double, 10> scores;
  std::vector<std::string> texts;
  std::vector<std::string> score_texts;
};

class Kit {
 public:
  Kit() : g_(tq_global_init(nullptr, nullptr)) {
    Must(g_ != nullptr && tq_mom_client_connect_sync(g_, 0) == TQ_MOM_OK, "no connection");
    for (const std::string& text : load_.texts) {
      const auto tag = static_cast<std::uint32_t>(std::atoi(text.c_str()));
      Must(tq_obj_set_field(hash_, tag, "value", 5) == TQ_MOM_OK, "memory");
      members_.push_back(Object("sorted", text.c_str()));
    }
  }
  ~Kit() { tq_global_finish(g_); }

  void Run(std::string_view operation) {
    if (operation == "set") {
      Must(tq_mom_set_sync(g_, 0, text_) == TQ_MOM_OK, "set");
    } else if (operation == "get") {
      int error;
      tq_obj* value = tq_mom_get_sync(g_, 0, text_, &error);
      Must(value != nullptr && tq_mom_tq_obj_free(value) == TQ_MOM_OK, "get");
    } else if (operation == "hmset") {
      Must(tq_mom_hmset_sync(g_, 0, hash_, load_.tags.data(), 10) == TQ_MOM_OK, "hmset");
    } else if (operation == "lrange") {
      tq_mom_lrange_res_t* result = tq_mom_lrange_sync(g_, 0, list_, 0, kElements - 1);
      Must(result != nullptr && result->count == kElements && tq_mom_lrange_res_free(result) == TQ_MOM_OK, "lrange");
    } else if (operation == "zadd") {
      Must(tq_mom_zadd_sync(g_, 0, load_.scores.data(), members_.data(), 10) >= 0, "zadd");
    } else if (operation == "scan") {
      const auto visit = [](tq_global_t*, void*, void*) { return 0; };
      Must(tq_mom_scan_sync(g_, 1, all_, 0, visit, nullptr) == kScanned, "scan");
    } else {
      Die("no such operation");
    }
  }

  void Prepare(std::string_view operation) {
    Must(tq_mom_set_sync(g_, 0, text_) == TQ_MOM_OK, "set");
    tq_obj* element = Object("list", "element");
    Must(tq_mom_del_sync(g_, 0, list_) >= 0, "del");
    for (int number = 0; number < kElements; ++number) Must(tq_mom_rpush_sync(g_, 0, element) > 0, "rpush");
    if (operation != "scan") return;
    for (int number = 0; number < kScanned; ++number) {
      tq_obj* key = Object("key" + std::to_string(number), "value");
      Must(tq_mom_set_sync(g_, 1, key) == TQ_MOM_OK && tq_mom_tq_obj_free(key) == TQ_MOM_OK, "set");
    }
  }

 private:
  static tq_obj* Object(const std::string& key, const char* value) {
    tq_obj* object = tq_obj_new(key.data(), key.size());
    Must(object != nullptr, "memory");
    if (value != nullptr) Must(tq_obj_set_value(object, value, std::strlen(value)) == TQ_MOM_OK, "memory");
    return object;
  }

  Workload load_;
  tq_global_t* const g_;
  tq_obj* const text_ = Object("text", "value");
  tq_obj* const hash_ = Object("hash", nullptr);
  tq_obj* const list_ = Object("list", nullptr);
  tq_obj* const all_ = Object("*", nullptr);
  std::vector<void*> members_;
};

void RunBare(Bare* bare, const Workload& load, std::string_view operation) {
  using hostkit::DigestOf;
  using hostkit::Script;
  if (operation == "set") {
    bare->Run({"SET", "0:text", "value"});
  } else if (operation == "get") {
    bare->Run({"GET", "0:text"});
  } else if (operation == "hmset") {
    std::vector<std::string_view> words = {"EVALSHA", DigestOf(Script::kHashSet), "1", "0:hash"};
    for (const std::string& text : load.texts) words.insert(words.end(), {text, "value"});
    bare->Run(words);
  } else if (operation == "lrange") {
    bare->Run({"LRANGE", "0:list", "0", "99"});
  } else if (operation == "zadd") {
    std::vector<std::string_view> words = {"ZADD", "0:sorted"};
    for (std::size_t index = 0; index < 10; ++index) {
      words.insert(words.end(), {load.score_texts[index], load.texts[index]});
    }
    bare->Run(words);
  } else if (operation == "scan") {
    bare->Run({"DBSIZE"});
    std::string cursor = "0";
    do {
      const ReplyPtr page = bare->Run({"EVALSHA", DigestOf(Script::kScan), "0", cursor, "1:*", kPage, "1048576"});
      cursor = hostkit::TextOf(*page->element[0]);
    } while (cursor != "0");
  } else {
    Die("no such operation");
  }
}

template <typename Once> void Measure(int count, Once once) {
  Bare observer;
  once();  // opens what is to be opened
  const long long trips = observer.RoundTrips();
  const auto start = std::chrono::steady_clock::now();
  for (int turn = 0; turn < count; ++turn) once();
  const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
  // The observer's own question is one more.
  const auto each = static_cast<double>(observer.RoundTrips() - trips - 1) / (count > 0 ? count : 1);
  std::printf("%.1f %.2f\n", time.count() / (count > 0 ? count : 1), each);
}

}  // namespace

int main(int count, char** arguments) {
  Must(count == 4, "usage: tq_store_bench kit|bare|prepare OPERATION COUNT");
  const std::string_view side = arguments[1];
  const std::string_view operation = arguments[2];
  const int turns = std::atoi(arguments[3]);
  if (side == "bare") {
    Bare bare;
    const Workload load;
    Measure(turns, [&] { RunBare(&bare, load, operation); });
    return 0;
  }
  Kit kit;
  if (side == "prepare") {
    kit.Prepare(operation);
    kit.Run(operation);
  } else {
    Measure(turns, [&] { kit.Run(operation); });
  }
  return 0;
}
