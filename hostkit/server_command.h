// A command on its way to a server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/server_scripts.h"

namespace hostkit {

enum class Effect { kReads, kWrites };

// Words that are added as texts must outlive the command, those that are made of numbers are its own.
class ServerCommand {
 public:
  ServerCommand(Effect effect, std::string_view verb) : effect_(effect) {
    words_.reserve(kUsualWords);
    Add(verb);
  }
  // Runs a script on keys and arguments that follow.
  ServerCommand(Effect effect, Script script, int key_count);

  ServerCommand& Add(std::string_view text);
  ServerCommand& Add(std::int64_t number);
  ServerCommand& Add(std::uint64_t number);
  // So that it comes back as the same double.
  ServerCommand& Add(double number);
  // The key is the command's own copy; its slot is the command's.
  ServerCommand& AddKey(std::string_view prefix, int db, std::string_view name);

  bool writes() const { return effect_ == Effect::kWrites; }
  // -1 without a key.
  int slot() const { return slot_; }
  bool is_script() const { return is_script_; }
  // Names the script by its text, not by its digest, from now on.
  void SpellOutScript();

  std::size_t size() const { return words_.size(); }
  std::string_view operator[](std::size_t index) const;

 private:
  static constexpr std::size_t kUsualWords = 8;

  // A word of its own lies in own_, which may move while the command grows.
  struct Word {
    const char* data;  // null for one of its own
    std::size_t offset;
    std::size_t size;
  };

  void AddOwn(std::string_view text);

  Effect effect_;
  int slot_ = -1;
  bool is_script_ = false;
  Script script_ = {};
  std::vector<Word> words_;
  std::string own_;
};

}  // namespace hostkit
