#include "ctl/value.h"

#include <nlohmann/json.hpp>

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

}  // namespace

std::string ToJson(const Value& value) {
  constexpr int kIndent = 2;
  return Convert(value).dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace ctl
