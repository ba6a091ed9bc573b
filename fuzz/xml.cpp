// A document that was read, written and read again is the same, and so is its text when it is
// written again.
#include <sstream>

#include "esd/xml/xml_writer.h"
#include "fuzz/document.h"
#include "fuzz/fuzz.h"

namespace {

std::string Write(const fuzz::Node& document) {
  std::ostringstream text;
  esd::WriteXMLNode(text, document);
  return text.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  static const std::string file = folder.path() / "document";
  const std::string_view input = fuzz::Text(data, size);
  if (fuzz::MayDeclareEntity(input)) return 0;

  fuzz::Builder first;
  fuzz::WriteFile(file, input);
  CHECK(first.Create(nullptr, nullptr));
  const bool well_formed = first.ParseFile(file, false);
  const std::string saved = Write(*first.GetRoot());  // what was read before an error, too
  if (!well_formed || !fuzz::ReadsBack(*first.GetRoot())) return 0;

  fuzz::Builder second;
  fuzz::WriteFile(file, saved);
  CHECK(second.Create(nullptr, nullptr) && second.ParseFile(file, false));
  CHECK(fuzz::SameWhenSaved(*first.GetRoot(), *second.GetRoot()));
  CHECK(Write(*second.GetRoot()) == saved);
  return 0;
}
