#include "hostkit/server_url.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <system_error>

namespace hostkit {
namespace {

constexpr std::string_view kHostScheme = "redis://";
constexpr std::string_view kPathScheme = "redis+unix://";
constexpr int kDefaultPort = 6379;

template <typename Number> bool ParseNumber(std::string_view text, int base, Number* number) {
  const char* const end = text.data() + text.size();
  const auto [parsed, failure] = std::from_chars(text.data(), end, *number, base);
  return failure == std::errc() && parsed == end;
}

// Undoes percent escapes. Nothing if one is malformed or stands for NUL.
std::optional<std::string> Unescape(std::string_view text) {
  std::string plain;
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (text[index] != '%') {
      plain += text[index];
      continue;
    }
    std::uint8_t byte;
    if (!ParseNumber(text.substr(index + 1, 2), 16, &byte) || index + 2 >= text.size() || byte == 0) return {};
    plain += static_cast<char>(byte);
    index += 2;
  }
  return plain;
}

// Cuts the text at a separator and returns what follows it.
std::optional<std::string_view> CutAt(std::string_view* text, std::size_t position) {
  if (position == std::string_view::npos) return {};
  const std::string_view rest = text->substr(position + 1);
  *text = text->substr(0, position);
  return rest;
}

bool ParseMilliseconds(std::string_view text, std::chrono::milliseconds* time) {
  int count;
  if (!ParseNumber(text, 10, &count) || count <= 0) return false;
  *time = std::chrono::milliseconds(count);
  return true;
}

bool ParseOption(std::string_view name, std::string_view value, ServerOptions* options) {
  if (name == "connect_timeout") return ParseMilliseconds(value, &options->connect_timeout);
  if (name == "timeout") return ParseMilliseconds(value, &options->timeout);
  if (name == "wait") return ParseNumber(value, 10, &options->wait) && options->wait >= 0;
  if (name == "prefix") {
    options->prefix = value;
    return true;
  }
  return name == "node" && ParseAddress(value, kDefaultPort, &options->nodes.emplace_back());
}

bool ParseCredentials(std::string_view text, ServerOptions* options) {
  const auto password = CutAt(&text, text.find(':'));
  const auto plain_user = Unescape(text);
  const auto plain_password = Unescape(password.value_or(""));
  if (!password || !plain_user || !plain_password) return false;
  options->user = *plain_user;
  options->password = *plain_password;
  return true;
}

}  // namespace

std::string ToText(const ServerAddress& address) {
  if (address.port == 0) return address.host;
  const bool bracketed = address.host.find(':') != std::string::npos;
  return (bracketed ? '[' + address.host + ']' : address.host) + ':' + std::to_string(address.port);
}

bool ParseAddress(std::string_view text, int default_port, ServerAddress* address) {
  std::string_view host = text;
  std::string_view rest;
  if (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) return false;
    host = text.substr(1, end - 1);
    rest = text.substr(end + 1);
  } else if (const std::size_t colon = text.find(':'); colon != std::string_view::npos) {
    host = text.substr(0, colon);
    rest = text.substr(colon);
  }
  int port = default_port;
  if (!rest.empty() && (rest.front() != ':' || !ParseNumber(rest.substr(1), 10, &port))) return false;
  if (host.empty() || port <= 0 || port > std::numeric_limits<std::uint16_t>::max()) return false;
  *address = {std::string(host), port};
  return true;
}

bool IsServerUrl(std::string_view name) { return name.starts_with(kHostScheme) || name.starts_with(kPathScheme); }

bool ParseServerUrl(std::string_view url, ServerOptions* options, std::string* error) {
  const auto refuse = [error](std::string text) {
    *error = "the server's name is malformed: " + std::move(text);
    return false;
  };
  *options = {};
  const bool path = url.starts_with(kPathScheme);
  if (!IsServerUrl(url)) return refuse("it begins with neither redis:// nor redis+unix://");
  std::string_view place = url.substr(path ? kPathScheme.size() : kHostScheme.size());
  std::string_view settings = CutAt(&place, place.find('?')).value_or("");
  if (const std::size_t at = place.rfind('@'); at != std::string_view::npos) {
    if (!ParseCredentials(place.substr(0, at), options)) return refuse("what stands before '@' is not [user]:password");
    place = place.substr(at + 1);
  }
  ServerAddress& first = options->nodes.emplace_back();
  if (path) {
    first.host = Unescape(place).value_or("");
    if (first.host.empty()) return refuse("the socket's path is missing");
  } else if (!place.empty() && place.back() == '/') {
    place.remove_suffix(1);
  }
  if (!path && !ParseAddress(place, kDefaultPort, &first)) return refuse("the host or the port is wrong");
  while (!settings.empty()) {
    std::string_view setting = settings;
    settings = CutAt(&setting, setting.find('&')).value_or("");
    const auto value = Unescape(CutAt(&setting, setting.find('=')).value_or(""));
    if (!value || !ParseOption(setting, *value, options)) {
      return refuse("an option is none of connect_timeout, timeout, wait, prefix and node, or its value is wrong");
    }
  }
  return true;
}

}  // namespace hostkit
