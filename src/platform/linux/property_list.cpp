#include <plist/plist.h>

#include <cstdint>
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

}  // namespace

std::optional<std::string> ReadPropertyListString(const std::string& path, const std::string& key) {
  const std::optional<std::string> bytes = ReadRegularFile(path, kPropertyListLimit);
  if (!bytes || bytes->empty()) return std::nullopt;

  const auto from_memory = PlistFunction<decltype(plist_from_memory)>("plist_from_memory");
  const auto release = PlistFunction<decltype(plist_free)>("plist_free");
  const auto type_of = PlistFunction<decltype(plist_get_node_type)>("plist_get_node_type");
  const auto item = PlistFunction<decltype(plist_dict_get_item)>("plist_dict_get_item");
  const auto string_of = PlistFunction<decltype(plist_get_string_val)>("plist_get_string_val");
  if (!from_memory || !release || !type_of || !item || !string_of) return std::nullopt;

  plist_t root = nullptr;
  from_memory(bytes->data(), static_cast<std::uint32_t>(bytes->size()), &root);
  const std::unique_ptr<void, decltype(release)> list(root, release);
  if (!list || type_of(list.get()) != PLIST_DICT) return std::nullopt;
  const plist_t value = item(list.get(), key.c_str());
  if (value == nullptr || type_of(value) != PLIST_STRING) return std::nullopt;
  char* copied = nullptr;
  string_of(value, &copied);
  const std::unique_ptr<char, decltype(&std::free)> text(copied, &std::free);
  if (!text) return std::nullopt;
  return text.get();
}

}  // namespace platform
