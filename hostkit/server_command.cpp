#include "hostkit/server_command.h"

#include <array>
#include <charconv>
#include <cstdio>

#include "hostkit/server_slots.h"

namespace hostkit {
namespace {

constexpr std::size_t kScriptWord = 1;

}  // namespace

ServerCommand::ServerCommand(Effect effect, Script script, int key_count)
    : effect_(effect), is_script_(true), script_(script) {
  words_.reserve(kUsualWords);
  Add("EVALSHA").Add(DigestOf(script)).Add(std::int64_t{key_count});
}

ServerCommand& ServerCommand::Add(std::string_view text) {
  words_.push_back({text.data() != nullptr ? text.data() : "", 0, text.size()});
  return *this;
}

void ServerCommand::AddOwn(std::string_view text) {
  words_.push_back({nullptr, own_.size(), text.size()});
  own_ += text;
}

ServerCommand& ServerCommand::Add(std::int64_t number) {
  std::array<char, 24> text;
  AddOwn({text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr});
  return *this;
}

ServerCommand& ServerCommand::Add(std::uint64_t number) {
  std::array<char, 24> text;
  AddOwn({text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr});
  return *this;
}

ServerCommand& ServerCommand::Add(double number) {
  std::array<char, 40> text;
  AddOwn({text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr});
  return *this;
}

ServerCommand& ServerCommand::AddKey(std::string_view prefix, int db, std::string_view name) {
  const std::size_t start = own_.size();
  own_.append(prefix).append(std::to_string(db)).append(1, ':').append(name);
  words_.push_back({nullptr, start, own_.size() - start});
  slot_ = SlotOf((*this)[size() - 1]);
  return *this;
}

void ServerCommand::SpellOutScript() {
  constexpr std::string_view kVerb = "EVAL";
  const std::string_view text = TextOf(script_);
  words_.front() = {kVerb.data(), 0, kVerb.size()};
  words_[kScriptWord] = {text.data(), 0, text.size()};
}

std::string_view ServerCommand::operator[](std::size_t index) const {
  const Word& word = words_[index];
  return {word.data != nullptr ? word.data : own_.data() + word.offset, word.size};
}

}  // namespace hostkit
