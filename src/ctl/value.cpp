#include "ctl/value.h"

#include <nlohmann/json.hpp>
#include <string_view>

namespace ctl {
namespace {

using Json = nlohmann::ordered_json;

// NOLINTNEXTLINE(misc-no-recursion): as deep as a command nests its answer.
Json Convert(const Value& value) {
  if (const auto* array = std::get_if<Value::Array>(&value.content())) {
    Json json = Json::array();
    for (const Value& element : *array) json.push_back(Convert(element));
    return json;
  }
  if (const auto* object = std::get_if<Value::Object>(&value.content())) {
    Json json = Json::object();
    for (const auto& member : *object) json[member.name] = Convert(member.value);
    return json;
  }
  return std::visit(
      [](const auto& plain) {
        using Plain = std::decay_t<decltype(plain)>;
        if constexpr (std::is_same_v<Plain, Value::Array> || std::is_same_v<Plain, Value::Object>) {
          return Json();
        } else {
          return Json(plain);
        }
      },
      value.content());
}

// The library leaves the C1 controls of ISO 6429 as they are, and a terminal may act on them.
std::string EscapeC1(std::string_view json) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string escaped;
  std::size_t lead = 0;
  while ((lead = json.find('\xC2')) != std::string_view::npos) {
    const auto byte = static_cast<unsigned char>(json[lead + 1]);
    escaped += json.substr(0, lead);
    if (byte < 0xA0) {
      escaped.append("\\u00").append({kDigits[byte >> 4U], kDigits[byte & 0xFU]});
    } else {
      escaped += json.substr(lead, 2);
    }
    json.remove_prefix(lead + 2);
  }
  return escaped.append(json);
}

}  // namespace

bool IsUtf8(const std::string& text) {
  try {
    Json(text).dump();
    return true;
  } catch (const Json::type_error&) {
    return false;
  }
}

std::string ToJson(const Value& value) {
  constexpr int kIndent = 2;
  return EscapeC1(Convert(value).dump(kIndent, ' ', false, Json::error_handler_t::replace)) + "\n";
}

}  // namespace ctl
