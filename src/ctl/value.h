// A value as JSON knows them: what a command hands over to be printed for machines.
#ifndef CTL_VALUE_H_
#define CTL_VALUE_H_

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace ctl {

/// A member of an object; V is Value.
template <typename V>
struct Member {
  std::string name;
  V value;
};

/// Null, a boolean, a number, a text (UTF-8 or not), an array, or an object with its members in
/// order.
class Value {
 public:
  using Array = std::vector<Value>;
  using Object = std::vector<Member<Value>>;
  using Content =
      std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, std::string, Array, Object>;

  Value() = default;
  Value(std::nullptr_t) {}
  template <std::same_as<bool> T>
  Value(T value) : content_(bool{value}) {}
  template <std::signed_integral T>
  Value(T value) : content_(std::int64_t{value}) {}
  template <std::unsigned_integral T>
  requires(!std::same_as<T, bool>) Value(T value) : content_(std::uint64_t{value}) {}
  Value(std::string value) : content_(std::move(value)) {}
  Value(const char* value) : content_(std::string(value)) {}
  Value(Array values) : content_(std::move(values)) {}
  Value(Object members) : content_(std::move(members)) {}
  /// Null for nothing.
  template <typename T>
  Value(const std::optional<T>& value) : Value(value ? Value(*value) : Value()) {}

  const Content& content() const { return content_; }

 private:
  Content content_ = nullptr;
};

/// The JSON text (RFC 8259) of `value`, indented, with a newline at its end. What is no UTF-8 in a
/// text is replaced by U+FFFD. No control character stands there unescaped, but DEL.
std::string ToJson(const Value& value);

/// Whether `text` is UTF-8, so that ToJson leaves it as it is.
bool IsUtf8(const std::string& text);

}  // namespace ctl

#endif  // CTL_VALUE_H_
