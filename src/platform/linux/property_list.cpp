#include "platform/property_list.h"

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

#include "platform/bundle.h"
#include "platform/file_descriptor.h"
#include "platform/linux/late_library.h"

namespace platform {
namespace {

template <typename Function>
Function* PlistFunction(const char* name) {
  return LateFunction<Function>("libplist-2.0.so.3", name);
}

// The functions of the library, null where it is missing.
struct Plist {
  decltype(plist_from_memory)* from_memory;
  decltype(plist_free)* release;
  decltype(plist_get_node_type)* type_of;
  decltype(plist_dict_get_item)* item;
  decltype(plist_array_get_size)* size_of;
  decltype(plist_array_get_item)* element;
  decltype(plist_get_string_val)* string_of;
  decltype(plist_get_uint_val)* integer_of;

  Plist()
      : from_memory(PlistFunction<decltype(plist_from_memory)>("plist_from_memory")),
        release(PlistFunction<decltype(plist_free)>("plist_free")),
        type_of(PlistFunction<decltype(plist_get_node_type)>("plist_get_node_type")),
        item(PlistFunction<decltype(plist_dict_get_item)>("plist_dict_get_item")),
        size_of(PlistFunction<decltype(plist_array_get_size)>("plist_array_get_size")),
        element(PlistFunction<decltype(plist_array_get_item)>("plist_array_get_item")),
        string_of(PlistFunction<decltype(plist_get_string_val)>("plist_get_string_val")),
        integer_of(PlistFunction<decltype(plist_get_uint_val)>("plist_get_uint_val")) {}

  bool is_complete() const {
    return from_memory && release && type_of && item && size_of && element && string_of &&
           integer_of;
  }
};

// A property list in memory; its nodes live as long as it does, and null is none.
class List {
 public:
  explicit List(const std::string& path) : root_(nullptr, nullptr) {
    const std::optional<std::string> bytes = ReadRegularFile(path, kPropertyListLimit);
    if (!bytes || bytes->empty() || !plist_.is_complete()) return;
    plist_t root = nullptr;
    plist_.from_memory(bytes->data(), static_cast<std::uint32_t>(bytes->size()), &root);
    root_ = {root, plist_.release};
  }

  plist_t root() const { return root_.get(); }

  // What stands under `key` of `node`, if that is a dictionary and this of the type.
  plist_t Find(plist_t node, const std::string& key, plist_type type) const {
    if (node == nullptr || plist_.type_of(node) != PLIST_DICT) return nullptr;
    const plist_t found = plist_.item(node, key.c_str());
    return found != nullptr && plist_.type_of(found) == type ? found : nullptr;
  }

  std::uint32_t SizeOf(plist_t array) const { return plist_.size_of(array); }
  plist_t ElementOf(plist_t array, std::uint32_t index) const {
    return plist_.element(array, index);
  }

  std::optional<std::string> StringOf(plist_t node) const {
    if (node == nullptr || plist_.type_of(node) != PLIST_STRING) return std::nullopt;
    char* copied = nullptr;
    plist_.string_of(node, &copied);
    const std::unique_ptr<char, decltype(&std::free)> text(copied, &std::free);
    return text ? std::optional<std::string>(text.get()) : std::nullopt;
  }

  std::int64_t IntegerOf(plist_t node) const {
    std::uint64_t value = 0;
    plist_.integer_of(node, &value);
    return static_cast<std::int64_t>(value);
  }

 private:
  const Plist plist_;
  std::unique_ptr<void, decltype(plist_free)*> root_;
};

}  // namespace

std::optional<std::string> ReadPropertyListString(const std::string& path, const std::string& key) {
  const List list(path);
  return list.StringOf(list.Find(list.root(), key, PLIST_STRING));
}

std::optional<std::vector<std::string>> ReadPropertyListStrings(const std::string& path,
                                                                const std::string& key) {
  const List list(path);
  const plist_t array = list.Find(list.root(), key, PLIST_ARRAY);
  if (array == nullptr) return std::nullopt;
  std::vector<std::string> strings;
  for (std::uint32_t index = 0; index < list.SizeOf(array); ++index) {
    std::optional<std::string> string = list.StringOf(list.ElementOf(array, index));
    if (!string) return std::nullopt;
    strings.push_back(*std::move(string));
  }
  return strings;
}

std::optional<std::int64_t> ReadPropertyListInteger(const std::string& path,
                                                    const std::string& outer_key,
                                                    const std::string& key) {
  const List list(path);
  const plist_t inner = list.Find(list.root(), outer_key, PLIST_DICT);
  const plist_t value = list.Find(inner, key, PLIST_UINT);
  return value != nullptr ? std::optional(list.IntegerOf(value)) : std::nullopt;
}

}  // namespace platform
