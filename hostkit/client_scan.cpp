// Scan.
#include <tq_mom/tq_mom.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/callbacks.h"

namespace {

using hostkit::Bring;
using hostkit::Command;
using hostkit::Cursor;
using hostkit::Element;

struct ScanFrame : hostkit::CallbackFrame {
  int db = 0;
  std::unique_ptr<Cursor> cursor;
  std::vector<Element> batch;
  std::size_t next = 0;
  std::uint64_t writes = 0;  // the runtime's, when the batch was read
  tq_mom_scan_all_msg_t message = {};
  unsigned int delivered = 0;
};

// Takes the next element that is still there into the frame's message. Returns 1, 0 when there is none left, or a
// status code.
int NextElement(const Command& command, ScanFrame* frame, std::size_t most) noexcept {
  return command.Run([&] {
    tq_mom_client_s& client = *command.client;
    for (;;) {
      if (frame->next == frame->batch.size()) {
        frame->batch.clear();
        frame->next = 0;
        frame->writes = client.writes;
        if (hostkit::Status status = frame->cursor->Next(most, &frame->batch); !status.ok()) {
          return client.Finish(std::move(status));
        }
        if (frame->batch.empty()) return client.Finish({});
      }
      Element& element = frame->batch[frame->next++];
      if (frame->writes != client.writes) {
        std::optional<Element> now;
        hostkit::Status status = client.engine->ReadElement({frame->db, element.name}, &now);
        if (!status.ok()) return client.Finish(std::move(status));
        if (!now) continue;
        element = std::move(*now);
      }
      frame->message.vlen = static_cast<int>(std::min<std::size_t>(element.value.size(), INT_MAX));
      frame->message.key = element.name.data();
      frame->message.value = reinterpret_cast<unsigned char*>(element.value.data());
      return 1;
    }
  });
}

// Counts the keys that match, at most that many.
int CountKeys(const Command& command, std::size_t most) noexcept {
  return command.Run([&] {
    std::unique_ptr<Cursor> cursor;
    hostkit::Status status = command.client->engine->Scan(command.request, Bring::kNames, &cursor);
    std::size_t count = 0;
    std::vector<Element> batch;
    while (status.ok() && count < most) {
      batch.clear();
      status = cursor->Next(most - count, &batch);
      if (batch.empty()) break;
      count += batch.size();
    }
    return command.Result(std::move(status), static_cast<std::int64_t>(count));
  });
}

}  // namespace

int tq_mom_scan_sync(tq_global_t* g, int db, void* key, unsigned int count, tq_mom_scan_cb callback, void* context) {
  Command command;
  if (const int status = command.Open({g, db, key}, hostkit::Access::kRead); status != TQ_MOM_OK) return status;
  const std::size_t most = count != 0 ? count : std::numeric_limits<std::size_t>::max();
  if (callback == nullptr) return CountKeys(command, most);
  ScanFrame* frame = nullptr;
  int status = hostkit::EnterFrame(command, __builtin_frame_address(0), &frame, [&](ScanFrame* made) {
    made->db = db;
    return command.client->engine->Scan(command.request, Bring::kStrings, &made->cursor);
  });
  if (status != TQ_MOM_OK) return status;
  while (frame->delivered < most) {
    status = NextElement(command, frame, most - frame->delivered);
    if (status <= 0) break;
    ++frame->delivered;
    if (callback(g, &frame->message, context) != 0) break;
  }
  const unsigned int delivered = frame->delivered;
  command.client->Leave(frame);
  return status < 0 ? status : static_cast<int>(std::min<unsigned int>(delivered, INT_MAX));
}
