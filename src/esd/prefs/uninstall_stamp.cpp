#include "esd/prefs/uninstall_stamp.h"

#include <algorithm>
#include <cstddef>
#include <istream>

#include "esd/util/file_stream.h"
#include "esd/xml/save_effect.h"
#include "esd/xml/xml_document_node.h"

namespace esd {
namespace {

// Control characters and bytes that are no UTF-8 would make the new preferences malformed. Then
// each run would miss the stamp in them, and empty them once more.
bool CanBeSaved(const std::string& stamp) {
  XMLDocumentNode node("stamp");
  node.SetData(stamp);
  return EffectOfSave(node) == SaveEffect::kNone;
}

}  // namespace

std::optional<std::string> ReadUninstallStamp(const std::string& path) {
  constexpr std::size_t kStampLimit = 4096;
  constexpr char kBlanks[] = " \t\n\v\f\r";
  ESDifstream file(path, "rb");
  std::istream& stream = *file.stream();
  if (!file.stream()->is_open() || !stream.seekg(0)) return std::nullopt;
  std::string start(kStampLimit + 1, '\0');
  stream.read(start.data(), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(stream.gcount()));
  const std::size_t begin = start.find_first_not_of(kBlanks);
  const std::size_t end = std::min(start.find_first_of(kBlanks, begin), start.size());
  if (begin == std::string::npos || end > kStampLimit) return std::nullopt;
  std::string stamp = start.substr(begin, end - begin);
  if (!CanBeSaved(stamp)) return std::nullopt;
  return stamp;
}

}  // namespace esd
